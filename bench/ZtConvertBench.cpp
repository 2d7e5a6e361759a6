// Conversion speed on 4096 x 4096 images, several ways in one run for each
// case, as processor time of the thread (the ratios hold on a busy machine):
// memcpy moving the same traffic ((bytes read + bytes written) / 2 copied),
// the plain scalar loop of the rule (the baseline), the engine through
// CZtImage::ConvertMemory and, where it was found at build time, OpenCV. Each
// way runs five times per case; the markdown table printed after the run
// holds the medians and their ratios. The instruction sets in use are those
// the C library reports, which GLIBC_TUNABLES narrows (see the README).
//
// With --sweep, every one of the 2304 distinct conversions runs on a 256 x 256
// image instead and its time per pixel (processor time, best of five) is
// printed.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <map>
#include <string>
#include <vector>

#include "ZtConvertBenchCases.h"
#include "ZtCoreEx.h"
#if ZT_BENCH_OPENCV
#include "ZtConvertOpenCv.h"
#endif

#if defined(__x86_64__) && __has_include(<sys/platform/x86.h>)
// The header is written for C; C++ spells its _Bool as bool.
#define _Bool bool
#include <sys/platform/x86.h>
#undef _Bool
#define ZT_BENCH_FEATURES_FROM_LIBC 1
#endif

namespace {

using Zt::CZtImage;
using Zt::CZtImageFormat;
using Zt::EDataType;
using Zt::EPixelType;
using ZtBench::Case;

// Deterministic source samples: random bits for integer types, and for Float
// and Double values in [-0.25, 1.25), so that some saturate.
void FillSource(std::vector<unsigned char>& bytes, EDataType::ID type) {
  std::uint64_t state = 0x9E3779B97F4A7C15ull;
  auto next = [&state] {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    return state;
  };
  if (type == EDataType::Float || type == EDataType::Double) {
    const bool isFloat = type == EDataType::Float;
    const std::size_t size = isFloat ? 4 : 8;
    for (std::size_t i = 0; i + size <= bytes.size(); i += size) {
      const double value = double(next() >> 11) * 0x1p-53 * 1.5 - 0.25;
      if (isFloat) {
        const float f = float(value);
        std::memcpy(&bytes[i], &f, 4);
      } else {
        std::memcpy(&bytes[i], &value, 8);
      }
    }
  } else {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      bytes[i] = static_cast<unsigned char>(next() >> 56);
    }
  }
}

enum class EWay { Memcpy, Scalar, Engine, OpenCv, OnePixel };
const char* const kWayNames[] = {"memcpy", "scalar", "engine", "opencv", "engine-one-pixel"};

constexpr int kSide = 4096;
constexpr int kRepetitions = 5;

using OpenCvConversion = void (*)(int side, void* target, const void* source, void* scratch);
OpenCvConversion OpenCvOf([[maybe_unused]] const Case& c) {
#if ZT_BENCH_OPENCV
  return ZtBench::OpenCvFor(c.name);
#else
  return nullptr;
#endif
}

void RunCase(benchmark::State& state, const Case& c, EWay way) {
  const int side = way == EWay::OnePixel ? 1 : kSide;
  const CZtImageFormat sourceFormat(side, side, c.sourcePixel, c.sourceData);
  const CZtImageFormat targetFormat(side, side, c.targetPixel, c.targetData);
  const unsigned count = sourceFormat.GetPixelCount();
  std::vector<unsigned char> source;
  std::vector<unsigned char> target;
  std::vector<unsigned char> scratch;
  if (way == EWay::Memcpy) {
    const std::size_t traffic =
        (std::size_t(sourceFormat.GetByteCount()) + targetFormat.GetByteCount()) / 2;
    source.assign(traffic, 1);
    target.assign(traffic, 0);
  } else {
    source.resize(sourceFormat.GetByteCount());
    target.assign(targetFormat.GetByteCount(), 0);
    FillSource(source, c.sourceData);
  }
  const OpenCvConversion openCv = OpenCvOf(c);
  if (way == EWay::OpenCv) {
    scratch.assign(std::size_t(count) * 4, 0);
  }
  for (auto _ : state) {
    switch (way) {
      case EWay::Memcpy: std::memcpy(target.data(), source.data(), target.size()); break;
      case EWay::Scalar: c.scalar(count, target.data(), source.data()); break;
      case EWay::Engine:
      case EWay::OnePixel:
        CZtImage::ConvertMemory(target.data(), source.data(), targetFormat, sourceFormat);
        break;
      case EWay::OpenCv: openCv(side, target.data(), source.data(), scratch.data()); break;
    }
    benchmark::ClobberMemory();
  }
  state.counters["ns/px"] =
      benchmark::Counter(double(count) * 1e-9, benchmark::Counter::kIsIterationInvariantRate |
                                                   benchmark::Counter::kInvert);
}

