#ifndef ZT_FUZZ_CHECK_H
#define ZT_FUZZ_CHECK_H

// What the fuzz targets share: model checks, refusals, runs of steps and random input.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "ZtException.h"

namespace ZtFuzz {

// `what` is evaluated only when the check fails.
#define ZT_FUZZ_CHECK(condition, what)                                                    \
  do {                                                                                    \
    if (condition) break;                                                                 \
    std::fprintf(stderr, "%s:%d: differs from the model: %s\n  %s\n", __FILE__, __LINE__, \
                 #condition, std::string(what).c_str());                                  \
    std::abort();                                                                         \
  } while (0)

// Runs `op`, which must refuse with a CZtException (the unit suites check each exact chain).
template <class Op>
void ExpectRaise(Op&& op, const std::string& context) {
  try {
    op();
  } catch (Zt::CZtException&) {
    return;
  }
  ZT_FUZZ_CHECK(false, context + ": nothing raised");
}

// Up to 64 steps, each one operation on one of `Count` objects (which may read
// another) beside its model, after which Verify compares every object with its model.
template <class Slot, int Count = 3>
void Run(FuzzedDataProvider& in) {
  Slot slots[Count];
  auto any = [&]() -> Slot& { return slots[in.ConsumeIntegralInRange(0, Count - 1)]; };
  for (int n = 0; n < 64 && in.remaining_bytes() > 0; ++n) {
    any().Step(in, any());  // the object chosen first
    for (const Slot& slot : slots) slot.Verify();
  }
}

// A value of any bit pattern, NaNs included.
template <class T>
T AnyValue(FuzzedDataProvider& in) {
  const std::uint64_t bits = in.ConsumeIntegral<std::uint64_t>();
  T value;
  std::memcpy(&value, &bits, sizeof(T));
  return value;
}

// A text as a CZtString holds it: up to the first NUL.
inline std::string AnyText(FuzzedDataProvider& in, std::size_t maxLength) {
  const std::string text = in.ConsumeRandomLengthString(maxLength);
  return text.substr(0, text.find('\0'));
}

}  // namespace ZtFuzz

#endif
