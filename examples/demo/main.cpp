// The demo: a test chart made in code, taken on a tour of pixel formats and
// file formats with zt-convert's own code path, written as PNG files to look
// at, and a table of the conversions with their time per pixel.
//
//   zt-demo [OUTPUT DIR]        (default: demo-output)
//   zt-demo --help | --version

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "ZtImageIo.h"
#include "ZtTestChart.h"

namespace {

using Zt::CZtImage;
using Zt::CZtImageFormat;
using Zt::EDataType;
using Zt::EPixelType;

// One stop of the tour: a file converted into another, as zt-convert does it.
struct SStep {
  const char* Input;
  const char* Output;
  EPixelType::ID PixelType;
  EDataType::ID DataType;
  const char* Shows;
};

// Shortest time of one conversion in nanoseconds per pixel, over enough runs
// to fill a few milliseconds.
double NanosecondsPerPixel(const CZtImage& source, EPixelType::ID pixelType,
                           EDataType::ID dataType) {
  using Clock = std::chrono::steady_clock;
  CZtImage target;
  double best = 1e300;
  const Clock::time_point start = Clock::now();
  for (int run = 0; run < 200 && (run < 5 || Clock::now() - start < std::chrono::milliseconds(50));
       ++run) {
    const Clock::time_point before = Clock::now();
    ZtTools::ConvertImage(source, target, pixelType, dataType);
    const std::chrono::duration<double, std::nano> took = Clock::now() - before;
    best = std::min(best, took.count());
  }
  return best / source.GetPixelCount();
}

std::string TypesText(EPixelType::ID pixelType, EDataType::ID dataType) {
  return std::string(CZtImageFormat::PixelType2String(pixelType).ToCString()) + " " +
         CZtImageFormat::DataType2String(dataType).ToCString();
}

// A row of the table; a negative time is printed as "-".
void PrintRow(const std::string& from, const std::string& to, double ns, const std::string& file,
              const char* shows) {
  char time[32] = "-";
  if (ns >= 0) std::snprintf(time, sizeof time, "%.2f", ns);
  std::printf("%-13s -> %-14s %8s  %-22s %s\n", from.c_str(), to.c_str(), time, file.c_str(),
              shows);
}

}  // namespace

const char kDemoUsage[] =
    "usage: zt-demo [OUTPUT DIR]\n"
    "\n"
    "Makes a test chart in code, takes it through pixel and file formats with\n"
    "zt-convert's code path and writes the pictures to OUTPUT DIR (default:\n"
    "demo-output), with a table of the conversions and their time per pixel.\n"
    "\n"
    "options:\n"
    "  -h, --help     print this text\n"
    "      --version  print the version\n";