std::string Name(EWay way, const Case& c) {
  return std::string(kWayNames[int(way)]) + "/" + c.name;
}

// Keeps the processor time of every repetition for the table of medians and
// shows only the median of each benchmark on the console.
class MedianReporter : public benchmark::ConsoleReporter {
public:
  void ReportRuns(const std::vector<Run>& runs) override {
    std::vector<Run> shown;
    for (const Run& run : runs) {
      if (run.error_occurred) {
        continue;
      }
      if (run.run_type == Run::RT_Iteration) {
        // In the benchmark's unit: ms for the whole images, ns for one pixel.
        times[run.run_name.function_name].push_back(run.GetAdjustedCPUTime());
      } else if (run.aggregate_name == "median") {
        shown.push_back(run);
      }
    }
    if (!shown.empty()) {
      ConsoleReporter::ReportRuns(shown);
    }
  }

  // The median over the repetitions; NaN when the benchmark did not run.
  double Median(const std::string& name) const {
    auto it = times.find(name);
    if (it == times.end() || it->second.empty()) {
      return NAN;
    }
    std::vector<double> sorted = it->second;
    std::sort(sorted.begin(), sorted.end());
    const std::size_t n = sorted.size();
    return n % 2 == 1 ? sorted[n / 2] : (sorted[n / 2 - 1] + sorted[n / 2]) / 2;
  }
  double NsPerPixel(EWay way, const Case& c) const {
    return Median(Name(way, c)) * 1e6 / (double(kSide) * kSide);  // ms -> ns
  }

private:
  std::map<std::string, std::vector<double>> times;
};

bool IsIntegerType(EDataType::ID type) {
  return type != EDataType::Float && type != EDataType::Double;
}

// --- What runs ---------------------------------------------------------------
// The machine class as the C library reports it, which is what the engine
// chooses its path by.
const char* ClassName() {
#if ZT_BENCH_FEATURES_FROM_LIBC
  if (CPU_FEATURE_ACTIVE(AVX512F) && CPU_FEATURE_ACTIVE(AVX512DQ) && CPU_FEATURE_ACTIVE(AVX512BW) &&
      CPU_FEATURE_ACTIVE(AVX512VL) && CPU_FEATURE_ACTIVE(FMA)) {
    return "AVX-512";
  }
  if (CPU_FEATURE_ACTIVE(AVX2) && CPU_FEATURE_ACTIVE(FMA)) {
    return "AVX2";
  }
#endif
  return "baseline";
}

// The engine's path on each class: the widest the processor has, among
// AVX-512, AVX2 with FMA and the x86-64 baseline.
const char* EnginePath(const std::string& machineClass) {
  if (machineClass == "AVX-512") return "AVX-512";
  return machineClass == "AVX2" ? "AVX2 with FMA" : "baseline (x86-64)";
}

// --- Agreement of OpenCV with the rule -------------------------------------------
double SampleAt(const std::vector<unsigned char>& bytes, EDataType::ID type, std::size_t i) {
  auto read = [&](auto zero) {
    decltype(zero) v;
    std::memcpy(&v, &bytes[i * sizeof v], sizeof v);
    return double(v);
  };
  switch (type) {
    case EDataType::Byte: return read(std::int8_t{});
    case EDataType::UByte: return read(std::uint8_t{});
    case EDataType::Short: return read(std::int16_t{});
    case EDataType::UShort: return read(std::uint16_t{});
    case EDataType::Int: return read(std::int32_t{});
    case EDataType::UInt: return read(std::uint32_t{});
    case EDataType::Float: return read(float{});
    case EDataType::Double: return read(double{});
  }
  return NAN;
}

// OpenCV rounds where the rule truncates, so some of its samples differ by
// one unit (one step of the last bit in a Float target); a wrong scale or
// channel order in the OpenCV calls shows as larger differences, which make
// the run fail. Compared with the scalar loop of the rule on a small image.
struct SAgreement {
  std::string text;  // share of the target samples that differ, and by how much
  bool plausible;
};

