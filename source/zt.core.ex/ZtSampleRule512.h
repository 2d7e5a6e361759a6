#ifndef ZT_CORE_EX_ZTSAMPLERULE512_H
#define ZT_CORE_EX_ZTSAMPLERULE512_H

// The sample rule of ZtSampleRule.h on eight samples at a time, in AVX-512
// registers, for the wide conversion path. Every step is the same IEEE
// double operation as in the scalar rule, rounded the same way, so both give
// the same bits; the tests hold the two paths against each other.
//
// Two steps are formed differently and give the same values:
//  - The quotient v / P of the decode comes from two fused multiply-adds
//    instead of the divider. With R = 1 / P rounded to nearest, e = v * R is
//    within an ulp of v / P, the remainder v - e * P is then exact in one
//    fused operation, and e + remainder * R, rounded once, is the correctly
//    rounded quotient (the classic correction step for division by a
//    reciprocal). The samples are few enough to check them all: the tests
//    compare this quotient with the division for every sample of every
//    integer type. A vector unit computes it several times faster than it
//    divides.
//  - The saturation selects are the vector max and min instructions, whose
//    order of operands makes them the selects of the rule: min(P, y) is
//    "P < y ? P : y" and max(low, y) is "low > y ? low : y", a NaN y passing
//    through both. Its truncation then gives the integer with only the top
//    bit set, which is the rule's result for NaN: as it stands for Int, cut
//    to 0 for the narrower types, and made 0 by an integer max with 0 for
//    the unsigned ones, which needs no floating-point max.
//
// Internal: included only by the conversion cells and their tests, in
// functions compiled for AVX-512 (ZT_SAMPLE_AVX512).

#include <immintrin.h>

#include <cstdint>

#include "ZtSampleRule.h"

#define ZT_SAMPLE_AVX512 \
  __attribute__((target("avx512f,avx512dq,avx512bw,avx512vl,fma"), always_inline)) inline

