#ifndef ZT_TESTS_CONVERTREFERENCE_H
#define ZT_TESTS_CONVERTREFERENCE_H

// The sample rule and the channel table written out plainly, one statement of
// the rule per step, with ordinary branches and nothing shared with the
// library. The tests compare the library against it, and the benchmarks use
// its scalar loop as the baseline.

#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

#include "ZtInterop.h"

namespace ZtConvertRef {

// --- Decoding: raw sample to normalised double -------------------------------
// Signed: positive samples are divided by P, the others multiplied by 2^-k.
inline double Decode(std::int8_t v) {
  double d = v;
  if (d > 0) return d / 127.0;
  return d * 0.0078125;
}
inline double Decode(std::int16_t v) {
  double d = v;
  if (d > 0) return d / 32767.0;
  return d * 3.0517578125e-05;
}
inline double Decode(std::int32_t v) {
  double d = v;
  if (d > 0) return d / 2147483647.0;
  return d * 4.656612873077392578125e-10;
}
inline double Decode(std::uint8_t v) { return double(v) / 255.0; }
inline double Decode(std::uint16_t v) { return double(v) / 65535.0; }
inline double Decode(std::uint32_t v) { return double(v) / 4294967295.0; }
inline double Decode(float v) { return double(v); }
inline double Decode(double v) { return v; }

// --- Encoding: normalised double to raw sample -------------------------------
// Scale (two-sided for signed types), then the high test, then the low test,
// then truncation toward zero. A NaN passes both tests, and truncating it
// gives the integer with only its top bit set: 0x80000000 for a 32-bit
// truncation, 0x8000000000000000 for the 64-bit one of the unsigned types.
inline std::int32_t EncodeSigned(double x, double p, double n) {
  double y;
  if (x > 0) {
    y = x * p;
  } else {
    y = x * n;
  }
  if (y > p) return std::int32_t(p);
  if (-n > y) return std::int32_t(-n);
  if (y != y) return INT32_MIN;
  return std::int32_t(y);
}
inline std::uint32_t EncodeUnsigned(double x, double p) {
  double y = x * p;
  if (y > p) return std::uint32_t(p);
  if (0 > y) return 0;
  if (y != y) return 0;
  return std::uint32_t(std::int64_t(y));
}

template <class T>
T Encode(double x);
template <>
inline std::int8_t Encode<std::int8_t>(double x) {
  return std::int8_t(EncodeSigned(x, 127.0, 128.0) & 0xFF);
}
template <>
inline std::int16_t Encode<std::int16_t>(double x) {
  return std::int16_t(EncodeSigned(x, 32767.0, 32768.0) & 0xFFFF);
}
template <>
inline std::int32_t Encode<std::int32_t>(double x) {
  return EncodeSigned(x, 2147483647.0, 2147483648.0);
}
template <>
inline std::uint8_t Encode<std::uint8_t>(double x) {
  return std::uint8_t(EncodeUnsigned(x, 255.0));
}
template <>
inline std::uint16_t Encode<std::uint16_t>(double x) {
  return std::uint16_t(EncodeUnsigned(x, 65535.0));
}
template <>
inline std::uint32_t Encode<std::uint32_t>(double x) {
  return EncodeUnsigned(x, 4294967295.0);
}
template <>
inline float Encode<float>(double x) {
  return float(x);
}
template <>
inline double Encode<double>(double x) {
  return x;
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
  if constexpr (std::is_floating_point_v<T>) {
    return T(1);
  } else {
    return std::numeric_limits<T>::max();
  }
}

// --- Channel table -----------------------------------------------------------
// For each source and target layout, which source sample feeds each target
// sample, in target memory order: 0 to 3 for s0 to s3, F for the alpha fill.
constexpr int F = -1;
struct Mapping {
  int targetSamples;
  int from[4];
};

// Layouts by index: RGB, RGBA, Lum, LumA, BGR, BGRA (a Bayer source reads as
// Lum).
inline constexpr Mapping kTable[6][6] = {
    // to RGB        RGBA                Lum          LumA          BGR           BGRA
    {{3, {0, 1, 2}},
     {4, {0, 1, 2, F}},
     {1, {0}},
     {2, {0, F}},
     {3, {2, 1, 0}},
     {4, {2, 1, 0, F}}},  // RGB
    {{3, {0, 1, 2}},
     {4, {0, 1, 2, 3}},
     {1, {0}},
     {2, {0, 3}},
     {3, {2, 1, 0}},
     {4, {2, 1, 0, 3}}},  // RGBA
    {{3, {0, 0, 0}},
     {4, {0, 0, 0, F}},
     {1, {0}},
     {2, {0, F}},
     {3, {0, 0, 0}},
     {4, {0, 0, 0, F}}},  // Lum
    {{3, {0, 0, 0}},
     {4, {0, 0, 0, 1}},
     {1, {0}},
     {2, {0, 1}},
     {3, {0, 0, 0}},
     {4, {0, 0, 0, 1}}},  // LumA
    {{3, {2, 1, 0}},
     {4, {2, 1, 0, F}},
     {1, {2}},
     {2, {2, F}},
     {3, {0, 1, 2}},
     {4, {0, 1, 2, F}}},  // BGR
    {{3, {2, 1, 0}},
     {4, {2, 1, 0, 3}},
     {1, {2}},
     {2, {2, 3}},
     {3, {0, 1, 2}},
     {4, {0, 1, 2, 3}}},  // BGRA
};
inline constexpr int kSourceSamples[6] = {3, 4, 1, 2, 3, 4};

// One conversion over `count` pixels as a plain scalar loop: every target
// sample from its source sample, or the fill.
template <class S, class T>
void ConvertPixels(const Mapping& m, int sourceSamples, unsigned count, T* t, const S* s) {
  const std::size_t targetStep = std::size_t(m.targetSamples);
  const std::size_t sourceStep = std::size_t(sourceSamples);
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t k = 0; k < targetStep; ++k) {
      if (m.from[k] == F) {
        t[i * targetStep + k] = Fill<T>();
      } else {
        t[i * targetStep + k] = Convert<S, T>(s[i * sourceStep + std::size_t(m.from[k])]);
      }
    }
  }
}