SAgreement OpenCvAgreement(const Case& c) {
  const OpenCvConversion openCv = OpenCvOf(c);
  if (openCv == nullptr || c.scalar == nullptr) {
    return {"-", true};
  }
  constexpr int side = 128;
  const CZtImageFormat sourceFormat(side, side, c.sourcePixel, c.sourceData);
  const CZtImageFormat targetFormat(side, side, c.targetPixel, c.targetData);
  std::vector<unsigned char> source(sourceFormat.GetByteCount());
  FillSource(source, c.sourceData);
  std::vector<unsigned char> expected(targetFormat.GetByteCount());
  std::vector<unsigned char> actual(targetFormat.GetByteCount());
  std::vector<unsigned char> scratch(std::size_t(side) * side * 4);
  c.scalar(sourceFormat.GetPixelCount(), expected.data(), source.data());
  openCv(side, actual.data(), source.data(), scratch.data());
  const std::size_t samples =
      expected.size() / std::size_t(CZtImageFormat::GetDataTypeSize(c.targetData));
  std::size_t differing = 0;
  double largest = 0;
  for (std::size_t i = 0; i < samples; ++i) {
    const double difference =
        std::fabs(SampleAt(actual, c.targetData, i) - SampleAt(expected, c.targetData, i));
    if (!(difference == 0)) {
      ++differing;
      largest = std::isnan(difference) ? difference : std::max(largest, difference);
    }
  }
  if (differing == 0) {
    return {"none", true};
  }
  const double bound = IsIntegerType(c.targetData) ? 1.0 : 1e-6;
  char text[80];
  std::snprintf(text, sizeof text, "%.0f%%, by up to %.2g%s",
                100.0 * double(differing) / double(samples), largest,
                largest <= bound ? "" : " (**wrong call**)");
  return {text, largest <= bound};
}

// --- The table -----------------------------------------------------------------
std::string Cell(double value, const char* format) {
  if (!std::isfinite(value)) {
    return "-";
  }
  char text[32];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

// The engine is held to OpenCV's time, or to 10% above it where OpenCV itself
// is within 10% of memcpy of the same bytes.
const char* Verdict(double engineVsOpenCv, double openCvVsMemcpy) {
  if (!std::isfinite(engineVsOpenCv)) {
    return "-";
  }
  if (engineVsOpenCv <= 1.00) {
    return "yes";
  }
  return engineVsOpenCv <= 1.10 && openCvVsMemcpy <= 1.10 ? "yes (OpenCV near memcpy)" : "**no**";
}

// Answers false when an OpenCV call does not do the case's conversion.
bool PrintTable(const MedianReporter& reporter, const std::string& openCvLine) {
  const std::string machineClass = ClassName();
  double load[3] = {NAN, NAN, NAN};
  getloadavg(load, 3);
  std::printf("\n#### %s class, the engine's path: %s\n\n", machineClass.c_str(),
              EnginePath(machineClass));
  std::printf(
      "%s. ns per pixel, median of %d runs, one thread, %dx%d; load average %.1f at "
      "the end.\n\n",
      openCvLine.c_str(), kRepetitions, kSide, kSide, load[0]);
  std::printf(
      "| conversion | memcpy | scalar loop | ours | OpenCV | ours/OpenCV | "
      "OpenCV/memcpy | within bound | OpenCV's samples off the rule |\n");
  std::printf("|---|---:|---:|---:|---:|---:|---:|---|---|\n");
  double logSum = 0;
  double lowestVsScalar = INFINITY;
  int integerCases = 0;
  bool plausible = true;
  for (int i = 0; i < ZtBench::kCaseCount; ++i) {
    const Case& c = ZtBench::kCases[i];
    const SAgreement agreement = OpenCvAgreement(c);
    plausible = plausible && agreement.plausible;
    const double copy = reporter.NsPerPixel(EWay::Memcpy, c);
    const double scalar = reporter.NsPerPixel(EWay::Scalar, c);
    const double engine = reporter.NsPerPixel(EWay::Engine, c);
    const double openCv = reporter.NsPerPixel(EWay::OpenCv, c);
    std::printf("| %s | %s | %s | %s | %s | %s | %s | %s | %s |\n", c.name,
                Cell(copy, "%.2f").c_str(), Cell(scalar, "%.2f").c_str(),
                Cell(engine, "%.2f").c_str(), Cell(openCv, "%.2f").c_str(),
                Cell(engine / openCv, "%.2fx").c_str(), Cell(openCv / copy, "%.2fx").c_str(),
                Verdict(engine / openCv, openCv / copy), agreement.text.c_str());
    const bool converts = IsIntegerType(c.sourceData) && c.sourceData != c.targetData;
    if (converts && std::isfinite(scalar / engine)) {
      logSum += std::log(scalar / engine);
      lowestVsScalar = std::min(lowestVsScalar, scalar / engine);
      ++integerCases;
    }
  }
  std::printf("\n");
  if (integerCases > 0) {
    std::printf(
        "Integer sources changing type: the engine %.2fx as fast as the scalar loop "
        "(geometric mean of %d cases), lowest %.2fx. ",
        std::exp(logSum / integerCases), integerCases, lowestVsScalar);
  }
  const Case& first = ZtBench::kCases[0];
  const double onePixel = reporter.Median(Name(EWay::OnePixel, first));
  if (std::isfinite(onePixel)) {
    std::printf("A one-pixel %s call: %.0f ns.", first.name, onePixel);
  }
  std::printf("\n");
  return plausible;
}

// --- Sweep -------------------------------------------------------------------
constexpr EPixelType::ID kLayouts[] = {EPixelType::RGB,  EPixelType::RGBA, EPixelType::Lum,
                                       EPixelType::LumA, EPixelType::BGR,  EPixelType::BGRA};
constexpr EDataType::ID kTypes[] = {EDataType::Byte,   EDataType::UByte, EDataType::Short,
                                    EDataType::UShort, EDataType::Int,   EDataType::UInt,
                                    EDataType::Float,  EDataType::Double};

// Processor time of this thread: other work on a busy machine does not count.
double ThreadNanoseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return double(now.tv_sec) * 1e9 + double(now.tv_nsec);
}

