#ifndef ZT_TESTS_ZTALLOCFAIL_H
#define ZT_TESTS_ZTALLOCFAIL_H

// Makes chosen heap allocations fail: a binary that links zt_alloc_fail has malloc, realloc and
// free of its own objects wrapped (the linker's --wrap) and the global operator new replaced.

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

// Blocks handed out by the hooks and not yet given back, counted at all times (not those that
// other shared libraries take from malloc directly).
long long LiveBlocks();

// While it lives, a sanitizer's leak checker does not report the allocations made: for operations
// whose contract is to leave memory allocated for good.
struct ZtExpectedLeak {
#ifdef ZT_TEST_LEAK_CHECKER
  ZtExpectedLeak() { __lsan_disable(); }
  ~ZtExpectedLeak() { __lsan_enable(); }
  ZtExpectedLeak(const ZtExpectedLeak&) = delete;
  ZtExpectedLeak& operator=(const ZtExpectedLeak&) = delete;
#endif
};

}  // namespace ZtTest

#endif
