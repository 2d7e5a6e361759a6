#ifndef ZT_TESTS_ZTALLOCFAILCHAIN_H
#define ZT_TESTS_ZTALLOCFAILCHAIN_H

// Checks of a raised failure: type, message, function and file of each
// exception of its chain, from the outermost one inward; also with an
// allocation made to fail (the ...WhenFailing forms need zt_alloc_fail).

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>
#include <vector>

#include "ZtAllocFail.h"
#include "ZtException.h"

namespace ZtTest {

struct Link {
  std::string message;
  std::string function;
  std::string file;
  bool outOfMemory = false;  // a CZtOutOfMemoryException, else a plain CZtException
};

inline void ExpectChain(const Zt::CIException& head, const std::vector<Link>& chain) {
  const Zt::CIException* e = &head;
  for (const Link& link : chain) {
    if (e == nullptr) {
      ADD_FAILURE() << "the chain ends before \"" << link.message << "\"";
      return;
    }
    EXPECT_EQ(link.message, e->GetMessageText());
    EXPECT_EQ(link.function, e->GetFunction());
    EXPECT_EQ(link.file, e->GetFile());
    const Zt::CGuid& type =
        link.outOfMemory ? Zt::CZtOutOfMemoryException::ClassGuid : Zt::CZtException::ClassGuid;
    EXPECT_TRUE(e->GetGUID() == type) << "\"" << link.message << "\" is a " << e->GetName();
    const auto* z = dynamic_cast<const Zt::CZtException*>(e);
    e = z == nullptr ? nullptr : z->GetInnerException();
  }
  if (e != nullptr) {
    ADD_FAILURE() << "the chain goes on with \"" << e->GetMessageText() << "\"";
  }
}

// Runs `op` and expects it to raise `chain`.
inline void ExpectRaise(const std::function<void()>& op, const std::vector<Link>& chain) {
  try {
    op();
    ADD_FAILURE() << "no failure, expected \"" << chain.front().message << "\"";
  } catch (Zt::CZtException& e) {
    ExpectChain(e, chain);
  }
}

// Runs `op` with the nth allocation of `kind` failing, and checks that the
// failure happened and arrived as `chain`.
inline void ExpectRaiseWhenFailing(AllocKind kind, unsigned long long nth,
                                   const std::function<void()>& op,
                                   const std::vector<Link>& chain) {
  ZtAllocFail failure(kind, nth);
  ExpectRaise(op, chain);
  EXPECT_TRUE(failure.Fired()) << "the failure was not injected";
}

// The same for a failure that must pass as the standard std::bad_alloc.
inline void ExpectBadAllocWhenFailing(AllocKind kind, unsigned long long nth,
                                      const std::function<void()>& op) {
  ZtAllocFail failure(kind, nth);
  EXPECT_THROW(op(), std::bad_alloc);
  EXPECT_TRUE(failure.Fired()) << "the failure was not injected";
}

}  // namespace ZtTest

#endif