int Sweep() {
  constexpr int side = 256;
  std::printf("%-8s %-7s -> %-8s %-7s %8s\n", "source", "", "target", "", "ns/px");
  for (EPixelType::ID sp : kLayouts) {
    for (EDataType::ID sd : kTypes) {
      const CZtImageFormat sourceFormat(side, side, sp, sd);
      std::vector<unsigned char> source(sourceFormat.GetByteCount());
      FillSource(source, sd);
      for (EPixelType::ID tp : kLayouts) {
        for (EDataType::ID td : kTypes) {
          const CZtImageFormat targetFormat(side, side, tp, td);
          std::vector<unsigned char> target(targetFormat.GetByteCount());
          double best = INFINITY;
          for (int rep = 0; rep < 5; ++rep) {
            const double start = ThreadNanoseconds();
            CZtImage::ConvertMemory(target.data(), source.data(), targetFormat, sourceFormat);
            best = std::min(best, ThreadNanoseconds() - start);
          }
          std::printf("%-8s %-7s -> %-8s %-7s %8.3f\n",
                      CZtImageFormat::PixelType2String(sp).ToCString(),
                      CZtImageFormat::DataType2String(sd).ToCString(),
                      CZtImageFormat::PixelType2String(tp).ToCString(),
                      CZtImageFormat::DataType2String(td).ToCString(), best / (side * side));
        }
      }
    }
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--sweep") == 0) {
      return Sweep();
    }
  }
#if ZT_BENCH_OPENCV
  const std::string openCvLine = ZtBench::PrepareOpenCv();
#else
  const std::string openCvLine = "Built without OpenCV";
#endif
  std::printf("%s\n", openCvLine.c_str());
  // The one-pixel call is timed on the first case alone.
  for (int i = 0; i < ZtBench::kCaseCount; ++i) {
    const Case& c = ZtBench::kCases[i];
    for (EWay way : {EWay::Memcpy, EWay::Scalar, EWay::Engine, EWay::OpenCv, EWay::OnePixel}) {
      if ((way == EWay::Scalar && c.scalar == nullptr) ||
          (way == EWay::OpenCv && OpenCvOf(c) == nullptr) || (way == EWay::OnePixel && i != 0)) {
        continue;
      }
      benchmark::RegisterBenchmark(Name(way, c).c_str(),
                                   [&c, way](benchmark::State& state) { RunCase(state, c, way); })
          ->Unit(way == EWay::OnePixel ? benchmark::kNanosecond : benchmark::kMillisecond)
          ->Repetitions(kRepetitions);
    }
  }
  benchmark::Initialize(&argc, argv);
  MedianReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  const bool plausible = PrintTable(reporter, openCvLine);
  benchmark::Shutdown();
  return plausible ? 0 : 1;
}
