#ifndef ZT_CORE_EX_ZTSAMPLEAVX512_H
#define ZT_CORE_EX_ZTSAMPLEAVX512_H

// The operations of the vector rule (ZtSampleVector.h) for AVX-512: eight
// doubles, sixteen floats or thirty-two 16-bit integers at a time. The
// zero-masking forms of the instructions, with a full mask, start from no
// undefined register, which GCC 12 warns about in the plain forms; the full
// mask costs nothing.
//
// Internal: included only by the conversion cells.

#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "ZtSampleRule.h"

#define ZT_VECTOR \
  __attribute__((target("avx512f,avx512dq,avx512bw,avx512vl,fma"), always_inline)) inline
#define ZT_VECTOR_RUN __attribute__((target("avx512f,avx512dq,avx512bw,avx512vl,fma"), noinline))

namespace Zt {
namespace Sample {
namespace Avx512 {

using VD = __m512d;
using VF = __m512;
using VW = __m512i;

constexpr std::uint64_t kDoubles = 8;
constexpr bool kTowardZero = true;

constexpr __mmask8 kAll8 = 0xFF;
constexpr __mmask16 kAll16 = 0xFFFF;
constexpr __mmask32 kAll32 = 0xFFFFFFFF;

template <class V>
ZT_VECTOR V Splat(double x);
template <>
ZT_VECTOR VD Splat<VD>(double x) {
  return _mm512_set1_pd(x);
}
template <>
ZT_VECTOR VF Splat<VF>(double x) {
  return _mm512_set1_ps(float(x));
}

ZT_VECTOR VD Mul(VD a, VD b) { return _mm512_mul_pd(a, b); }
ZT_VECTOR VF Mul(VF a, VF b) { return _mm512_maskz_mul_ps(kAll16, a, b); }
ZT_VECTOR VD MulAdd(VD a, VD b, VD c) { return _mm512_fmadd_pd(a, b, c); }
ZT_VECTOR VF MulAdd(VF a, VF b, VF c) { return _mm512_maskz_fmadd_ps(kAll16, a, b, c); }
ZT_VECTOR VD NegMulAdd(VD a, VD b, VD c) { return _mm512_fnmadd_pd(a, b, c); }
ZT_VECTOR VF NegMulAdd(VF a, VF b, VF c) { return _mm512_maskz_fnmadd_ps(kAll16, a, b, c); }
ZT_VECTOR VD Min(VD a, VD b) { return _mm512_maskz_min_pd(kAll8, a, b); }
ZT_VECTOR VF Min(VF a, VF b) { return _mm512_maskz_min_ps(kAll16, a, b); }
ZT_VECTOR VD Max(VD a, VD b) { return _mm512_maskz_max_pd(kAll8, a, b); }
ZT_VECTOR VF Max(VF a, VF b) { return _mm512_maskz_max_ps(kAll16, a, b); }
ZT_VECTOR VD ScaleProduct(VD a, VD b) { return _mm512_mul_pd(a, b); }
ZT_VECTOR VF ScaleProduct(VF a, VF b) {
  return _mm512_maskz_mul_round_ps(kAll16, a, b, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
}
ZT_VECTOR VD IfPositive(VD v, VD yes, VD no) {
  return _mm512_mask_blend_pd(_mm512_cmp_pd_mask(v, _mm512_setzero_pd(), _CMP_GT_OQ), no, yes);
}
ZT_VECTOR VF IfPositive(VF v, VF yes, VF no) {
  return _mm512_mask_blend_ps(_mm512_cmp_ps_mask(v, _mm512_setzero_ps(), _CMP_GT_OQ), no, yes);
}

template <EDataType::ID D>
ZT_VECTOR VD LoadDouble(const TSample<D>* s) {
  const auto* p = reinterpret_cast<const __m128i*>(s);
  if constexpr (D == EDataType::Byte) {
    return _mm512_maskz_cvtepi32_pd(kAll8, _mm256_cvtepi8_epi32(_mm_loadl_epi64(p)));
  } else if constexpr (D == EDataType::UByte) {
    return _mm512_maskz_cvtepi32_pd(kAll8, _mm256_cvtepu8_epi32(_mm_loadl_epi64(p)));
  } else if constexpr (D == EDataType::Short) {
    return _mm512_maskz_cvtepi32_pd(kAll8, _mm256_cvtepi16_epi32(_mm_loadu_si128(p)));
  } else if constexpr (D == EDataType::UShort) {
    return _mm512_maskz_cvtepi32_pd(kAll8, _mm256_cvtepu16_epi32(_mm_loadu_si128(p)));
  } else if constexpr (D == EDataType::Int) {
    return _mm512_maskz_cvtepi32_pd(kAll8, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s)));
  } else if constexpr (D == EDataType::UInt) {
    return _mm512_maskz_cvtepu32_pd(kAll8, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s)));
  } else if constexpr (D == EDataType::Float) {
    return _mm512_maskz_cvtps_pd(kAll8, _mm256_loadu_ps(s));
  } else {
    return _mm512_loadu_pd(s);
  }
}

