// The sample rule of ZtSampleRule.h on vectors of samples: written once here,
// for every instruction set that the conversion runs on, and compiled once
// per instruction set.
//
// No include guard: an instruction set's header (ZtSampleAvx2.h,
// ZtSampleAvx512.h, ZtSampleNeon.h) opens a namespace of its own, defines
// there the vector types and the few operations below, and the macros
// ZT_VECTOR and ZT_VECTOR_RUN (the function attributes that compile for
// it), and includes this file inside. The rule's
// steps are the same IEEE operations as the scalar rule's, each rounded the
// same way, so every instruction set gives the scalar rule's bits; the tests
// hold each of them against an independent reference.
//
// What an instruction set provides, VD holding doubles, VF floats (twice as
// many), VW 16-bit integers (four times as many):
//   kDoubles                        doubles in a VD
//   Splat<V>(x)                     every lane x (rounded to float for VF)
//   Mul, MulAdd(a, b, c) = a*b + c, NegMulAdd(a, b, c) = c - a*b (fused)
//   Min(a, b) = a < b ? a : b       Max(a, b) = a > b ? a : b (a NaN in b
//                                   passes through both)
//   IfPositive(v, yes, no)          v > 0 ? yes : no, lane by lane
//   ScaleProduct(a, b)              the product that scales a normalised
//                                   value to an integer target: rounded to
//                                   nearest for VD, toward zero for VF
//   LoadDouble<D>, LoadFloat<D>, LoadWords<D>
//                                   samples as exact doubles, floats, words
//   Store<D>(t, v)                  Float and Double: the values rounded and
//                                   stored; integers: saturated values (or
//                                   NaN) truncated and cut to the sample
//   kTowardZero                     whether ScaleProduct exists for VF
//   MulLow(w, m), MulHighShift<s>(w, m)
//                                   (w * m) mod 2^16, (w * m) >> s for s >= 16
//
// Internal: included only by the instruction sets' headers.

// --- The decode --------------------------------------------------------------
// The quotient v / P, correctly rounded, for 0 <= v <= P, from two fused
// multiply-adds instead of the divider: with R = 1 / P rounded to nearest,
// e = v * R is within an ulp of v / P, the remainder v - e * P is exact in
// one fused operation, and e + remainder * R, rounded once, is the correctly
// rounded quotient. The tests compare it with the division on every sample
// of every integer type.
template <class T, class V>
ZT_VECTOR V Quotient(V v) {
  const V reciprocal = Splat<V>(1.0 / T::P);
  const V estimate = Mul(v, reciprocal);
  const V remainder = NegMulAdd(estimate, Splat<V>(T::P), v);
  return MulAdd(remainder, reciprocal, estimate);
}

// Raw samples to normalised values. The negative side's product with
// F = 1 / N, a power of two, is exact.
template <EDataType::ID D, class V>
ZT_VECTOR V Decode(V v) {
  using T = TDataType<D>;
  if constexpr (T::Kind == EKind::Floating) {
    return v;
  } else if constexpr (T::Kind == EKind::Unsigned) {
    return Quotient<T>(v);
  } else {
    return IfPositive(v, Quotient<T>(v), Mul(v, Splat<V>(T::F)));
  }
}

// --- The encode --------------------------------------------------------------
// Normalised values scaled to an integer target (by P above zero, by N at and
// below it) and saturated. The selects of the rule are the min and max
// operations, whose order of operands makes them the rule's: min(P, y) is
// "P < y ? P : y" and max(low, y) is "low > y ? low : y". A NaN passes both
// for the signed targets and truncates to the integer with only the top bit
// set, the rule's result for NaN (as it stands for Int, cut to 0 for the
// narrower types). The unsigned targets take max(y, 0) first, which turns a
// NaN into 0, their result for it.
template <EDataType::ID D, class V>
ZT_VECTOR V Saturate(V x) {
  using T = TDataType<D>;
  const V top = Splat<V>(T::P);
  if constexpr (T::Kind == EKind::Signed) {
    const V y = ScaleProduct(x, IfPositive(x, top, Splat<V>(T::N)));
    return Max(Splat<V>(-T::N), Min(top, y));
  } else {
    return Min(top, Max(ScaleProduct(x, top), Splat<V>(0.0)));
  }
}

template <EDataType::ID D, class V>
ZT_VECTOR void Encode(TSample<D>* t, V x) {
  if constexpr (TDataType<D>::Kind == EKind::Floating) {
    Store<D>(t, x);
  } else {
    Store<D>(t, Saturate<D>(x));
  }
}

