#ifndef ZT_TESTS_ZTALLOCFAIL_H
#define ZT_TESTS_ZTALLOCFAIL_H

// Makes chosen heap allocations fail, so that tests can walk the failure paths of the code under
// test. A binary that links zt_alloc_fail has malloc, realloc and free of its own objects routed
// through a hook (the linker's --wrap), and the global operator new and new[] replaced for every
// caller in the process. Outside the lifetime of a ZtAllocFail every call goes to the real
// allocator. Every block the hooks hand out or take back is counted (LiveBlocks), at all times.

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

// While it lives: counts the allocations of every kind and, when armed, makes the nth allocation
// of one kind from now on fail (n counts from 1), once. One may be alive at a time.
class ZtAllocFail {
public:
  ZtAllocFail();  // counts only
  ZtAllocFail(AllocKind kind, unsigned long long nth);
  ~ZtAllocFail();
  ZtAllocFail(const ZtAllocFail&) = delete;
  ZtAllocFail& operator=(const ZtAllocFail&) = delete;

  bool Fired() const;  // whether the armed failure has happened
  // Allocations of `kind` made so far, a failed one included.
  unsigned long long Calls(AllocKind kind) const;
};

// Blocks handed out by the hooks and not yet given back. Blocks that other shared libraries take
// from malloc directly are not seen; every operator new is.
long long LiveBlocks();

// While it lives, a sanitizer's leak checker does not report the allocations made: for operations
// whose contract is to leave memory allocated for good. Header-only.
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
