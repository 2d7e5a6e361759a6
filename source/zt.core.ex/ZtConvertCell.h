#ifndef ZT_CORE_EX_ZTCONVERTCELL_H
#define ZT_CORE_EX_ZTCONVERTCELL_H

// The conversion cells and the second stage of their selection, written once
// and instantiated for every combination of source layout, source data type,
// target layout and target data type.
//
// A cell selects raw samples by the layouts (which samples travel, where they
// land) and converts each by the sample rule. On x86-64 each cell is
// compiled three times: for the baseline instruction set, where the compiler
// vectorises the scalar rule of ZtSampleRule.h, and, in functions of their
// own marked for them, for AVX2 with FMA and for AVX-512, which run the
// vector rule of ZtSampleVector.h. AArch64 has the one compilation, which
// runs the vector rule for Advanced SIMD; other processors the scalar rule.
// All give the same bits: every step is an IEEE operation that vector lanes
// round exactly as scalar code does, and moving samples is exact.
//
// Included only by ZtConvertCells.cpp, which instantiates the cells of one
// target data type per translation unit.

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "ZtConvertDispatch.h"
#include "ZtSampleRule.h"
#if defined(__x86_64__)
#include "ZtSampleAvx2.h"
#include "ZtSampleAvx512.h"
#elif defined(__aarch64__)
#include "ZtSampleNeon.h"
#endif

#if defined(__aarch64__)
#define ZT_CONVERT_NEON 1
#else
#define ZT_CONVERT_NEON 0
#endif

#if !defined(__GNUC__) && !defined(__clang__)
#error "the conversion cells need GCC or Clang"
#endif

#if defined(__x86_64__)
#include <immintrin.h>
#define ZT_CONVERT_X86 1
#define ZT_CONVERT_AVX512 __attribute__((target("avx512f,avx512dq,avx512bw,avx512vl,fma")))
#define ZT_CONVERT_AVX2 __attribute__((target("avx2,fma")))
#else
#define ZT_CONVERT_X86 0
#define ZT_CONVERT_AVX512
#define ZT_CONVERT_AVX2
#endif

#define ZT_CONVERT_INLINE inline __attribute__((always_inline))
#define ZT_CONVERT_NOINLINE __attribute__((noinline))

namespace Zt {
namespace Convert {

// Where the samples of a pixel sit. A layout with one colour sample keeps it
// at the red, green and blue positions alike; Alpha is -1 without alpha.
struct SLayout {
  int Samples;
  int Red;
  int Green;
  int Blue;
  int Alpha;

