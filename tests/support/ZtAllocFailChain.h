#ifndef ZT_TESTS_ZTALLOCFAILCHAIN_H
#define ZT_TESTS_ZTALLOCFAILCHAIN_H

// Checks of a failure raised with an allocation made to fail (needs zt_alloc_fail): each runs
// `op` with the nth allocation of `kind` failing and checks that the failure happened.

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <vector>

#include "ZtAllocFail.h"
#include "ZtChain.h"

namespace ZtTest {

// The failure arrives as `chain`.
inline void ExpectRaiseWhenFailing(AllocKind kind, unsigned long long nth,
                                   const std::function<void()>& op,
                                   const std::vector<Link>& chain) {
  ZtAllocFail failure(kind, nth);
  ExpectRaise(op, chain);
  EXPECT_TRUE(failure.Fired()) << "the failure was not injected";
}

// The failure passes as the standard std::bad_alloc.
inline void ExpectBadAllocWhenFailing(AllocKind kind, unsigned long long nth,
                                      const std::function<void()>& op) {
  ZtAllocFail failure(kind, nth);
  EXPECT_THROW(op(), std::bad_alloc);
  EXPECT_TRUE(failure.Fired()) << "the failure was not injected";
}

}  // namespace ZtTest

#endif
