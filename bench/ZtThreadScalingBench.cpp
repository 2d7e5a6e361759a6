// How one large conversion scales over the caller's threads: a 4096 x 4096
// image converted in 1 to N row bands at once (examples/threads), in wall
// time, with the pixels per second of the whole conversion.
//
//   zt-thread-scaling-bench [--benchmark_filter=...]
//
// N is twice this machine's cores, at least 4, so the runs past the core
// count show what oversubscription costs.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "ZtBandedConvert.h"

namespace {

using Zt::CZtImage;
using Zt::CZtImageFormat;
using Zt::EDataType;
using Zt::EPixelType;

constexpr int kSide = 4096;

struct SScalingCase {
  const char* Name;
  EPixelType::ID SourceLayout;
  EDataType::ID SourceType;
  EPixelType::ID TargetLayout;
  EDataType::ID TargetType;
};

// One conversion bound by arithmetic, one bound by memory traffic.
constexpr SScalingCase kCases[] = {
    {"UByte_RGB_to_Float_RGBA", EPixelType::RGB, EDataType::UByte, EPixelType::RGBA,
     EDataType::Float},
    {"UShort_Lum_to_UByte_Lum", EPixelType::Lum, EDataType::UShort, EPixelType::Lum,
     EDataType::UByte},
};

void ConvertInBands(benchmark::State& state, const SScalingCase& c) {
  const CZtImageFormat sourceFormat(kSide, kSide, c.SourceLayout, c.SourceType);
  const CZtImageFormat targetFormat(kSide, kSide, c.TargetLayout, c.TargetType);
  CZtImage source(sourceFormat);
  CZtImage target(targetFormat);
  if (!source.IsValid() || !target.IsValid()) {
    state.SkipWithError("out of memory");
    return;
  }
  // Touched before timing: page faults of fresh blocks are no conversion cost.
  auto* bytes = static_cast<unsigned char*>(source.GetDataPtr());
  for (unsigned i = 0; i < source.GetByteCount(); ++i)
    bytes[i] = static_cast<unsigned char>(i * 131u >> 3);
  std::memset(target.GetDataPtr(), 0, target.GetByteCount());

  const unsigned threads = static_cast<unsigned>(state.range(0));
  for (auto _ : state) {
    const bool converted = ZtThreads::ConvertInBands(target.GetDataPtr(), source.GetDataPtr(),
                                                     targetFormat, sourceFormat, threads);
    benchmark::DoNotOptimize(converted);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(static_cast<long long>(state.iterations()) *
                          sourceFormat.GetPixelCount());
  state.counters["threads"] = threads;
}

}  // namespace

int main(int argc, char** argv) {
  const long long most = std::max(4u, 2u * std::thread::hardware_concurrency());
  for (const SScalingCase& c : kCases) {
    benchmark::RegisterBenchmark(c.Name, ConvertInBands, c)
        ->DenseRange(1, most)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