  constexpr bool HasAlpha() const { return Alpha >= 0; }
  constexpr bool HasThreeColours() const { return Samples - (HasAlpha() ? 1 : 0) == 3; }
};

// The ten layouts. A Bayer image is read as luminance: its colour pattern
// plays no part in any conversion.
constexpr SLayout LayoutOf(EPixelType::ID type) {
  switch (type) {
    case EPixelType::RGB: return {3, 0, 1, 2, -1};
    case EPixelType::RGBA: return {4, 0, 1, 2, 3};
    case EPixelType::Lum:
    case EPixelType::BayerRG:
    case EPixelType::BayerBG:
    case EPixelType::BayerGR:
    case EPixelType::BayerGB: return {1, 0, 0, 0, -1};
    case EPixelType::LumA: return {2, 0, 0, 0, 1};
    case EPixelType::BGR: return {3, 2, 1, 0, -1};
    case EPixelType::BGRA: return {4, 2, 1, 0, 3};
  }
  return {0, 0, 0, 0, -1};
}

constexpr int kFill = -1;

// Which source sample feeds target sample k, or kFill for an alpha without a
// source: the channel table, derived from the two layouts.
constexpr int SourceOf(SLayout src, SLayout trg, int k) {
  if (k == trg.Alpha) return src.HasAlpha() ? src.Alpha : kFill;
  if (!trg.HasThreeColours()) return src.Red;
  if (k == trg.Red) return src.Red;
  if (k == trg.Green) return src.Green;
  return src.Blue;
}

// Whether every source sample feeds some target sample.
constexpr bool ReadsEverySample(int sourceSamples, int targetSamples, const int (&from)[4]) {
  for (int s = 0; s < sourceSamples; ++s) {
    bool read = false;
    for (int k = 0; k < targetSamples; ++k) read = read || from[k] == s;
    if (!read) return false;
  }
  return true;
}

// The first (lowest = true) or last source sample that feeds any target
// sample: a run reads nothing of its first pixel before the first such
// sample and nothing of its last pixel after the last one.
constexpr int ListedEdge(int targetSamples, const int (&from)[4], bool lowest) {
  int edge = lowest ? 4 : -1;
  for (int k = 0; k < targetSamples; ++k) {
    if (from[k] == kFill) continue;
    edge = lowest ? (from[k] < edge ? from[k] : edge) : (from[k] > edge ? from[k] : edge);
  }
  return edge;
}

template <EPixelType::ID SP, EPixelType::ID TP>
struct TMapping {
  static constexpr SLayout Src = LayoutOf(SP);
  static constexpr SLayout Trg = LayoutOf(TP);
  static constexpr int SourceSamples = Src.Samples;
  static constexpr int TargetSamples = Trg.Samples;
  // Source sample of each target sample, in target memory order.
  static constexpr int From[4] = {SourceOf(Src, Trg, 0), SourceOf(Src, Trg, 1),
                                  SourceOf(Src, Trg, 2), SourceOf(Src, Trg, 3)};
  static constexpr bool ReadsAll = ReadsEverySample(SourceSamples, TargetSamples, From);
  static constexpr int FirstRead = ListedEdge(TargetSamples, From, true);
  static constexpr int LastRead = ListedEdge(TargetSamples, From, false);
};

// Samples in the caller's buffers are read and written as unaligned: a
// buffer need not be aligned for its sample type (a view may start at any
// byte), and an access through a packed struct is defined at any address.
// The compilers make each one plain access, and still vectorise the loops.
template <class T>
struct __attribute__((packed, may_alias)) TUnaligned {
  T value;
};
template <class T>
ZT_CONVERT_INLINE T Read(const T* p) {
  return reinterpret_cast<const TUnaligned<T>*>(p)->value;
}
template <class T>
ZT_CONVERT_INLINE void Write(T* p, T value) {
  reinterpret_cast<TUnaligned<T>*>(p)->value = value;
}

// --- Moving samples of one type ------------------------------------------
// Target pixels from source pixels of the same sample type: selection and
// the fill only, no arithmetic. The runs do not overlap.
template <EPixelType::ID SP, EPixelType::ID TP, class T>
ZT_CONVERT_INLINE void MoveSamples(T* __restrict t, const T* __restrict s, std::uint64_t n,
                                   T fill) {
  using M = TMapping<SP, TP>;
  constexpr std::uint64_t SS = M::SourceSamples;
  constexpr std::uint64_t TS = M::TargetSamples;
  for (std::uint64_t i = 0; i < n; ++i) {
    for (std::uint64_t k = 0; k < TS; ++k) {
      const std::uint64_t from = i * SS + std::uint64_t(M::From[k]);
      Write(t + i * TS + k, M::From[k] == kFill ? fill : Read(s + from));
    }
  }
}

#if ZT_CONVERT_X86
// The same with AVX-512 permutes, for samples of 2, 4 and 8 bytes (the
// zero-masking forms, whose full mask costs nothing and which, unlike the
// plain forms, start from no undefined register that GCC 12 warns about): a
// masked load of a few pixels, one permute that places every target sample,
// a blend of the fill, a masked store. The masks keep every load inside the
// source run and every store inside the target run. Bytes, which AVX-512BW
// cannot permute across the whole register, go by the AVX2 shuffles below.
struct SIndex {
  alignas(64) std::uint8_t bytes[64];
};

// The bits of a sample, repeated to fill 64 bits: the fill of every lane.
template <class T>
ZT_CONVERT_INLINE std::uint64_t Replicated(T sample) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &sample, sizeof(T));
  for (std::size_t width = sizeof(T) * 8; width < 64; width *= 2) bits |= bits << width;
  return bits;
}

// Permute of n pixels of samples of 2, 4 or 8 bytes: target element j from
// source element j / ts * ss + from[j % ts], little-endian.
constexpr SIndex PermuteIndex(const int (&from)[4], int ss, int ts, int size, int n) {
  SIndex index{};
  for (int j = 0; j < n * ts; ++j) {
    const int source = from[j % ts];
    const int element = source == kFill ? 0 : (j / ts) * ss + source;
    index.bytes[j * size] = std::uint8_t(element);
  }
  return index;
}
// The elements that receive the fill.
constexpr std::uint64_t FillMask(const int (&from)[4], int ts, int n) {
  std::uint64_t mask = 0;
  for (int j = 0; j < n * ts; ++j) {
    if (from[j % ts] == kFill) mask |= std::uint64_t(1) << j;
  }
  return mask;
}

