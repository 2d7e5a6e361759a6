#ifndef ZT_CORE_EX_ZTSAMPLENEON_H
#define ZT_CORE_EX_ZTSAMPLENEON_H

// The operations of the vector rule (ZtSampleVector.h) for AArch64's
// Advanced SIMD: two doubles, four floats or eight 16-bit integers at a
// time. Min and Max are written as the selects they stand for: the
// instructions of that name answer NaN for a NaN on either side. A
// conversion to an integer answers 0 for NaN here, so the signed targets
// put their NaN result in place first.
//
// Internal: included only by the conversion cells.

#include <arm_neon.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "ZtSampleRule.h"

#define ZT_VECTOR __attribute__((always_inline)) inline
#define ZT_VECTOR_RUN __attribute__((noinline))

namespace Zt {
namespace Sample {
namespace Neon {

using VD = float64x2_t;
using VF = float32x4_t;
using VW = uint16x8_t;

constexpr std::uint64_t kDoubles = 2;
// No product rounded toward zero but through the control register: Float
// goes to the integers in double steps.
constexpr bool kTowardZero = false;

template <class V>
ZT_VECTOR V Splat(double x);
template <>
ZT_VECTOR VD Splat<VD>(double x) {
  return vdupq_n_f64(x);
}
template <>
ZT_VECTOR VF Splat<VF>(double x) {
  return vdupq_n_f32(float(x));
}

ZT_VECTOR VD Mul(VD a, VD b) { return vmulq_f64(a, b); }
ZT_VECTOR VF Mul(VF a, VF b) { return vmulq_f32(a, b); }
ZT_VECTOR VD MulAdd(VD a, VD b, VD c) { return vfmaq_f64(c, a, b); }
ZT_VECTOR VF MulAdd(VF a, VF b, VF c) { return vfmaq_f32(c, a, b); }
ZT_VECTOR VD NegMulAdd(VD a, VD b, VD c) { return vfmsq_f64(c, a, b); }
ZT_VECTOR VF NegMulAdd(VF a, VF b, VF c) { return vfmsq_f32(c, a, b); }
ZT_VECTOR VD Min(VD a, VD b) { return vbslq_f64(vcltq_f64(a, b), a, b); }
ZT_VECTOR VD Max(VD a, VD b) { return vbslq_f64(vcgtq_f64(a, b), a, b); }
ZT_VECTOR VD ScaleProduct(VD a, VD b) { return vmulq_f64(a, b); }
ZT_VECTOR VD IfPositive(VD v, VD yes, VD no) {
  return vbslq_f64(vcgtq_f64(v, vdupq_n_f64(0.0)), yes, no);
}
ZT_VECTOR VF IfPositive(VF v, VF yes, VF no) {
  return vbslq_f32(vcgtq_f32(v, vdupq_n_f32(0.0f)), yes, no);
}

// `Lanes` samples as values of type E, through a small array: the narrow
// types have no load of exactly two or four samples.
template <class E, std::size_t Lanes, class S>
ZT_VECTOR void Widen(E (&values)[Lanes], const S* s) {
  S samples[Lanes];
  std::memcpy(samples, s, sizeof(samples));
  for (std::size_t i = 0; i < Lanes; ++i) values[i] = E(samples[i]);
}

template <EDataType::ID D>
ZT_VECTOR VD LoadDouble(const TSample<D>* s) {
  if constexpr (D == EDataType::Double) {
    return vld1q_f64(s);
  } else if constexpr (D == EDataType::Float) {
    return vcvt_f64_f32(vld1_f32(s));
  } else {
    double values[2];
    Widen(values, s);
    return vld1q_f64(values);
  }
}

template <EDataType::ID D>
ZT_VECTOR VF LoadFloat(const TSample<D>* s) {
  if constexpr (D == EDataType::Float) {
    return vld1q_f32(s);
  } else if constexpr (D == EDataType::Short) {
    return vcvtq_f32_s32(vmovl_s16(vld1_s16(s)));
  } else if constexpr (D == EDataType::UShort) {
    return vcvtq_f32_u32(vmovl_u16(vld1_u16(s)));
  } else {
    float values[4];
    Widen(values, s);
    return vld1q_f32(values);
  }
}

template <EDataType::ID D>
ZT_VECTOR void Store(TSample<D>* t, VD x) {
  using T = TDataType<D>;
  if constexpr (D == EDataType::Double) {
    vst1q_f64(t, x);
  } else if constexpr (D == EDataType::Float) {
    vst1_f32(t, vcvt_f32_f64(x));
  } else if constexpr (D == EDataType::UInt) {
    vst1_u32(t, vmovn_u64(vcvtq_u64_f64(x)));
  } else {
    if constexpr (T::Kind == EKind::Signed) {
      x = vbslq_f64(vceqq_f64(x, x), x, vdupq_n_f64(T::NaNResult));
    }
    const int32x2_t whole = vmovn_s64(vcvtq_s64_f64(x));
    const TSample<D> samples[2] = {TSample<D>(vget_lane_s32(whole, 0)),
                                   TSample<D>(vget_lane_s32(whole, 1))};
    std::memcpy(t, samples, sizeof(samples));
  }
}

template <EDataType::ID D>
ZT_VECTOR void Store(TSample<D>* t, VF x) {
  static_assert(D == EDataType::Float, "single steps end in Float here");
  vst1q_f32(t, x);
}

template <EDataType::ID D>
ZT_VECTOR VW LoadWords(const TSample<D>* s) {
  if constexpr (sizeof(TSample<D>) == 1) {
    return vmovl_u8(vld1_u8(s));
  } else {
    return vld1q_u16(s);
  }
}
ZT_VECTOR VW MulLow(VW w, std::uint16_t m) { return vmulq_n_u16(w, m); }
template <int Shift>
ZT_VECTOR VW MulHighShift(VW w, std::uint16_t m) {
  const uint32x4_t low = vshrq_n_u32(vmull_n_u16(vget_low_u16(w), m), Shift);
  const uint32x4_t high = vshrq_n_u32(vmull_n_u16(vget_high_u16(w), m), Shift);
  return vcombine_u16(vmovn_u32(low), vmovn_u32(high));
}
template <EDataType::ID D>
ZT_VECTOR void Store(TSample<D>* t, VW w) {
  if constexpr (sizeof(TSample<D>) == 1) {
    vst1_u8(t, vmovn_u16(w));
  } else {
    vst1q_u16(t, w);
  }
}

#include "ZtSampleVector.h"

}  // namespace Neon
}  // namespace Sample
}  // namespace Zt

#undef ZT_VECTOR
#undef ZT_VECTOR_RUN

#endif
