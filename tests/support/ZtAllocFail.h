#ifndef ZT_TESTS_ZTALLOCFAIL_H
#define ZT_TESTS_ZTALLOCFAIL_H

// Makes chosen heap allocations fail, so that tests can walk the failure
// paths of the code under test.
//
// A test binary that links the zt_alloc_fail support library gets:
//  - malloc, realloc and free, as called from the objects linked into the
//    binary itself, routed through a hook (the linker's --wrap);
//  - the global operator new and new[] replaced, for every caller in the
//    process, shared libraries included.
// Outside the lifetime of a ZtAllocFail object every call goes straight to
// the real allocator.
//
//   {
//     ZtTest::ZtAllocFail failure(ZtTest::AllocKind::Realloc, 1);
//     array.Resize(100);  // its first realloc returns null
//     EXPECT_TRUE(failure.Fired());
//   }
//
// A sweep over every allocation of an operation first counts them with a
// counting-only ZtAllocFail, then runs the operation once for each k with
// the k-th allocation of each kind failing.
//
// Every block that these hooks hand out or take back is counted, at all
// times, so a test can tell how many blocks a piece of code left behind:
//
//   const long long before = ZtTest::LiveBlocks();
//   { ... }
//   EXPECT_EQ(ZtTest::LiveBlocks() - before, 0);

#if defined(__SANITIZE_ADDRESS__)
#define ZT_TEST_LEAK_CHECKER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(leak_sanitizer)
#define ZT_TEST_LEAK_CHECKER 1
#endif
#endif
#ifdef ZT_TEST_LEAK_CHECKER
#include <sanitizer/lsan_interface.h>
#endif

namespace ZtTest {

enum class AllocKind {
  Malloc,   // malloc returns null
  Realloc,  // realloc returns null and leaves the block alone
  New,      // operator new and new[] throw std::bad_alloc; the nothrow forms return null
};

// While it lives: counts the allocations of every kind and, when armed, makes
// the nth allocation of one kind from now on fail (n counts from 1), once.
// One may be alive at a time.
class ZtAllocFail {
public:
  // Counts only.
  ZtAllocFail();
  ZtAllocFail(AllocKind kind, unsigned long long nth);
  ~ZtAllocFail();
  ZtAllocFail(const ZtAllocFail&) = delete;
  ZtAllocFail& operator=(const ZtAllocFail&) = delete;

  // Whether the armed failure has happened.
  bool Fired() const;
  // Allocations of `kind` made so far, a failed one included.
  unsigned long long Calls(AllocKind kind) const;
};

// Blocks handed out by the hooks and not yet given back. Blocks that other
// shared libraries take from malloc directly are not seen; every operator
// new is.
long long LiveBlocks();

// While it lives, the leak checker of a sanitizer build does not report the
// allocations made. For operations whose contract is to leave memory
// allocated for good, such as the assignment of a two-dimensional array.
// Header-only: usable without the zt_alloc_fail library.
class ZtExpectedLeak {
public:
#ifdef ZT_TEST_LEAK_CHECKER
  ZtExpectedLeak() { __lsan_disable(); }
  ~ZtExpectedLeak() { __lsan_enable(); }
#else
  ZtExpectedLeak() {}
#endif
  ZtExpectedLeak(const ZtExpectedLeak&) = delete;
  ZtExpectedLeak& operator=(const ZtExpectedLeak&) = delete;
};

}  // namespace ZtTest

#endif