template <EPixelType::ID SP, EPixelType::ID TP, class T>
struct TMove512 {
  using M = TMapping<SP, TP>;
  static constexpr int SS = M::SourceSamples;
  static constexpr int TS = M::TargetSamples;
  static constexpr int Size = int(sizeof(T));
  static constexpr int Widest = SS > TS ? SS : TS;
  static_assert(Size > 1, "bytes go by the AVX2 shuffles");
  // Pixels per step.
  static constexpr int N = (64 / Size) / Widest;

  static constexpr SIndex kPermute = PermuteIndex(M::From, SS, TS, Size, N);
  static constexpr std::uint64_t kFillMask = FillMask(M::From, TS, N);

  // A mask of the first `elements` elements.
  static ZT_CONVERT_INLINE std::uint64_t First(std::uint64_t elements) {
    return elements >= 64 ? ~std::uint64_t(0) : (std::uint64_t(1) << elements) - 1;
  }

  // Moves `pixels` (at most N) pixels. The load leaves out the samples of
  // the first pixel before its first listed one and those of the last pixel
  // after its last listed one: at the ends of a run they may lie outside the
  // caller's memory (a channel taken through an offset pointer). Masked-out
  // elements are neither read nor able to fault.
  static ZT_CONVERT_AVX512 ZT_CONVERT_INLINE void Step(T* t, const T* s, std::uint64_t pixels,
                                                       __m512i fillVector) {
    const std::uint64_t load =
        First((pixels - 1) * SS + std::uint64_t(M::LastRead) + 1) & ~First(M::FirstRead);
    const std::uint64_t store = First(pixels * TS);
    const __m512i permute = _mm512_load_si512(kPermute.bytes);
    if constexpr (Size == 2) {
      __m512i v = _mm512_maskz_loadu_epi16(__mmask32(load), s);
      v = _mm512_permutexvar_epi16(permute, v);
      v = _mm512_mask_mov_epi16(v, __mmask32(kFillMask), fillVector);
      _mm512_mask_storeu_epi16(t, __mmask32(store), v);
    } else if constexpr (Size == 4) {
      __m512i v = _mm512_maskz_loadu_epi32(__mmask16(load), s);
      v = _mm512_maskz_permutexvar_epi32(0xFFFF, permute, v);
      v = _mm512_mask_mov_epi32(v, __mmask16(kFillMask), fillVector);
      _mm512_mask_storeu_epi32(t, __mmask16(store), v);
    } else {
      __m512i v = _mm512_maskz_loadu_epi64(__mmask8(load), s);
      v = _mm512_maskz_permutexvar_epi64(0xFF, permute, v);
      v = _mm512_mask_mov_epi64(v, __mmask8(kFillMask), fillVector);
      _mm512_mask_storeu_epi64(t, __mmask8(store), v);
    }
  }

  static ZT_CONVERT_AVX512 ZT_CONVERT_NOINLINE void Run(T* t, const T* s, std::uint64_t n, T fill) {
    const __m512i fillVector = _mm512_set1_epi64(static_cast<long long>(Replicated(fill)));
    std::uint64_t i = 0;
    for (; i + N <= n; i += N) {
      Sample::FetchAhead(s + i * SS);
      Step(t + i * TS, s + i * SS, N, fillVector);
    }
    if (i < n) {
      Step(t + i * TS, s + i * SS, n - i, fillVector);
    }
  }
};

