#ifndef ZT_CORE_EX_ZTSAMPLERULE_H
#define ZT_CORE_EX_ZTSAMPLERULE_H

// How one sample of one data type becomes one sample of another.
//
// An integer sample is a fixed-point number: the signed types cover -1..1
// with asymmetric scales (P steps above zero, N = P + 1 below), the unsigned
// types 0..1. Float and Double hold the normalised value as it stands. Every
// conversion passes through a normalised IEEE double:
//
//   ConvertSample<S, T>(v) = v                              when S == T
//                          = EncodeSample<T>(DecodeSample<S>(v)) otherwise
//
// The code is written for the vectoriser: every choice is a select between
// values computed on both sides, never a branch, and no operation can have
// an undefined result, so the compiler may evaluate both sides of a select
// in vector lanes. The positive side of the decode is a true IEEE division:
// a product with the reciprocal of P rounds differently and the truncation
// makes that visible (UByte 33 to UShort is 8481, not 8480).
//
// Internal: not exported and never included by a public header.

#include <algorithm>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>

#include "ZtInterop.h"

namespace Zt {
namespace Sample {

enum class EKind { Signed, Unsigned, Floating };

// The facts of one data type: its C++ sample type, its kind and its scales.
// Positive scale P (the highest sample), negative scale N (signed only: minus
// the lowest sample) and the exact negative decode factor F = 1 / N. The NaN
// result is what a truncation of NaN leaves in the sample: the integer with
// only its top bit set, cut to the sample's width, so 0 for everything but
// Int.
template <class T>
struct TSigned {
  using Type = T;
  static constexpr EKind Kind = EKind::Signed;
  static constexpr double P = double(std::numeric_limits<T>::max());
  static constexpr double N = -double(std::numeric_limits<T>::min());
  static constexpr double F = 1.0 / N;
  static constexpr double NaNResult = sizeof(T) == 4 ? -N : 0.0;
};
template <class T>
struct TUnsigned {
  using Type = T;
  static constexpr EKind Kind = EKind::Unsigned;
  static constexpr double P = double(std::numeric_limits<T>::max());
};
template <class T>
struct TFloating {
  using Type = T;
  static constexpr EKind Kind = EKind::Floating;
};

template <EDataType::ID D>
struct TDataType;
template <>
struct TDataType<EDataType::Byte> : TSigned<std::int8_t> {};
template <>
struct TDataType<EDataType::UByte> : TUnsigned<std::uint8_t> {};
template <>
struct TDataType<EDataType::Short> : TSigned<std::int16_t> {};
template <>
struct TDataType<EDataType::UShort> : TUnsigned<std::uint16_t> {};
template <>
struct TDataType<EDataType::Int> : TSigned<std::int32_t> {};
template <>
struct TDataType<EDataType::UInt> : TUnsigned<std::uint32_t> {};
template <>
struct TDataType<EDataType::Float> : TFloating<float> {};
template <>
struct TDataType<EDataType::Double> : TFloating<double> {};

template <EDataType::ID D>
using TSample = typename TDataType<D>::Type;

// Raw sample to normalised value.
template <EDataType::ID D>
constexpr double DecodeSample(TSample<D> sample) {
  using T = TDataType<D>;
  if constexpr (T::Kind == EKind::Floating) {
    return static_cast<double>(sample);
  } else if constexpr (T::Kind == EKind::Unsigned) {
    return static_cast<double>(sample) / T::P;
  } else {
    // Both sides are computed and one is selected. The negative side is a
    // product with a power of two and exact, so the bottom sample gives
    // exactly -1.0; zero takes it and gives +0.0.
    const double value = static_cast<double>(sample);
    const double positive = value / T::P;
    const double negative = value * T::F;
    return sample > 0 ? positive : negative;
  }
}

// Normalised value to raw sample. Integer targets scale, saturate on the
// scaled value (the high test first) and truncate toward zero; Float narrows
// with IEEE rounding and does not clamp.
template <EDataType::ID D>
constexpr TSample<D> EncodeSample(double value) {
  using T = TDataType<D>;
  if constexpr (T::Kind == EKind::Floating) {
    return static_cast<TSample<D>>(value);
  } else {
    double scaled = value * T::P;
    double low = 0.0;
    double nanResult = 0.0;
    if constexpr (T::Kind == EKind::Signed) {
      const double negative = value * T::N;
      scaled = value > 0.0 ? scaled : negative;
      low = -T::N;
      nanResult = T::NaNResult;
    }
    // A NaN fails both saturation tests; it gets the truncation's value for
    // NaN here, so the cast below only ever sees a number in range.
    const double inRange = scaled == scaled ? scaled : nanResult;
    // Both comparisons are made on every sample: a comparison made only when
    // another fails is a branch the vectoriser cannot turn into a select.
    const bool high = scaled > T::P;
    const bool below = low > scaled;
    const double clamped = high ? T::P : (below ? low : inRange);
    if constexpr (D == EDataType::UInt) {
      return static_cast<std::uint32_t>(clamped);
    } else {
      return static_cast<TSample<D>>(static_cast<std::int32_t>(clamped));
    }
  }
}

// Raw sample to raw sample. Equal types copy the bits, so a NaN keeps its
// payload and -0.0 stays -0.0.
template <EDataType::ID S, EDataType::ID T>
constexpr TSample<T> ConvertSample(TSample<S> sample) {
  if constexpr (S == T) {
    return sample;
  } else {
    return EncodeSample<T>(DecodeSample<S>(sample));
  }
}

// What an alpha channel without a source receives: the top of the target's
// range, written directly in the target type (EncodeSample of 1.0 gives the
// same).
template <EDataType::ID D>
constexpr TSample<D> AlphaFill() {
  if constexpr (TDataType<D>::Kind == EKind::Floating) {
    return TSample<D>(1);
  } else {
    return std::numeric_limits<TSample<D>>::max();
  }
}

// --- An integer route ---------------------------------------------------------
// Between the unsigned types of up to 16 bits whose top samples divide one
// another, the rule's result may equal (sample * M) >> Shift on every
// sample: M the ratio of the tops when the target is wider; when it is
// narrower, M approximates 2^24 divided by the ratio from above, and the
// shift drops 24 bits. Vector units multiply 16-bit integers many times
// faster than they divide doubles. The route is taken only where Exact: the
// compiler has evaluated the rule and the route on every sample of the
// source type and found them equal, so the route is the rule's own table,
// written as arithmetic.
struct SIntegerRoute {
  bool Exact;
  std::uint32_t M;
  int Shift;
};

// The route's constants, not yet checked.
template <EDataType::ID S, EDataType::ID T>
constexpr SIntegerRoute IntegerRouteCandidate() {
  using Src = TDataType<S>;
  using Trg = TDataType<T>;
  if constexpr (S == T || Src::Kind != EKind::Unsigned || Trg::Kind != EKind::Unsigned ||
                sizeof(TSample<S>) > 2 || sizeof(TSample<T>) > 2) {
    return {false, 0, 0};
  } else {
    const std::uint32_t top = std::uint32_t(Src::P);
    const std::uint32_t targetTop = std::uint32_t(Trg::P);
    if (targetTop > top && targetTop % top == 0) {
      return {true, targetTop / top, 0};
    }
    if (top > targetTop && top % targetTop == 0) {
      const std::uint32_t ratio = top / targetTop;
      const std::uint32_t m = ((std::uint32_t(1) << 24) + ratio - 1) / ratio;
      return {m < 65536, m, 24};
    }
    return {false, 0, 0};
  }
}

// Whether the candidate gives the rule's result on the samples of one of
// eight parts of the source range. The parts are evaluated one by one, each
// within the compilers' limits on the steps of a constant evaluation.
template <EDataType::ID S, EDataType::ID T, int Part>
constexpr bool IntegerRouteHolds() {
  constexpr SIntegerRoute route = IntegerRouteCandidate<S, T>();
  if constexpr (!route.Exact) {
    return false;
  } else {
    constexpr std::uint32_t top = std::uint32_t(TDataType<S>::P);
    constexpr std::uint32_t partSize = top / 8 + 1;
    const std::uint32_t last = std::min(top, (Part + 1) * partSize - 1);
    for (std::uint32_t x = Part * partSize; x <= last; ++x) {
      if ((x * route.M) >> route.Shift != ConvertSample<S, T>(TSample<S>(x))) return false;
    }
    return true;
  }
}

template <EDataType::ID S, EDataType::ID T, int... Parts>
constexpr SIntegerRoute CheckedIntegerRoute(std::integer_sequence<int, Parts...>) {
  constexpr SIntegerRoute route = IntegerRouteCandidate<S, T>();
  constexpr bool holds =
      (... && std::integral_constant<bool, IntegerRouteHolds<S, T, Parts>()>::value);
  return {route.Exact && holds, route.M, route.Shift};
}

template <EDataType::ID S, EDataType::ID T>
constexpr SIntegerRoute kIntegerRoute =
    CheckedIntegerRoute<S, T>(std::make_integer_sequence<int, 8>());

// How far ahead of its use each line of a source is requested from memory,
// by the vectorised runs. A run that comes from memory is read faster when
// its lines are asked for this far ahead than when the processor has to
// find the stream itself. A prefetch never faults, so the address may lie
// past the end of the run; it is formed as an integer, never as a pointer
// past the run.
constexpr std::uintptr_t kFetchAhead = 4096;

inline __attribute__((always_inline)) void FetchAhead(const void* p) {
  __builtin_prefetch(
      reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(p) + kFetchAhead));
}

// The Short and Int encodings as routines that store into their place.
inline void StoreSaturatedShort(std::int16_t* place, double value) {
  *place = EncodeSample<EDataType::Short>(value);
}
inline void StoreSaturatedInt(std::int32_t* place, double value) {
  *place = EncodeSample<EDataType::Int>(value);
}

}  // namespace Sample
}  // namespace Zt

#endif
