#ifndef ZT_CORE_EX_ZTSAMPLEAVX2_H
#define ZT_CORE_EX_ZTSAMPLEAVX2_H

// The operations of the vector rule (ZtSampleVector.h) for AVX2 with FMA:
// four doubles, eight floats or sixteen 16-bit integers at a time.
//
// Internal: included only by the conversion cells.

#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "ZtSampleRule.h"

#define ZT_VECTOR __attribute__((target("avx2,fma"), always_inline)) inline
#define ZT_VECTOR_RUN __attribute__((target("avx2,fma"), noinline))

namespace Zt {
namespace Sample {
namespace Avx2 {

using VD = __m256d;
using VF = __m256;
using VW = __m256i;

constexpr std::uint64_t kDoubles = 4;
// AVX2 has no product rounded toward zero other than through the control
// register: Float goes to the integers in double steps.
constexpr bool kTowardZero = false;

template <class V>
ZT_VECTOR V Splat(double x);
template <>
ZT_VECTOR VD Splat<VD>(double x) {
  return _mm256_set1_pd(x);
}
template <>
ZT_VECTOR VF Splat<VF>(double x) {
  return _mm256_set1_ps(float(x));
}

ZT_VECTOR VD Mul(VD a, VD b) { return _mm256_mul_pd(a, b); }
ZT_VECTOR VF Mul(VF a, VF b) { return _mm256_mul_ps(a, b); }
ZT_VECTOR VD MulAdd(VD a, VD b, VD c) { return _mm256_fmadd_pd(a, b, c); }
ZT_VECTOR VF MulAdd(VF a, VF b, VF c) { return _mm256_fmadd_ps(a, b, c); }
ZT_VECTOR VD NegMulAdd(VD a, VD b, VD c) { return _mm256_fnmadd_pd(a, b, c); }
ZT_VECTOR VF NegMulAdd(VF a, VF b, VF c) { return _mm256_fnmadd_ps(a, b, c); }
ZT_VECTOR VD Min(VD a, VD b) { return _mm256_min_pd(a, b); }
ZT_VECTOR VD Max(VD a, VD b) { return _mm256_max_pd(a, b); }
ZT_VECTOR VD ScaleProduct(VD a, VD b) { return _mm256_mul_pd(a, b); }
ZT_VECTOR VD IfPositive(VD v, VD yes, VD no) {
  return _mm256_blendv_pd(no, yes, _mm256_cmp_pd(v, _mm256_setzero_pd(), _CMP_GT_OQ));
}
ZT_VECTOR VF IfPositive(VF v, VF yes, VF no) {
  return _mm256_blendv_ps(no, yes, _mm256_cmp_ps(v, _mm256_setzero_ps(), _CMP_GT_OQ));
}

// Up to 8 bytes from p, as the low bytes of a register.
template <int Bytes>
ZT_VECTOR __m128i LoadLow(const void* p) {
  if constexpr (Bytes == 4) {
    std::int32_t bits;
    std::memcpy(&bits, p, 4);
    return _mm_cvtsi32_si128(bits);
  } else {
    return _mm_loadl_epi64(static_cast<const __m128i*>(p));
  }
}

template <EDataType::ID D>
ZT_VECTOR VD LoadDouble(const TSample<D>* s) {
  if constexpr (D == EDataType::Byte) {
    return _mm256_cvtepi32_pd(_mm_cvtepi8_epi32(LoadLow<4>(s)));
  } else if constexpr (D == EDataType::UByte) {
    return _mm256_cvtepi32_pd(_mm_cvtepu8_epi32(LoadLow<4>(s)));
  } else if constexpr (D == EDataType::Short) {
    return _mm256_cvtepi32_pd(_mm_cvtepi16_epi32(LoadLow<8>(s)));
  } else if constexpr (D == EDataType::UShort) {
    return _mm256_cvtepi32_pd(_mm_cvtepu16_epi32(LoadLow<8>(s)));
  } else if constexpr (D == EDataType::Int) {
    return _mm256_cvtepi32_pd(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s)));
  } else if constexpr (D == EDataType::UInt) {
    // As signed integers after flipping the top bit, then moved up by 2^31:
    // both steps are exact.
    const __m128i flipped = _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s)),
                                          _mm_set1_epi32(INT32_MIN));
    return _mm256_add_pd(_mm256_cvtepi32_pd(flipped), _mm256_set1_pd(2147483648.0));
  } else if constexpr (D == EDataType::Float) {
    return _mm256_cvtps_pd(_mm_loadu_ps(s));
  } else {
    return _mm256_loadu_pd(s);
  }
}