// The same with AVX2 byte shuffles, for samples of 1, 2 and 4 bytes. AVX2
// shuffles bytes only inside each 16-byte half of a register, so each half
// is loaded with the pixels whose samples it places: L pixels, as many as
// 16 bytes hold on either side, two halves per step. A half is loaded and
// stored as 16 whole bytes; the main loop takes only steps whose 16 bytes
// lie inside both runs (and, where the first pixel's first samples are not
// listed, not the first step), and the rest goes through the same step on
// copies in local buffers holding the listed samples alone.
// Inside each half, target byte b from half byte Shuffle[b]; 0x80 gives 0
// (bytes past the half's pixels, and the fill).
constexpr SIndex HalfShuffleIndex(const int (&from)[4], int ss, int ts, int size, int pixels) {
  SIndex index{};
  for (int half = 0; half < 2; ++half) {
    for (int b = 0; b < 16; ++b) {
      const int sample = b / size;
      const int source = sample < pixels * ts ? from[sample % ts] : kFill;
      index.bytes[half * 16 + b] =
          std::uint8_t(source == kFill ? 0x80 : ((sample / ts) * ss + source) * size + b % size);
    }
  }
  return index;
}
// The bytes that receive the fill.
constexpr SIndex HalfFillIndex(const int (&from)[4], int ts, int size, int pixels) {
  SIndex index{};
  for (int half = 0; half < 2; ++half) {
    for (int b = 0; b < 16; ++b) {
      const int sample = b / size;
      const bool filled = sample < pixels * ts && from[sample % ts] == kFill;
      index.bytes[half * 16 + b] = filled ? 0xFF : 0;
    }
  }
  return index;
}

template <EPixelType::ID SP, EPixelType::ID TP, class T>
struct TMove256 {
  using M = TMapping<SP, TP>;
  static constexpr int SS = M::SourceSamples;
  static constexpr int TS = M::TargetSamples;
  static constexpr int Size = int(sizeof(T));
  static constexpr int Widest = SS > TS ? SS : TS;
  // Pixels per half and per step.
  static constexpr int L = 16 / (Size * Widest);
  static constexpr std::uint64_t N = 2 * L;
  static constexpr int kHalf = 16 / Size;  // samples per half
  static constexpr SIndex kShuffle = HalfShuffleIndex(M::From, SS, TS, Size, L);
  static constexpr SIndex kFillBytes = HalfFillIndex(M::From, TS, Size, L);

  static ZT_CONVERT_AVX2 ZT_CONVERT_INLINE void Step(T* t, const T* s, __m256i fillVector) {
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + L * SS));
    __m256i v = _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
    v = _mm256_shuffle_epi8(v, _mm256_load_si256(reinterpret_cast<const __m256i*>(kShuffle.bytes)));
    v = _mm256_blendv_epi8(v, fillVector,
                           _mm256_load_si256(reinterpret_cast<const __m256i*>(kFillBytes.bytes)));
    if constexpr (L * TS == kHalf) {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(t), v);
    } else {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(t), _mm256_castsi256_si128(v));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(t + L * TS), _mm256_extracti128_si256(v, 1));
    }
  }

  // `pixels` (at most N) through local copies of their listed samples.
  static ZT_CONVERT_AVX2 ZT_CONVERT_INLINE void CopiedStep(T* t, const T* s, std::uint64_t pixels,
                                                           __m256i fillVector) {
    T in[N * SS + kHalf] = {};
    T out[N * TS + kHalf];
    const std::uint64_t first = std::uint64_t(M::FirstRead);
    const std::uint64_t end = (pixels - 1) * SS + std::uint64_t(M::LastRead) + 1;
    std::memcpy(in + first, s + first, (end - first) * sizeof(T));
    Step(out, in, fillVector);
    std::memcpy(t, out, pixels * TS * sizeof(T));
  }

  static ZT_CONVERT_AVX2 ZT_CONVERT_NOINLINE void Run(T* t, const T* s, std::uint64_t n, T fill) {
    const __m256i fillVector = _mm256_set1_epi64x(static_cast<long long>(Replicated(fill)));
    std::uint64_t i = 0;
    if (M::FirstRead > 0 && n > 0) {
      i = std::min(N, n);
      CopiedStep(t, s, i, fillVector);
    }
    // Step i loads up to sample (i + L) * SS + kHalf and stores up to
    // (i + L) * TS + kHalf, exclusive; both runs end at n pixels (the
    // source at its last listed sample).
    const std::uint64_t sourceEnd = n == 0 ? 0 : (n - 1) * SS + std::uint64_t(M::LastRead) + 1;
    for (; i + N <= n && (i + L) * SS + kHalf <= sourceEnd && (i + L) * TS + kHalf <= n * TS;
         i += N) {
      Sample::FetchAhead(s + i * SS);
      Step(t + i * TS, s + i * SS, fillVector);
    }
    for (; i < n; i += N) {
      CopiedStep(t + i * TS, s + i * SS, std::min(N, n - i), fillVector);
    }
  }
};
#endif

