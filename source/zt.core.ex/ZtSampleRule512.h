#ifndef ZT_CORE_EX_ZTSAMPLERULE512_H
#define ZT_CORE_EX_ZTSAMPLERULE512_H

// The sample rule of ZtSampleRule.h on eight samples at a time, in AVX-512
// registers, for the wide conversion path. Every step is the same IEEE
// double operation as in the scalar rule, rounded the same way, so both give
// the same bits; the tests hold the two paths against each other.
//
// Between Float and the integer types of up to 16 bits, sixteen samples go
// at a time in single precision, by steps shown below to give the same
// values as the double steps. Two double steps, too, are formed differently
// and give the same values:
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

// --- Float samples to integers of up to 16 bits -----------------------------
// Sixteen samples at a time in single precision, with the same results as
// the double steps above. For these targets P and N are floats and every
// product x * P or x * N of a float x has at most 24 + 16 significant bits,
// so the rule's double product y is exact. The single-precision product
// rounded toward zero, z, then lies between y and the integer that
// truncating y gives (every integer below 2^24 is a float, and rounding
// toward zero never passes one), so truncating z gives the same integer.
// z passes a saturation bound (P, or the low bound, both floats) exactly
// when y does, or lands on it, where the bound is the result anyway. An
// overflow gives the largest float, beyond either bound as y is; an
// underflow concerns only products that truncate to 0. A NaN goes through
// min and max as in Truncate512. The tests compare the two forms on every
// float.
template <EDataType::ID D>
constexpr bool kNarrowInteger = TDataType<D>::Kind != EKind::Floating && sizeof(TSample<D>) <= 2;

constexpr __mmask16 kAll16 = 0xFFFF;

// Floats to samples of a narrow integer target, saturated and truncated to
// 32-bit integers; a NaN gives the integer with only the top bit set.
template <EDataType::ID D>
ZT_SAMPLE_AVX512 __m512i TruncateFloat512(__m512 x) {
  using T = TDataType<D>;
  static_assert(kNarrowInteger<D>, "exact in single precision for narrow targets only");
  const __m512 top = _mm512_set1_ps(float(T::P));
  constexpr int kTowardZero = _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC;
  if constexpr (T::Kind == EKind::Signed) {
    const __mmask16 above = _mm512_cmp_ps_mask(x, _mm512_setzero_ps(), _CMP_GT_OQ);
    const __m512 scale = _mm512_mask_blend_ps(above, _mm512_set1_ps(float(T::N)), top);
    const __m512 scaled = _mm512_maskz_mul_round_ps(kAll16, x, scale, kTowardZero);
    const __m512 below = _mm512_maskz_min_ps(kAll16, top, scaled);
    const __m512 within = _mm512_maskz_max_ps(kAll16, _mm512_set1_ps(float(-T::N)), below);
    return _mm512_maskz_cvttps_epi32(kAll16, within);
  } else {
    const __m512 scaled = _mm512_maskz_mul_round_ps(kAll16, x, top, kTowardZero);
    const __m512 below = _mm512_maskz_min_ps(kAll16, top, scaled);
    return _mm512_maskz_max_epi32(kAll16, _mm512_maskz_cvttps_epi32(kAll16, below),
                                  _mm512_setzero_si512());
  }
}

// `mask` of sixteen floats to a narrow integer target, stored; lanes outside
// the mask are neither read nor written.
template <EDataType::ID D>
ZT_SAMPLE_AVX512 void ConvertFloat512(TSample<D>* t, const float* s, __mmask16 mask) {
  const __m512i whole = TruncateFloat512<D>(_mm512_maskz_loadu_ps(mask, s));
  if constexpr (sizeof(TSample<D>) == 1) {
    _mm_mask_storeu_epi8(t, mask, _mm512_maskz_cvtepi32_epi8(kAll16, whole));
  } else {
    _mm256_mask_storeu_epi16(t, mask, _mm512_maskz_cvtepi32_epi16(kAll16, whole));
  }
}

// --- Integers of up to 16 bits to Float ----------------------------------------
// Sixteen samples at a time in single precision. The rule rounds the quotient
// v / P to a double and that to a float; rounding it to a float at once
// gives the same, because P is odd: v / P is then never a float midpoint
// and stays, relative to its size, at least 2^-40 away from one, far beyond
// what the double's rounding can move it. The float quotient comes from two
// fused multiply-adds with the rounded reciprocal, as in Quotient512, and the
// negative side's product with F = 1 / N, a power of two, is exact. The
// tests hold every sample of these types against the reference.