// --- Types and layouts given at run time ---------------------------------------
// Calls f with a value of the sample type that `type` names; false for any
// other value.
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
  switch (type) {
    case P::RGB: return 0;
    case P::RGBA: return 1;
    case P::Lum:
    case P::BayerRG:
    case P::BayerBG:
    case P::BayerGR:
    case P::BayerGB: return 2;
    case P::LumA: return 3;
    case P::BGR: return 4;
    case P::BGRA: return 5;
  }
  return -1;
}

// The expected target bytes of a conversion of `count` pixels.
inline std::vector<unsigned char> ConvertImage(Zt::EPixelType::ID targetPixel,
                                               Zt::EDataType::ID targetData,
                                               Zt::EPixelType::ID sourcePixel,
                                               Zt::EDataType::ID sourceData, unsigned count,
                                               const void* source) {
  const int from = LayoutIndex(sourcePixel);
  const Mapping& m = kTable[from][LayoutIndex(targetPixel)];
  std::vector<unsigned char> out;
  WithSampleType(sourceData, [&](auto s) {
    WithSampleType(targetData, [&](auto t) {
      using S = decltype(s);
      using T = decltype(t);
      std::vector<T> samples(std::size_t(count) * std::size_t(m.targetSamples));
      std::vector<S> in(std::size_t(count) * std::size_t(kSourceSamples[from]));
      if (count == 0) return;  // memcpy takes no null pointer, not even for 0 bytes
      std::memcpy(in.data(), source, in.size() * sizeof(S));
      ConvertPixels(m, kSourceSamples[from], count, samples.data(), in.data());
      out.resize(samples.size() * sizeof(T));
      std::memcpy(out.data(), samples.data(), out.size());
    });
  });
  return out;
}

}  // namespace ZtConvertRef

#endif