// --- Converting samples in place ------------------------------------------
// A run of samples of one type to the same number of another, sample by
// sample, on the path that has no vector rule of its own (the x86-64
// baseline, which has no fused multiply-add): contiguous on both sides, so
// the compiler vectorises it. AArch64 runs the vector rule. One instance per
// pair of types and path, shared by the cells.
template <EDataType::ID SD, EDataType::ID TD>
ZT_CONVERT_NOINLINE void ConvertRun(Sample::TSample<TD>* __restrict t,
                                    const Sample::TSample<SD>* __restrict s, std::uint64_t n) {
#if ZT_CONVERT_NEON
  Sample::Neon::ConvertRun<SD, TD>(t, s, n);
#else
  for (std::uint64_t i = 0; i < n; ++i) {
    Write(t + i, Sample::ConvertSample<SD, TD>(Read(s + i)));
  }
#endif
}
#if ZT_CONVERT_X86
// Targets of this many bytes and more are written with streaming stores.
constexpr std::uint64_t kStreamBytes = std::uint64_t(4) << 20;

// Copies `bytes` from a block in the cache to t with streaming stores, which
// write whole lines without reading them first; the unaligned edges of t
// take ordinary stores. Used by the AVX2 and the AVX-512 paths.
ZT_CONVERT_AVX2 ZT_CONVERT_NOINLINE inline void Stream(void* target, const void* source,
                                                       std::uint64_t bytes) {
  auto* t = static_cast<unsigned char*>(target);
  const auto* s = static_cast<const unsigned char*>(source);
  const std::uint64_t misalignment = reinterpret_cast<std::uintptr_t>(t) & 31u;
  const std::uint64_t head =
      misalignment == 0 ? 0 : std::min<std::uint64_t>(32 - misalignment, bytes);
  std::memcpy(t, s, head);
  std::uint64_t i = head;
  for (; i + 32 <= bytes; i += 32) {
    _mm256_stream_si256(reinterpret_cast<__m256i*>(t + i),
                        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i)));
  }
  std::memcpy(t + i, s + i, bytes - i);
}

// Orders the streaming stores before everything stored after the conversion.
ZT_CONVERT_AVX2 inline void StreamEnd() { _mm_sfence(); }
#endif

// Bytes of each intermediate block of a cell: blocks of a conversion that
// both moves and converts samples stay in the first-level cache, and are
// large enough that a run read from memory is read in long stretches.
constexpr std::uint64_t kBlockBytes = 8192;

// Whether two byte ranges share no byte. Compared as addresses: the ranges
// may lie in unrelated blocks.
inline bool Disjoint(const void* a, std::uint64_t aBytes, const void* b, std::uint64_t bBytes) {
  const std::uintptr_t a0 = reinterpret_cast<std::uintptr_t>(a);
  const std::uintptr_t b0 = reinterpret_cast<std::uintptr_t>(b);
  return a0 + aBytes <= b0 || b0 + bBytes <= a0;
}

template <EPixelType::ID SP, EDataType::ID SD, EPixelType::ID TP, EDataType::ID TD, EPath Path>
struct TCell {
  using S = Sample::TSample<SD>;
  using T = Sample::TSample<TD>;
  using M = TMapping<SP, TP>;
  static constexpr SLayout Src = M::Src;
  static constexpr SLayout Trg = M::Trg;
  static constexpr std::uint64_t SrcStep = std::uint64_t(Src.Samples);
  static constexpr std::uint64_t TrgStep = std::uint64_t(Trg.Samples);
  // Pixels per block: as many of four samples of the wider type as fill a
  // block.
  static constexpr std::uint64_t kBlockPixels = kBlockBytes / (4 * std::max(sizeof(S), sizeof(T)));

  static ZT_CONVERT_INLINE T Convert(S sample) { return Sample::ConvertSample<SD, TD>(sample); }

  // --- Runs that do not overlap ---
  // Order of stores cannot be seen, so each part of the work runs as its own
  // tight loop: moving samples, converting samples, or both through a block
  // held in the cache. Moving goes first where it drops samples, so that
  // nothing is converted in vain. Otherwise converting goes first where the
  // target repeats a luminance, so that it is converted once, and where the
  // samples are converted by the scalar rule, whose divisions outweigh the
  // moves; with the vector rule, moving goes first where the source samples
  // are the narrower, which are moved faster.
  static constexpr bool kVectorRule = Path != EPath::Baseline || ZT_CONVERT_NEON;
  static constexpr bool kConvertFirst =
      SrcStep <= TrgStep && M::ReadsAll &&
      (sizeof(S) >= sizeof(T) || (!Src.HasThreeColours() && Trg.HasThreeColours()) || !kVectorRule);

