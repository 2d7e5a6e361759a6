// The time of one call of the conversion engine on a one-pixel image, into a
// target allocated once: what a caller pays per call beside the pixels. The
// Python module's speed script sets its own per-call time against this one.
#include <benchmark/benchmark.h>

#include <vector>

#include "ZtCoreEx.h"

namespace {

using Zt::CZtImage;
using Zt::CZtImageFormat;
using Zt::EDataType;
using Zt::EPixelType;

void OnePixel(benchmark::State& state) {
  const CZtImageFormat sourceFormat(1, 1, EPixelType::RGB, EDataType::UByte);
  const CZtImageFormat targetFormat(1, 1, EPixelType::RGBA, EDataType::Float);
  std::vector<unsigned char> source(sourceFormat.GetByteCount(), 128);
  std::vector<unsigned char> target(targetFormat.GetByteCount(), 0);
  for (auto _ : state) {
    CZtImage::ConvertMemory(target.data(), source.data(), targetFormat, sourceFormat);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(OnePixel)->Name("engine/one pixel UByte RGB -> Float RGBA");

}  // namespace

BENCHMARK_MAIN();