namespace Zt {
namespace Sample {

// The full mask, for the zero-masking forms of the instructions: those start
// from no undefined register, which GCC 12 warns about in the plain forms,
// and a full mask costs nothing.
constexpr __mmask8 kAll = 0xFF;

// The quotient v / P, correctly rounded, for 0 <= v <= P.
template <class T>
ZT_SAMPLE_AVX512 __m512d Quotient512(__m512d v) {
  constexpr double kReciprocal = 1.0 / T::P;
  const __m512d reciprocal = _mm512_set1_pd(kReciprocal);
  const __m512d estimate = _mm512_mul_pd(v, reciprocal);
  const __m512d remainder = _mm512_fnmadd_pd(estimate, _mm512_set1_pd(T::P), v);
  return _mm512_fmadd_pd(remainder, reciprocal, estimate);
}

// Loads `mask` of eight samples as doubles, exactly; lanes outside the mask
// are not read.
template <EDataType::ID D>
ZT_SAMPLE_AVX512 __m512d Load512(const TSample<D>* s, __mmask8 mask) {
  if constexpr (D == EDataType::Byte) {
    return _mm512_maskz_cvtepi32_pd(kAll, _mm256_cvtepi8_epi32(_mm_maskz_loadu_epi8(mask, s)));
  } else if constexpr (D == EDataType::UByte) {
    return _mm512_maskz_cvtepi32_pd(kAll, _mm256_cvtepu8_epi32(_mm_maskz_loadu_epi8(mask, s)));
  } else if constexpr (D == EDataType::Short) {
    return _mm512_maskz_cvtepi32_pd(kAll, _mm256_cvtepi16_epi32(_mm_maskz_loadu_epi16(mask, s)));
  } else if constexpr (D == EDataType::UShort) {
    return _mm512_maskz_cvtepi32_pd(kAll, _mm256_cvtepu16_epi32(_mm_maskz_loadu_epi16(mask, s)));
  } else if constexpr (D == EDataType::Int) {
    return _mm512_maskz_cvtepi32_pd(kAll, _mm256_maskz_loadu_epi32(mask, s));
  } else if constexpr (D == EDataType::UInt) {
    return _mm512_maskz_cvtepu32_pd(kAll, _mm256_maskz_loadu_epi32(mask, s));
  } else if constexpr (D == EDataType::Float) {
    return _mm512_maskz_cvtps_pd(kAll, _mm256_maskz_loadu_ps(mask, s));
  } else {
    return _mm512_maskz_loadu_pd(mask, s);
  }
}

// Raw samples, as doubles, to normalised values.
template <EDataType::ID D>
ZT_SAMPLE_AVX512 __m512d Decode512(__m512d v) {
  using T = TDataType<D>;
  if constexpr (T::Kind == EKind::Floating) {
    return v;
  } else if constexpr (T::Kind == EKind::Unsigned) {
    return Quotient512<T>(v);
  } else {
    const __mmask8 positive = _mm512_cmp_pd_mask(v, _mm512_setzero_pd(), _CMP_GT_OQ);
    const __m512d negative = _mm512_mul_pd(v, _mm512_set1_pd(T::F));
    return _mm512_mask_blend_pd(positive, negative, Quotient512<T>(v));
  }
}

// Normalised values scaled to an integer target: by P above zero, by N at
// and below it for the signed types.
template <EDataType::ID D>
ZT_SAMPLE_AVX512 __m512d Scale512(__m512d x) {
  using T = TDataType<D>;
  const __m512d positive = _mm512_mul_pd(x, _mm512_set1_pd(T::P));
  if constexpr (T::Kind == EKind::Signed) {
    const __mmask8 above = _mm512_cmp_pd_mask(x, _mm512_setzero_pd(), _CMP_GT_OQ);
    return _mm512_mask_blend_pd(above, _mm512_mul_pd(x, _mm512_set1_pd(T::N)), positive);
  } else {
    return positive;
  }
}

// Normalised values to samples of a target other than UInt, saturated and
// truncated to 32-bit integers; a NaN gives the integer with only the top
// bit set.
template <EDataType::ID D>
ZT_SAMPLE_AVX512 __m256i Truncate512(__m512d x) {
  using T = TDataType<D>;
  const __m512d below = _mm512_maskz_min_pd(kAll, _mm512_set1_pd(T::P), Scale512<D>(x));
  if constexpr (T::Kind == EKind::Signed) {
    const __m512d within = _mm512_maskz_max_pd(kAll, _mm512_set1_pd(-T::N), below);
    return _mm512_maskz_cvttpd_epi32(kAll, within);
  } else {
    return _mm256_max_epi32(_mm512_maskz_cvttpd_epi32(kAll, below), _mm256_setzero_si256());
  }
}

// Normalised values to raw samples, stored into the lanes of `mask`.
template <EDataType::ID D>
ZT_SAMPLE_AVX512 void EncodeStore512(TSample<D>* t, __mmask8 mask, __m512d x) {
  using T = TDataType<D>;
  if constexpr (D == EDataType::Double) {
    _mm512_mask_storeu_pd(t, mask, x);
  } else if constexpr (D == EDataType::Float) {
    _mm256_mask_storeu_ps(t, mask, _mm512_maskz_cvtpd_ps(kAll, x));
  } else if constexpr (D == EDataType::UInt) {
    // Beyond the 32-bit integers: saturated in doubles, max first, so that
    // a NaN gives 0, and truncated to unsigned integers.
    const __m512d top = _mm512_set1_pd(T::P);
    const __m512d atLeastZero = _mm512_maskz_max_pd(kAll, Scale512<D>(x), _mm512_setzero_pd());
    const __m512d clamped = _mm512_maskz_min_pd(kAll, atLeastZero, top);
    _mm256_mask_storeu_epi32(t, mask, _mm512_maskz_cvttpd_epu32(kAll, clamped));
  } else {
    const __m256i whole = Truncate512<D>(x);
    if constexpr (sizeof(TSample<D>) == 1) {
      _mm_mask_storeu_epi8(t, mask, _mm256_maskz_cvtepi32_epi8(kAll, whole));
    } else if constexpr (sizeof(TSample<D>) == 2) {
      _mm_mask_storeu_epi16(t, mask, _mm256_maskz_cvtepi32_epi16(kAll, whole));
    } else {
      _mm256_mask_storeu_epi32(t, mask, whole);
    }
  }
}

// A run of n samples of one type to the same number of another, eight at a
// time, the last few under a mask.
template <EDataType::ID SD, EDataType::ID TD>
ZT_SAMPLE_AVX512 void ConvertRun512(TSample<TD>* t, const TSample<SD>* s, std::uint64_t n) {
  std::uint64_t i = 0;
  for (; i + 8 <= n; i += 8) {
    EncodeStore512<TD>(t + i, kAll, Decode512<SD>(Load512<SD>(s + i, kAll)));
  }
  if (i < n) {
    const __mmask8 mask = __mmask8((1u << (n - i)) - 1u);
    EncodeStore512<TD>(t + i, mask, Decode512<SD>(Load512<SD>(s + i, mask)));
  }
}

}  // namespace Sample
}  // namespace Zt

#endif