  template <class U>
  static ZT_CONVERT_INLINE void Move(U* t, const U* s, std::uint64_t n, U fill) {
#if ZT_CONVERT_X86
    if constexpr (Path == EPath::Avx512 && sizeof(U) > 1) {
      TMove512<SP, TP, U>::Run(t, s, n, fill);
      return;
    } else if constexpr (Path != EPath::Baseline && sizeof(U) <= 4) {
      TMove256<SP, TP, U>::Run(t, s, n, fill);
      return;
    }
#endif
    MoveSamples<SP, TP, U>(t, s, n, fill);
  }

  template <class A, class B>
  static ZT_CONVERT_INLINE void ConvertSamples(B* t, const A* s, std::uint64_t n) {
#if ZT_CONVERT_X86
    if constexpr (Path == EPath::Avx512) {
      Sample::Avx512::ConvertRun<SD, TD>(t, s, n);
      return;
    } else if constexpr (Path == EPath::Avx2) {
      Sample::Avx2::ConvertRun<SD, TD>(t, s, n);
      return;
    }
#endif
    ConvertRun<SD, TD>(t, s, n);
  }

  // Converts m pixels into t: one step, or two through a block in the cache.
  static ZT_CONVERT_INLINE void Produce(T* t, const S* s, std::uint64_t m) {
    if constexpr (SP == TP) {
      ConvertSamples(t, s, m * SrcStep);
    } else if constexpr (SD == TD) {
      Move<T>(t, s, m, Sample::AlphaFill<TD>());
    } else if constexpr (kConvertFirst) {
      alignas(64) T block[kBlockPixels * 4];
      ConvertSamples(block, s, m * SrcStep);
      Move<T>(t, block, m, Sample::AlphaFill<TD>());
    } else {
      // The fill goes through the conversion with the other samples: the top
      // of any source type converts to the top of any target type.
      alignas(64) S block[kBlockPixels * 4];
      Move<S>(block, s, m, Sample::AlphaFill<SD>());
      ConvertSamples(t, block, m * TrgStep);
    }
  }

  static ZT_CONVERT_INLINE void RunDisjoint(T* t, const S* s, std::uint64_t n) {
    const std::uint64_t targetBytes = n * TrgStep * sizeof(T);
#if ZT_CONVERT_X86
    // A target larger than the caches is written past them: each block is
    // converted into the cache and streamed out, which saves reading every
    // target line before it is overwritten.
    if constexpr (Path != EPath::Baseline) {
      if (targetBytes >= kStreamBytes) {
        alignas(64) T out[kBlockPixels * 4];
        for (std::uint64_t begin = 0; begin < n; begin += kBlockPixels) {
          const std::uint64_t m = std::min(kBlockPixels, n - begin);
          Produce(out, s + begin * SrcStep, m);
          Stream(t + begin * TrgStep, out, m * TrgStep * sizeof(T));
        }
        StreamEnd();
        return;
      }
    }
#endif
    if constexpr (SP == TP || SD == TD) {
      Produce(t, s, n);
    } else {
      (void)targetBytes;
      for (std::uint64_t begin = 0; begin < n; begin += kBlockPixels) {
        Produce(t + begin * TrgStep, s + begin * SrcStep, std::min(kBlockPixels, n - begin));
      }
    }
  }

  // --- Runs that overlap ---
  // The order that overlapping runs can see: the colour loop over the whole
  // run, with red, green and blue each read and stored before the next is
  // read, then the alpha loop. Converted onto itself, a red-blue swap thus
  // stores red over blue before reading blue. A source sample that feeds
  // several channels (luminance) is read once per pixel. Only overlapping
  // runs come here, so the loops are kept scalar: the empty asm statement
  // stops the vectoriser, whose code could never run.
  static ZT_CONVERT_INLINE void Colour(T* t, const S* s) {
    const T red = Convert(Read(s + Src.Red));
    Write(t + Trg.Red, red);
    if constexpr (Trg.HasThreeColours()) {
      T green = red;
      if constexpr (Src.Green != Src.Red) {
        green = Convert(Read(s + Src.Green));
      }
      Write(t + Trg.Green, green);
      T blue = red;
      if constexpr (Src.Blue == Src.Green) {
        blue = green;
      } else if constexpr (Src.Blue != Src.Red) {
        blue = Convert(Read(s + Src.Blue));
      }
      Write(t + Trg.Blue, blue);
    }
  }

