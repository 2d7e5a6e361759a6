#ifndef ZT_FUZZ_CHECK_H
#define ZT_FUZZ_CHECK_H

// What the fuzz targets share: stopping at the first difference from the
// model with a report that says where, raised chains checked link by link,
// runs of operations on objects beside their models, and random input.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "ZtChain.h"

namespace ZtFuzz {

[[noreturn]] inline void Fail(const char* file, int line, const char* condition,
                              const std::string& what) {
  std::fprintf(stderr, "%s:%d: differs from the model: %s\n  %s\n", file, line, condition,
               what.c_str());
  std::abort();
}

// `what` is evaluated only when the check fails.
#define ZT_FUZZ_CHECK(condition, what)                                      \
  do {                                                                      \
    if (!(condition)) ::ZtFuzz::Fail(__FILE__, __LINE__, #condition, what); \
  } while (0)

using ZtTest::Link;
using Chain = std::vector<Link>;

inline std::string Text(const Chain& chain) {
  std::ostringstream out;
  for (const Link& link : chain) ZtTest::PrintTo(link, &(out << "\n    "));
  return out.str();
}

// Runs `op`, which must raise `chain`, caught as callers catch it. A link
// without a class name is a plain CZtException, named Zt.Exception.
template <class Op>
void ExpectRaise(Op&& op, const Chain& chain, const std::string& context) {
  try {
    op();
  } catch (Zt::CZtException& e) {
    const Chain raised = ZtTest::LinksOf(e);
    const ZtTest::Chain names = ZtTest::ChainOf(e);
    bool named = raised == chain;
    for (std::size_t i = 0; named && i < chain.size(); ++i)
      named = names[i].first == (chain[i].name.empty() ? "Zt.Exception" : chain[i].name);
    ZT_FUZZ_CHECK(named, context + ": expected" + Text(chain) + "\n  raised" + Text(raised));
    return;
  }
  ZT_FUZZ_CHECK(false, context + ": nothing raised, expected" + Text(chain));
}

// Up to 64 operations on `Count` objects of one kind, each beside its model:
// Step applies one read from the input to an object, which may read another,
// and Verify compares each object with its model after each step.
template <class Slot, int Count>
void Run(FuzzedDataProvider& in) {
  Slot slots[Count];
  auto any = [&]() -> Slot& { return slots[in.ConsumeIntegralInRange(0, Count - 1)]; };
  for (int n = 0; n < 64 && in.remaining_bytes() > 0; ++n) {
    Slot& s = any();
    s.Step(in, any());
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

// The fields of `text` between single `delimiter` characters: every
// delimiter ends a field, empty ones included, and what follows the last
// delimiter is a field only if it is not empty. So "" has no field, "a,"
// has one and "," one empty one.
inline std::vector<std::string> SplitFields(const std::string& text, char delimiter) {
  std::vector<std::string> fields;
  std::string field;
  for (char c : text) {
    if (c != delimiter) {
      field += c;
      continue;
    }
    fields.push_back(field);
    field.clear();
  }
  if (!field.empty()) fields.push_back(field);
  return fields;
}

}  // namespace ZtFuzz

#endif