// --- Steps -------------------------------------------------------------------
// Between Float and the integer types of up to 16 bits, samples go in single
// precision, twice as many at a time, by routes that give the double rule's
// values:
//  - Integers to Float: the rule rounds the quotient v / P to a double and
//    that to a float; rounding it to a float at once gives the same, because
//    P is odd: v / P is then never a float midpoint and stays, relative to
//    its size, at least 2^-40 away from one, far beyond what the double's
//    rounding can move it. The float quotient comes from the same two fused
//    operations as the double one.
//  - Float to integers (where the product can round toward zero): P and N
//    are floats and every product x * P or x * N of a float x has at most
//    24 + 16 significant bits, so the rule's double product y is exact. The
//    single product rounded toward zero, z, lies between y and the integer
//    that truncating y gives (every integer below 2^24 is a float, and
//    rounding toward zero never passes one), so truncating z gives the same
//    integer. z passes a saturation bound (P, or the low bound, both floats)
//    exactly when y does, or lands on it, where the bound is the result
//    anyway. An overflow gives the largest float, beyond either bound as y
//    is; an underflow concerns only products that truncate to 0. The tests
//    compare the two routes on every float.
// Between the unsigned types of up to 16 bits whose route the compiler has
// checked (kIntegerRoute), samples go as 16-bit integers.
template <EDataType::ID D>
constexpr bool kNarrowInteger = TDataType<D>::Kind != EKind::Floating && sizeof(TSample<D>) <= 2;

enum class EStep { Double, Single, Words };

template <EDataType::ID SD, EDataType::ID TD>
constexpr EStep kStep = kIntegerRoute<SD, TD>.Exact ? EStep::Words
                        : ((SD == EDataType::Float && kNarrowInteger<TD> && kTowardZero) ||
                           (kNarrowInteger<SD> && TD == EDataType::Float))
                            ? EStep::Single
                            : EStep::Double;

template <EDataType::ID SD, EDataType::ID TD>
constexpr std::uint64_t kStepSamples = kStep<SD, TD> == EStep::Words    ? 4 * kDoubles
                                       : kStep<SD, TD> == EStep::Single ? 2 * kDoubles
                                                                        : kDoubles;

// One step's samples, converted and stored.
template <EDataType::ID SD, EDataType::ID TD>
ZT_VECTOR void Step(TSample<TD>* t, const TSample<SD>* s) {
  if constexpr (kStep<SD, TD> == EStep::Words) {
    constexpr SIntegerRoute route = kIntegerRoute<SD, TD>;
    const VW w = LoadWords<SD>(s);
    if constexpr (route.Shift == 0) {
      Store<TD>(t, MulLow(w, std::uint16_t(route.M)));
    } else {
      Store<TD>(t, MulHighShift<route.Shift>(w, std::uint16_t(route.M)));
    }
  } else if constexpr (kStep<SD, TD> == EStep::Single) {
    Encode<TD>(t, Decode<SD>(LoadFloat<SD>(s)));
  } else {
    Encode<TD>(t, Decode<SD>(LoadDouble<SD>(s)));
  }
}

// A run of n samples of one type to the same number of another, a step at a
// time with one fetch ahead per 64 source bytes. The last few samples go
// through a step on copies in local buffers, so that nothing outside the
// runs is read or written.
template <EDataType::ID SD, EDataType::ID TD>
ZT_VECTOR_RUN void ConvertRun(TSample<TD>* t, const TSample<SD>* s, std::uint64_t n) {
  using S = TSample<SD>;
  using T = TSample<TD>;
  constexpr std::uint64_t kLanes = kStepSamples<SD, TD>;
  constexpr std::uint64_t kStepBytes = kLanes * sizeof(S);
  // Samples per fetch: those of 64 source bytes, or of one step if more.
  constexpr std::uint64_t kPerFetch = kStepBytes < 64 ? 64 / kStepBytes * kLanes : kLanes;
  std::uint64_t i = 0;
  for (; i + kPerFetch <= n; i += kPerFetch) {
    FetchAhead(s + i);
    for (std::uint64_t k = i; k < i + kPerFetch; k += kLanes) {
      Step<SD, TD>(t + k, s + k);
    }
  }
  for (; i + kLanes <= n; i += kLanes) {
    Step<SD, TD>(t + i, s + i);
  }
  if (i < n) {
    S in[kLanes] = {};
    T out[kLanes];
    std::memcpy(in, s + i, (n - i) * sizeof(S));
    Step<SD, TD>(out, in);
    std::memcpy(t + i, out, (n - i) * sizeof(T));
  }
}
