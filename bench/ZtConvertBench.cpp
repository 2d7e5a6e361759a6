// Conversion speed, three ways in one run for each case on 4096 x 4096
// images, as processor time of the thread (the ratios hold on a busy machine): memcpy moving the same traffic ((bytes read + bytes written) / 2
// copied), the plain scalar loop of the rule (the baseline), and the engine
// through CZtImage::ConvertMemory. A table of ratios follows the run.
//
// With --sweep, every one of the 2304 distinct conversions runs on a 256 x 256
// image instead and its time per pixel (processor time, best of five) is
// printed.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <map>
#include <string>
#include <vector>

#include "ZtConvertBenchCases.h"
#include "ZtCoreEx.h"

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

enum class EWay { Memcpy, Scalar, Engine };
const char* const kWayNames[] = {"memcpy", "scalar", "engine"};

constexpr int kSide = 4096;

void RunCase(benchmark::State& state, const Case& c, EWay way) {
  const CZtImageFormat sourceFormat(kSide, kSide, c.sourcePixel, c.sourceData);
  const CZtImageFormat targetFormat(kSide, kSide, c.targetPixel, c.targetData);
  const unsigned count = sourceFormat.GetPixelCount();
  std::vector<unsigned char> source;
  std::vector<unsigned char> target;
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
  for (auto _ : state) {
    switch (way) {
      case EWay::Memcpy: std::memcpy(target.data(), source.data(), target.size()); break;
      case EWay::Scalar: c.scalar(count, target.data(), source.data()); break;
      case EWay::Engine:
        CZtImage::ConvertMemory(target.data(), source.data(), targetFormat, sourceFormat);
        break;
    }
    benchmark::ClobberMemory();
  }
  state.counters["ns/px"] = benchmark::Counter(
      double(count) * 1e-9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// Keeps the time per pixel of every run for the table of ratios.
class RatioReporter : public benchmark::ConsoleReporter {
public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
        nsPerPixel[run.run_name.function_name] =
            run.GetAdjustedCPUTime() * 1e6 / (double(kSide) * kSide);  // ms -> ns
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }
  std::map<std::string, double> nsPerPixel;
};

std::string Name(EWay way, const Case& c) { return std::string(kWayNames[int(way)]) + "/" + c.name; }

bool IsIntegerType(EDataType::ID type) { return type != EDataType::Float && type != EDataType::Double; }

// The three speed classes: integer sources that change the data type are
// judged against the scalar loop; Float and Double sources and same-type
// channel reorders (pure moves) against memcpy of the same traffic.
void PrintRatios(const RatioReporter& reporter) {
  std::printf("\n%-42s %9s %9s %9s %11s %11s\n", "ns per pixel", "memcpy", "scalar", "engine",
              "vs scalar", "vs memcpy");
  double logSum = 0;
  double lowestVsScalar = INFINITY;
  double lowestVsMemcpy = INFINITY;
  int integerCases = 0;
  for (int i = 0; i < ZtBench::kCaseCount; ++i) {
    const Case& c = ZtBench::kCases[i];
    auto find = [&](EWay way) {
      auto it = reporter.nsPerPixel.find(Name(way, c));
      return it == reporter.nsPerPixel.end() ? NAN : it->second;
    };
    const double copy = find(EWay::Memcpy);
    const double scalar = find(EWay::Scalar);
    const double engine = find(EWay::Engine);
    std::printf("%-42s %9.3f %9.3f %9.3f %10.2fx %10.2fx\n", c.name, copy, scalar, engine,
                scalar / engine, copy / engine);
    const bool converts = IsIntegerType(c.sourceData) && c.sourceData != c.targetData;
    if (converts && std::isfinite(scalar / engine)) {
      logSum += std::log(scalar / engine);
      lowestVsScalar = std::min(lowestVsScalar, scalar / engine);
      ++integerCases;
    } else if (!converts && std::isfinite(copy / engine)) {
      lowestVsMemcpy = std::min(lowestVsMemcpy, copy / engine);
    }
  }
  if (integerCases > 0) {
    std::printf("integer sources changing type: geometric mean %.2fx the scalar loop over %d "
                "cases, lowest %.2fx\n",
                std::exp(logSum / integerCases), integerCases, lowestVsScalar);
  }
  std::printf("floating sources and same-type moves: lowest %.2fx memcpy\n", lowestVsMemcpy);
}

// --- Sweep -------------------------------------------------------------------
constexpr EPixelType::ID kLayouts[] = {EPixelType::RGB, EPixelType::RGBA, EPixelType::Lum,
                                       EPixelType::LumA, EPixelType::BGR, EPixelType::BGRA};
constexpr EDataType::ID kTypes[] = {EDataType::Byte, EDataType::UByte, EDataType::Short,
                                    EDataType::UShort, EDataType::Int, EDataType::UInt,
                                    EDataType::Float, EDataType::Double};

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
  for (int i = 0; i < ZtBench::kCaseCount; ++i) {
    const Case& c = ZtBench::kCases[i];
    for (EWay way : {EWay::Memcpy, EWay::Scalar, EWay::Engine}) {
      if (way == EWay::Scalar && c.scalar == nullptr) {
        continue;
      }
      benchmark::RegisterBenchmark(Name(way, c).c_str(),
                                   [&c, way](benchmark::State& state) { RunCase(state, c, way); })
          ->Unit(benchmark::kMillisecond);
    }
  }
  benchmark::Initialize(&argc, argv);
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  PrintRatios(reporter);
  benchmark::Shutdown();
  return 0;
}
