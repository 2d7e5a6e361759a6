// The baseline of the benchmarks: each case's conversion as the plain scalar
// loop of the rule, built -O2 with vectorisation off (see CMakeLists.txt).

#include <utility>

#include "ZtConvertBenchCases.h"
#include "ZtConvertReference.h"

namespace ZtBench {
namespace {

using Zt::EDataType;
using Zt::EPixelType;
using ZtConvertRef::F;

// Target sample k of pixel i comes from source sample From[k] of pixel i, or
// is the fill.
template <class S, class T, int SourceSamples, int... From, std::size_t... K>
void Pixel(T* t, const S* s, std::index_sequence<K...>) {
  constexpr int from[] = {From...};
  ((t[K] = from[K] == F ? ZtConvertRef::Fill<T>()
                        : ZtConvertRef::Convert<S, T>(s[from[K] < 0 ? 0 : from[K]])),
   ...);
}

template <class S, class T, int SourceSamples, int... From>
void Scalar(unsigned count, void* target, const void* source) {
  const S* s = static_cast<const S*>(source);
  T* t = static_cast<T*>(target);
  constexpr unsigned targetSamples = sizeof...(From);
  for (unsigned i = 0; i < count; ++i) {
    Pixel<S, T, SourceSamples, From...>(t + i * targetSamples, s + i * SourceSamples,
                                        std::make_index_sequence<sizeof...(From)>{});
  }
}

}  // namespace

const Case kCases[] = {
    {"UByte RGB -> Float RGBA", EPixelType::RGB, EDataType::UByte, EPixelType::RGBA,
     EDataType::Float, Scalar<std::uint8_t, float, 3, 0, 1, 2, F>},
    {"UShort Lum -> UByte Lum", EPixelType::Lum, EDataType::UShort, EPixelType::Lum,
     EDataType::UByte, Scalar<std::uint16_t, std::uint8_t, 1, 0>},
    {"UByte RGB -> UByte BGR", EPixelType::RGB, EDataType::UByte, EPixelType::BGR, EDataType::UByte,
     Scalar<std::uint8_t, std::uint8_t, 3, 2, 1, 0>},
    {"UByte RGB -> UByte BGRA", EPixelType::RGB, EDataType::UByte, EPixelType::BGRA,
     EDataType::UByte, Scalar<std::uint8_t, std::uint8_t, 3, 2, 1, 0, F>},
    {"Float RGBA -> UByte BGRA", EPixelType::RGBA, EDataType::Float, EPixelType::BGRA,
     EDataType::UByte, Scalar<float, std::uint8_t, 4, 2, 1, 0, 3>},
    {"Double Lum -> Short Lum", EPixelType::Lum, EDataType::Double, EPixelType::Lum,
     EDataType::Short, Scalar<double, std::int16_t, 1, 0>},
    {"UByte Lum -> UShort Lum", EPixelType::Lum, EDataType::UByte, EPixelType::Lum,
     EDataType::UShort, Scalar<std::uint8_t, std::uint16_t, 1, 0>},
    {"Float Lum -> Double Lum", EPixelType::Lum, EDataType::Float, EPixelType::Lum,
     EDataType::Double, Scalar<float, double, 1, 0>},
    {"UByte RGBA -> UByte Lum", EPixelType::RGBA, EDataType::UByte, EPixelType::Lum,
     EDataType::UByte, Scalar<std::uint8_t, std::uint8_t, 4, 0>},
    {"Short RGB -> UShort BGR", EPixelType::RGB, EDataType::Short, EPixelType::BGR,
     EDataType::UShort, Scalar<std::int16_t, std::uint16_t, 3, 2, 1, 0>},
    {"Int Lum -> Float Lum", EPixelType::Lum, EDataType::Int, EPixelType::Lum, EDataType::Float,
     Scalar<std::int32_t, float, 1, 0>},
    {"UByte RGBA -> UByte RGBA (equal formats)", EPixelType::RGBA, EDataType::UByte,
     EPixelType::RGBA, EDataType::UByte, nullptr},
};
const int kCaseCount = int(sizeof(kCases) / sizeof(kCases[0]));

}  // namespace ZtBench
