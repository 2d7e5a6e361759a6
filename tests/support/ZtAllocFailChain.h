#ifndef ZT_TESTS_ZTALLOCFAILCHAIN_H
#define ZT_TESTS_ZTALLOCFAILCHAIN_H

// Checks of a failure raised with an allocation made to fail (needs zt_alloc_fail), on ZtChain.h.

#include "ZtAllocFail.h"
#include "ZtChain.h"

namespace ZtTest {

// Runs `op` with the nth allocation of `kind` failing: the failure happens, and arrives as `chain`.
inline void ExpectRaiseWhenFailing(AllocKind kind, unsigned long long nth,
                                   const std::function<void()>& op,
                                   const std::vector<Link>& chain) {
  ZtAllocFail failure(kind, nth);
  ExpectRaise(op, chain);
  EXPECT_TRUE(failure.Fired()) << "the failure was not injected";
}

}  // namespace ZtTest

#endif