// `mask` of sixteen samples as floats, exactly; lanes outside the mask are
// not read.
template <EDataType::ID D>
ZT_SAMPLE_AVX512 __m512 LoadFloat512(const TSample<D>* s, __mmask16 mask) {
  static_assert(kNarrowInteger<D>, "exact in single precision for narrow sources only");
  __m512i whole;
  if constexpr (D == EDataType::Byte) {
    whole = _mm512_maskz_cvtepi8_epi32(kAll16, _mm_maskz_loadu_epi8(mask, s));
  } else if constexpr (D == EDataType::UByte) {
    whole = _mm512_maskz_cvtepu8_epi32(kAll16, _mm_maskz_loadu_epi8(mask, s));
  } else if constexpr (D == EDataType::Short) {
    whole = _mm512_maskz_cvtepi16_epi32(kAll16, _mm256_maskz_loadu_epi16(mask, s));
  } else {
    whole = _mm512_maskz_cvtepu16_epi32(kAll16, _mm256_maskz_loadu_epi16(mask, s));
  }
  return _mm512_maskz_cvtepi32_ps(kAll16, whole);
}

// Raw samples, as floats, to normalised values rounded to float.
template <EDataType::ID D>
ZT_SAMPLE_AVX512 __m512 DecodeFloat512(__m512 v) {
  using T = TDataType<D>;
  constexpr float kReciprocal = float(1.0 / T::P);
  const __m512 reciprocal = _mm512_set1_ps(kReciprocal);
  const __m512 estimate = _mm512_maskz_mul_ps(kAll16, v, reciprocal);
  const __m512 remainder =
      _mm512_maskz_fnmadd_ps(kAll16, estimate, _mm512_set1_ps(float(T::P)), v);
  const __m512 quotient = _mm512_maskz_fmadd_ps(kAll16, remainder, reciprocal, estimate);
  if constexpr (T::Kind == EKind::Signed) {
    const __mmask16 positive = _mm512_cmp_ps_mask(v, _mm512_setzero_ps(), _CMP_GT_OQ);
    const __m512 negative = _mm512_maskz_mul_ps(kAll16, v, _mm512_set1_ps(float(T::F)));
    return _mm512_mask_blend_ps(positive, negative, quotient);
  } else {
    return quotient;
  }
}

// Whether a run from SD to TD goes sixteen samples at a time in single
// precision, or eight in double precision.
template <EDataType::ID SD, EDataType::ID TD>
constexpr bool kSingleSteps = (SD == EDataType::Float && kNarrowInteger<TD>) ||
                              (kNarrowInteger<SD> && TD == EDataType::Float);

// The `mask` of one step's samples, converted and stored.
template <EDataType::ID SD, EDataType::ID TD>
ZT_SAMPLE_AVX512 void Step512(TSample<TD>* t, const TSample<SD>* s, unsigned mask) {
  if constexpr (SD == EDataType::Float && kNarrowInteger<TD>) {
    ConvertFloat512<TD>(t, s, __mmask16(mask));
  } else if constexpr (kSingleSteps<SD, TD>) {
    const __m512 x = DecodeFloat512<SD>(LoadFloat512<SD>(s, __mmask16(mask)));
    _mm512_mask_storeu_ps(t, __mmask16(mask), x);
  } else {
    EncodeStore512<TD>(t, __mmask8(mask), Decode512<SD>(Load512<SD>(s, __mmask8(mask))));
  }
}

// How far ahead of its use each line of a source is requested from memory.
// A run that comes from memory is read faster when its lines are asked for
// this far ahead than when the processor has to find the stream itself. A
// prefetch never faults, so the address may lie past the end of the run; it
// is formed as an integer, never as a pointer past the run.
constexpr std::uintptr_t kFetchAhead = 4096;

ZT_SAMPLE_AVX512 void FetchAhead(const void* p) {
  _mm_prefetch(reinterpret_cast<const char*>(reinterpret_cast<std::uintptr_t>(p) + kFetchAhead),
               _MM_HINT_T0);
}

// A run of n samples of one type to the same number of another, a step at a
// time with one fetch ahead per 64 source bytes, the last few under a mask.
template <EDataType::ID SD, EDataType::ID TD>
ZT_SAMPLE_AVX512 void ConvertRun512(TSample<TD>* t, const TSample<SD>* s, std::uint64_t n) {
  constexpr std::uint64_t kLanes = kSingleSteps<SD, TD> ? 16 : 8;
  constexpr std::uint64_t kStepBytes = kLanes * sizeof(TSample<SD>);
  // Samples per fetch: those of 64 source bytes, or of one step if more.
  constexpr std::uint64_t kPerFetch = kStepBytes < 64 ? 64 / kStepBytes * kLanes : kLanes;
  constexpr unsigned kFull = (1u << kLanes) - 1u;
  std::uint64_t i = 0;
  for (; i + kPerFetch <= n; i += kPerFetch) {
    FetchAhead(s + i);
    for (std::uint64_t k = i; k < i + kPerFetch; k += kLanes) {
      Step512<SD, TD>(t + k, s + k, kFull);
    }
  }
  for (; i + kLanes <= n; i += kLanes) {
    Step512<SD, TD>(t + i, s + i, kFull);
  }
  if (i < n) {
    Step512<SD, TD>(t + i, s + i, (1u << (n - i)) - 1u);
  }
}

}  // namespace Sample
}  // namespace Zt

#endif