template <EDataType::ID D>
ZT_VECTOR VF LoadFloat(const TSample<D>* s) {
  if constexpr (D == EDataType::Byte) {
    return _mm256_cvtepi32_ps(_mm256_cvtepi8_epi32(LoadLow<8>(s)));
  } else if constexpr (D == EDataType::UByte) {
    return _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(LoadLow<8>(s)));
  } else if constexpr (D == EDataType::Short) {
    return _mm256_cvtepi32_ps(
        _mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s))));
  } else if constexpr (D == EDataType::UShort) {
    return _mm256_cvtepi32_ps(
        _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s))));
  } else {
    return _mm256_loadu_ps(s);
  }
}

template <EDataType::ID D>
ZT_VECTOR void Store(TSample<D>* t, VD x) {
  if constexpr (D == EDataType::Double) {
    _mm256_storeu_pd(t, x);
  } else if constexpr (D == EDataType::Float) {
    _mm_storeu_ps(t, _mm256_cvtpd_ps(x));
  } else if constexpr (D == EDataType::UInt) {
    // 0 <= x <= P: the integer part, moved down by 2^31 (exact), into the
    // signed range, and the top bit flipped back.
    const VD whole = _mm256_round_pd(x, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
    const __m128i low = _mm256_cvttpd_epi32(_mm256_sub_pd(whole, _mm256_set1_pd(2147483648.0)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(t), _mm_xor_si128(low, _mm_set1_epi32(INT32_MIN)));
  } else {
    const __m128i whole = _mm256_cvttpd_epi32(x);
    if constexpr (sizeof(TSample<D>) == 1) {
      const __m128i bytes = _mm_shuffle_epi8(
          whole, _mm_setr_epi8(0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1));
      const std::int32_t packed = _mm_cvtsi128_si32(bytes);
      std::memcpy(t, &packed, 4);
    } else if constexpr (sizeof(TSample<D>) == 2) {
      const __m128i halves = _mm_shuffle_epi8(
          whole, _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, -1, -1, -1, -1, -1, -1, -1, -1));
      _mm_storel_epi64(reinterpret_cast<__m128i*>(t), halves);
    } else {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(t), whole);
    }
  }
}

template <EDataType::ID D>
ZT_VECTOR void Store(TSample<D>* t, VF x) {
  static_assert(D == EDataType::Float, "single steps end in Float here");
  _mm256_storeu_ps(t, x);
}

template <EDataType::ID D>
ZT_VECTOR VW LoadWords(const TSample<D>* s) {
  if constexpr (sizeof(TSample<D>) == 1) {
    return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s)));
  } else {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
  }
}
ZT_VECTOR VW MulLow(VW w, std::uint16_t m) {
  return _mm256_mullo_epi16(w, _mm256_set1_epi16(short(m)));
}
template <int Shift>
ZT_VECTOR VW MulHighShift(VW w, std::uint16_t m) {
  return _mm256_srli_epi16(_mm256_mulhi_epu16(w, _mm256_set1_epi16(short(m))), Shift - 16);
}
template <EDataType::ID D>
ZT_VECTOR void Store(TSample<D>* t, VW w) {
  if constexpr (sizeof(TSample<D>) == 1) {
    // Every word is at most 255 here: packing cannot saturate.
    const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(w, w), 0x08);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(t), _mm256_castsi256_si128(packed));
  } else {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(t), w);
  }
}

#include "ZtSampleVector.h"

}  // namespace Avx2
}  // namespace Sample
}  // namespace Zt

#undef ZT_VECTOR
#undef ZT_VECTOR_RUN

#endif