int main(int argc, char** argv) {
  const std::string argument = argc > 1 ? argv[1] : "";
  if (argument == "-h" || argument == "--help") {
    std::fputs(kDemoUsage, stdout);
    return 0;
  }
  if (argument == "--version") {
    std::printf("zt-demo (Zt.Core.Ex) %s\n", ZtTools::PackageVersion());
    return 0;
  }
  if (argc > 2 || (argument.size() > 1 && argument[0] == '-')) {
    std::fprintf(stderr, "zt-demo: %s\n%s",
                 argc > 2 ? "one OUTPUT DIR at most" : ("unknown option " + argument).c_str(),
                 kDemoUsage);
    return 2;
  }
  const std::string directory = argc > 1 ? argv[1] : "demo-output";
  mkdir(directory.c_str(), 0777);
  const auto path = [&](const std::string& name) { return directory + "/" + name; };
  const int width = 512;
  const int height = 320;

  try {
    CZtImage chart;
    CZtImage mosaic;
    if (!ZtDemo::MakeTestChart(chart, width, height) || !ZtDemo::MakeBayerMosaic(chart, mosaic)) {
      std::fprintf(stderr, "zt-demo: could not make the test chart\n");
      return 1;
    }
    std::printf("Test chart %s, %u pixels; files in %s/\n\n", ZtTools::FormatText(chart).c_str(),
                chart.GetPixelCount(), directory.c_str());
    std::printf("%-13s    %-14s %8s  %-22s %s\n", "from", "to", "ns/pixel", "file", "shows");

    // The two generated pictures go to files first, in formats that keep them whole.
    CZtImage start;
    ZtTools::ConvertImage(chart, start, EPixelType::RGBA, EDataType::UShort);
    ZtTools::WriteImageFile(path("chart.pam"), start);
    PrintRow("RGBA Double", "RGBA UShort",
             NanosecondsPerPixel(chart, EPixelType::RGBA, EDataType::UShort), "chart.pam",
             "the chart, made in code, 16 bits");
    ZtTools::WriteImageFile(path("mosaic.raw"), mosaic);
    PrintRow("RGB UShort", "BayerRG UShort", -1.0, "mosaic.raw",
             "an RGGB sensor's view of it, sampled in code");

    const CZtImageFormat mosaicFormat = mosaic.GetFormat();
    const SStep tour[] = {
        {"chart.pam", "chart.png", EPixelType::RGBA, EDataType::UByte, "the chart as it is"},
        {"chart.pam", "chart-bgra.png", EPixelType::BGRA, EDataType::UByte,
         "blue and red swap places: the same picture"},
        {"chart.pam", "chart-rgb16.png", EPixelType::RGB, EDataType::UShort,
         "alpha dropped, 16 bits"},
        {"chart.pam", "chart-lum.png", EPixelType::Lum, EDataType::UByte,
         "luminance is the red sample alone"},
        {"chart.pam", "chart-luma.png", EPixelType::LumA, EDataType::UByte, "red and alpha"},
        {"chart-lum.png", "chart-lum-rgb.png", EPixelType::RGB, EDataType::UByte,
         "grey repeated in R, G, B"},
        {"chart.pam", "chart.pfm", EPixelType::RGB, EDataType::Float, "normalised floats, 0 to 1"},
        {"chart.pfm", "chart-from-float.png", EPixelType::RGB, EDataType::UByte, "back to 8 bits"},
        {"chart.pam", "chart-signed.raw", EPixelType::RGBA, EDataType::Byte,
         "signed: 127 is full scale"},
        {"chart-signed.raw", "chart-from-signed.png", EPixelType::RGBA, EDataType::UByte,
         "the low bit is lost"},
        {"mosaic.raw", "mosaic.png", EPixelType::RGB, EDataType::UByte,
         "a mosaic is read as grey, never demosaiced"},
    };
    for (const SStep& step : tour) {
      const std::string input = path(step.Input);
      const CZtImageFormat signedFormat(width, height, EPixelType::RGBA, EDataType::Byte);
      const CZtImageFormat* rawFormat =
          std::string(step.Input) == "mosaic.raw" ? &mosaicFormat : &signedFormat;
      // The tool's whole job, then the conversion alone once more for its time.
      const ZtTools::SConversion done = ZtTools::ConvertFile(
          input, path(step.Output), &step.PixelType, &step.DataType, rawFormat);
      CZtImage source;
      ZtTools::ReadImageFile(input, source, rawFormat);
      PrintRow(TypesText(done.Source.PixelType, done.Source.DataType),
               TypesText(done.Target.PixelType, done.Target.DataType),
               NanosecondsPerPixel(source, step.PixelType, step.DataType), step.Output, step.Shows);
    }
    std::printf(
        "\nThe PNG files in %s/ are the pictures; .pam, .pfm and .raw files are stops on\n"
        "the way. Any of them converts further with zt-convert.\n",
        directory.c_str());
  } catch (const ZtTools::CIoError& e) {
    std::fprintf(stderr, "zt-demo: %s\n", e.what());
    return 1;
  }
  return 0;
}