  static ZT_CONVERT_INLINE T Alpha(const S* s) {
    if constexpr (Src.HasAlpha()) {
      return Convert(Read(s + Src.Alpha));
    } else {
      return Sample::AlphaFill<TD>();
    }
  }

  static ZT_CONVERT_INLINE void RunOrdered(T* t, const S* s, std::uint64_t n) {
    for (std::uint64_t i = 0; i < n; ++i) {
      Colour(t + i * TrgStep, s + i * SrcStep);
      __asm__ volatile("");
    }
    if constexpr (Trg.HasAlpha()) {
      for (std::uint64_t i = 0; i < n; ++i) {
        Write(t + i * TrgStep + std::uint64_t(Trg.Alpha), Alpha(s + i * SrcStep));
        __asm__ volatile("");
      }
    }
  }

  static ZT_CONVERT_INLINE void Run(std::uint32_t count, void* target, const void* source) {
    const S* s = static_cast<const S*>(source);
    T* t = static_cast<T*>(target);
    const std::uint64_t n = count;
    const std::uint64_t targetBytes = n * TrgStep * sizeof(T);
    if constexpr (SD == TD && SP == TP) {
      // Every sample stays in place: a copy of the whole run, bit for bit.
      std::memmove(t, s, targetBytes);
    } else if (Convert::Disjoint(t, targetBytes, s, n * SrcStep * sizeof(S))) {
      RunDisjoint(t, s, n);
    } else {
      RunOrdered(t, s, n);
    }
  }
};

template <EPixelType::ID SP, EDataType::ID SD, EPixelType::ID TP, EDataType::ID TD>
bool BaselineCell(std::uint32_t count, void* target, const void* source) {
  TCell<SP, SD, TP, TD, EPath::Baseline>::Run(count, target, source);
  return true;
}

template <EPixelType::ID SP, EDataType::ID SD, EPixelType::ID TP, EDataType::ID TD>
ZT_CONVERT_AVX512 bool Avx512Cell(std::uint32_t count, void* target, const void* source) {
  TCell<SP, SD, TP, TD, EPath::Avx512>::Run(count, target, source);
  return true;
}

#if ZT_CONVERT_X86
template <EPixelType::ID SP, EDataType::ID SD, EPixelType::ID TP, EDataType::ID TD>
ZT_CONVERT_AVX2 bool Avx2Cell(std::uint32_t count, void* target, const void* source) {
  TCell<SP, SD, TP, TD, EPath::Avx2>::Run(count, target, source);
  return true;
}
#endif

// Stage two for one target: selects the cell by the source's types. The
// pixel count is the source's Height times Width in 32-bit arithmetic; the
// target's size plays no part.
template <EPixelType::ID TP, EDataType::ID TD>
bool ConvertSrcSwitch(const void* source, const CZtImageFormat& sourceFormat, void* target,
                      [[maybe_unused]] EPath path) {
  const std::uint32_t count = static_cast<std::uint32_t>(sourceFormat.Height) *
                              static_cast<std::uint32_t>(sourceFormat.Width);
  return WithSourcePixelType(sourceFormat.PixelType, [&](auto sp) {
    return WithDataType(sourceFormat.DataType, [&](auto sd) {
      constexpr EPixelType::ID SP = decltype(sp)::value;
      constexpr EDataType::ID SD = decltype(sd)::value;
#if ZT_CONVERT_X86
      if (path == EPath::Avx512) return Avx512Cell<SP, SD, TP, TD>(count, target, source);
      if (path == EPath::Avx2) return Avx2Cell<SP, SD, TP, TD>(count, target, source);
#endif
      return BaselineCell<SP, SD, TP, TD>(count, target, source);
    });
  });
}

// Stage one, from the target pixel type on, for one target data type.
template <EDataType::ID TD>
bool ConvertTo(void* target, const void* source, EPixelType::ID targetPixelType,
               const CZtImageFormat& sourceFormat, EPath path) {
  return WithTargetPixelType(targetPixelType, [&](auto tp) {
    return ConvertSrcSwitch<decltype(tp)::value, TD>(source, sourceFormat, target, path);
  });
}

}  // namespace Convert
}  // namespace Zt

#endif
