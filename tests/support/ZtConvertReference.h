#ifndef ZT_TESTS_CONVERTREFERENCE_H
#define ZT_TESTS_CONVERTREFERENCE_H

// The sample rule and channel table written out plainly, sharing nothing with the library.

#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

#include "ZtInterop.h"

namespace ZtConvertRef {

// To a normalised double: divided by the top P, except signed values <= 0: times 2^-k.
inline double Decode(std::int8_t v) { return v > 0 ? v / 127.0 : v * 0x1p-7; }
inline double Decode(std::int16_t v) { return v > 0 ? v / 32767.0 : v * 0x1p-15; }
inline double Decode(std::int32_t v) { return v > 0 ? v / 2147483647.0 : v * 0x1p-31; }
inline double Decode(std::uint8_t v) { return v / 255.0; }
inline double Decode(std::uint16_t v) { return v / 65535.0; }
inline double Decode(std::uint32_t v) { return v / 4294967295.0; }
inline double Decode(float v) { return double(v); }
inline double Decode(double v) { return v; }

// Scale, clamp high then low, truncate; NaN passes both tests: INT32_MIN, or 0 if unsigned.
inline std::int32_t EncodeSigned(double x, double p, double n) {
  const double y = x > 0 ? x * p : x * n;
  if (y > p) return std::int32_t(p);
  if (-n > y) return std::int32_t(-n);
  if (y != y) return INT32_MIN;
  return std::int32_t(y);
}
inline std::uint32_t EncodeUnsigned(double x, double p) {
  const double y = x * p;
  if (y > p) return std::uint32_t(p);
  if (0 > y || y != y) return 0;
  return std::uint32_t(std::int64_t(y));
}

// Narrow signed types keep the low bits of the 32-bit result.
template <class T>
T Encode(double x) {
  constexpr double p = double(std::numeric_limits<T>::max());
  if constexpr (std::is_floating_point_v<T>) {
    return T(x);
  } else if constexpr (std::is_signed_v<T>) {
    return T(EncodeSigned(x, p, p + 1));
  } else {
    return T(EncodeUnsigned(x, p));
  }
}

// Equal types copy the bits; all others go through the double.
template <class S, class T>
T Convert(S v) {
  if constexpr (std::is_same_v<S, T>) {
    return v;
  } else {
    return Encode<T>(Decode(v));
  }
}

// The alpha fill: the top of the target's range.
template <class T>
T Fill() {
  return std::is_floating_point_v<T> ? T(1) : std::numeric_limits<T>::max();
}

// Per layout pair, the source sample of each target sample in memory order, or F: the fill.
constexpr int F = -1;
struct Mapping {
  int targetSamples;
  int from[4];
};

// Rows sources, columns targets: RGB, RGBA, Lum (and Bayer), LumA, BGR, BGRA.
inline constexpr Mapping kTable[6][6] = {
    {{3, {0, 1, 2}}, {4, {0, 1, 2, F}}, {1, {0}}, {2, {0, F}}, {3, {2, 1, 0}}, {4, {2, 1, 0, F}}},
    {{3, {0, 1, 2}}, {4, {0, 1, 2, 3}}, {1, {0}}, {2, {0, 3}}, {3, {2, 1, 0}}, {4, {2, 1, 0, 3}}},
    {{3, {0, 0, 0}}, {4, {0, 0, 0, F}}, {1, {0}}, {2, {0, F}}, {3, {0, 0, 0}}, {4, {0, 0, 0, F}}},
    {{3, {0, 0, 0}}, {4, {0, 0, 0, 1}}, {1, {0}}, {2, {0, 1}}, {3, {0, 0, 0}}, {4, {0, 0, 0, 1}}},
    {{3, {2, 1, 0}}, {4, {2, 1, 0, F}}, {1, {2}}, {2, {2, F}}, {3, {0, 1, 2}}, {4, {0, 1, 2, F}}},
    {{3, {2, 1, 0}}, {4, {2, 1, 0, 3}}, {1, {2}}, {2, {2, 3}}, {3, {0, 1, 2}}, {4, {0, 1, 2, 3}}},
};
inline constexpr int kSourceSamples[6] = {3, 4, 1, 2, 3, 4};

// Every target sample of `count` pixels from its source sample, or the fill.
template <class S, class T>
void ConvertPixels(const Mapping& m, int sourceSamples, unsigned count, T* t, const S* s) {
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t k = 0; k < std::size_t(m.targetSamples); ++k) {
      const int from = m.from[k];
      t[i * std::size_t(m.targetSamples) + k] =
          from == F ? Fill<T>()
                    : Convert<S, T>(s[i * std::size_t(sourceSamples) + std::size_t(from)]);
    }
  }
}

// Calls f with a value of the sample type `type` names; false for others.
template <class Fn>
bool WithSampleType(Zt::EDataType::ID type, Fn&& f) {
  using D = Zt::EDataType;
  switch (type) {
    case D::Byte: f(std::int8_t{}); return true;
    case D::UByte: f(std::uint8_t{}); return true;
    case D::Short: f(std::int16_t{}); return true;
    case D::UShort: f(std::uint16_t{}); return true;
    case D::Int: f(std::int32_t{}); return true;
    case D::UInt: f(std::uint32_t{}); return true;
    case D::Float: f(float{}); return true;
    case D::Double: f(double{}); return true;
  }
  return false;
}

// Index of a layout in kTable; a Bayer layout reads as Lum; -1 for others.
inline int LayoutIndex(Zt::EPixelType::ID type) {
  using P = Zt::EPixelType;
  const P::ID layouts[] = {P::RGB,  P::RGBA,    P::Lum,     P::LumA,    P::BGR,
                           P::BGRA, P::BayerRG, P::BayerBG, P::BayerGR, P::BayerGB};
  int i = 0;
  while (i < 10 && layouts[i] != type) ++i;
  return i < 6 ? i : i < 10 ? 2 : -1;
}

// The expected target bytes of a conversion of `count` pixels.
inline std::vector<unsigned char> ConvertImage(Zt::EPixelType::ID tp, Zt::EDataType::ID td,
                                               Zt::EPixelType::ID sp, Zt::EDataType::ID sd,
                                               unsigned count, const void* source) {
  const int from = LayoutIndex(sp);
  const Mapping& m = kTable[from][LayoutIndex(tp)];
  std::vector<unsigned char> out;
  WithSampleType(sd, [&](auto s) {
    WithSampleType(td, [&](auto t) {
      std::vector<decltype(t)> samples(std::size_t(count) * std::size_t(m.targetSamples));
      std::vector<decltype(s)> in(std::size_t(count) * std::size_t(kSourceSamples[from]));
      if (count == 0) return;  // memcpy takes no null pointer, not even for 0 bytes
      std::memcpy(in.data(), source, in.size() * sizeof(s));
      ConvertPixels(m, kSourceSamples[from], count, samples.data(), in.data());
      out.resize(samples.size() * sizeof(t));
      std::memcpy(out.data(), samples.data(), out.size());
    });
  });
  return out;
}

}  // namespace ZtConvertRef

#endif