template <EDataType::ID D>
ZT_VECTOR VF LoadFloat(const TSample<D>* s) {
  const auto* p = reinterpret_cast<const __m128i*>(s);
  const auto* q = reinterpret_cast<const __m256i*>(s);
  if constexpr (D == EDataType::Byte) {
    return _mm512_maskz_cvtepi32_ps(kAll16, _mm512_maskz_cvtepi8_epi32(kAll16, _mm_loadu_si128(p)));
  } else if constexpr (D == EDataType::UByte) {
    return _mm512_maskz_cvtepi32_ps(kAll16, _mm512_maskz_cvtepu8_epi32(kAll16, _mm_loadu_si128(p)));
  } else if constexpr (D == EDataType::Short) {
    return _mm512_maskz_cvtepi32_ps(kAll16,
                                    _mm512_maskz_cvtepi16_epi32(kAll16, _mm256_loadu_si256(q)));
  } else if constexpr (D == EDataType::UShort) {
    return _mm512_maskz_cvtepi32_ps(kAll16,
                                    _mm512_maskz_cvtepu16_epi32(kAll16, _mm256_loadu_si256(q)));
  } else {
    return _mm512_loadu_ps(s);
  }
}

template <EDataType::ID D>
ZT_VECTOR void Store(TSample<D>* t, VD x) {
  if constexpr (D == EDataType::Double) {
    _mm512_storeu_pd(t, x);
  } else if constexpr (D == EDataType::Float) {
    _mm256_storeu_ps(t, _mm512_maskz_cvtpd_ps(kAll8, x));
  } else if constexpr (D == EDataType::UInt) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(t), _mm512_maskz_cvttpd_epu32(kAll8, x));
  } else {
    const __m256i whole = _mm512_maskz_cvttpd_epi32(kAll8, x);
    if constexpr (sizeof(TSample<D>) == 1) {
      _mm_storel_epi64(reinterpret_cast<__m128i*>(t), _mm256_maskz_cvtepi32_epi8(kAll8, whole));
    } else if constexpr (sizeof(TSample<D>) == 2) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(t), _mm256_maskz_cvtepi32_epi16(kAll8, whole));
    } else {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(t), whole);
    }
  }
}

template <EDataType::ID D>
ZT_VECTOR void Store(TSample<D>* t, VF x) {
  if constexpr (D == EDataType::Float) {
    _mm512_storeu_ps(t, x);
  } else {
    const __m512i whole = _mm512_maskz_cvttps_epi32(kAll16, x);
    if constexpr (sizeof(TSample<D>) == 1) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(t), _mm512_maskz_cvtepi32_epi8(kAll16, whole));
    } else {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(t),
                          _mm512_maskz_cvtepi32_epi16(kAll16, whole));
    }
  }
}

template <EDataType::ID D>
ZT_VECTOR VW LoadWords(const TSample<D>* s) {
  if constexpr (sizeof(TSample<D>) == 1) {
    return _mm512_maskz_cvtepu8_epi16(kAll32,
                                      _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s)));
  } else {
    return _mm512_loadu_si512(s);
  }
}
ZT_VECTOR VW MulLow(VW w, std::uint16_t m) {
  return _mm512_mullo_epi16(w, _mm512_set1_epi16(short(m)));
}
template <int Shift>
ZT_VECTOR VW MulHighShift(VW w, std::uint16_t m) {
  return _mm512_srli_epi16(_mm512_mulhi_epu16(w, _mm512_set1_epi16(short(m))), Shift - 16);
}
template <EDataType::ID D>
ZT_VECTOR void Store(TSample<D>* t, VW w) {
  if constexpr (sizeof(TSample<D>) == 1) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(t), _mm512_maskz_cvtepi16_epi8(kAll32, w));
  } else {
    _mm512_storeu_si512(t, w);
  }
}

#include "ZtSampleVector.h"

}  // namespace Avx512
}  // namespace Sample
}  // namespace Zt

#undef ZT_VECTOR
#undef ZT_VECTOR_RUN

#endif
