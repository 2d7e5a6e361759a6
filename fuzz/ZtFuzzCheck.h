#ifndef ZT_FUZZ_CHECK_H
#define ZT_FUZZ_CHECK_H

// What every fuzz target shares: stopping at the first difference from its
// model with a report that says where, and checking a raised failure link by
// link against the chain the model expects.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "ZtException.h"

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

// One exception of a chain: message, function, file and class name.
struct Link {
  std::string message;
  std::string function;
  std::string file;
  std::string name = "Zt.Exception";
};
using Chain = std::vector<Link>;

// The GUIDs of the classes a chain can hold, written out here.
inline Zt::CGuid GuidOf(const std::string& name) {
  struct Known {
    const char* name;
    const char* guid;
  };
  static const Known known[] = {
      {"Zt.ParameterException", "{3500903C-1B00-4CDB-AFC3-53C91539D6F9}"},
      {"Zt.ParInvalidNameException", "{2952225E-DB39-479E-A4E1-7496D6D531B2}"},
      {"Zt.ParAccessReadException", "{2D69D395-4593-48BC-BC70-05C182CEFAE0}"},
      {"Zt.ParAccessWriteException", "{2C95F24C-6098-4354-A291-A8A3C0D0EFAE}"},
      {"Zt.ParInvalidTypeException", "{944D12C7-608C-4509-9755-66A898B5432C}"},
      {"Zt.ParInvalidValueException", "{3044F9AE-0257-4215-B36C-E8EFD6A543ED}"},
  };
  for (const Known& k : known) {
    if (name == k.name) return Zt::CGuid(k.guid);
  }
  return Zt::CZtException::ClassGuid;
}

inline std::string Describe(const Zt::CIException& e) {
  return std::string("\"") + e.GetMessageText() + "\" of " + e.GetFunction() + " in " +
         e.GetFile() + " (" + e.GetName() + ")";
}

inline void ExpectChain(const Zt::CIException& head, const Chain& chain,
                        const std::string& context) {
  const Zt::CIException* e = &head;
  for (const Link& link : chain) {
    ZT_FUZZ_CHECK(e != nullptr, context + ": the chain ends before \"" + link.message + "\"");
    const std::string expected = "\"" + link.message + "\" of " + link.function + " in " +
                                 link.file + " (" + link.name + ")";
    ZT_FUZZ_CHECK(link.message == e->GetMessageText() && link.function == e->GetFunction() &&
                      link.file == e->GetFile() && link.name == e->GetName() &&
                      e->GetGUID() == GuidOf(link.name),
                  context + ": expected " + expected + ", raised " + Describe(*e));
    const auto* z = dynamic_cast<const Zt::CZtException*>(e);
    e = z == nullptr ? nullptr : z->GetInnerException();
  }
  ZT_FUZZ_CHECK(e == nullptr, context + ": the chain goes on with " + Describe(*e));
}

// Runs `op`, which must raise `chain`; what callers catch is CZtException.
template <class Op>
void ExpectRaise(Op&& op, const Chain& chain, const std::string& context) {
  try {
    op();
  } catch (Zt::CZtException& e) {
    ExpectChain(e, chain, context);
    return;
  }
  ZT_FUZZ_CHECK(false, context + ": nothing raised, expected \"" + chain.front().message + "\"");
}

}  // namespace ZtFuzz

#endif
