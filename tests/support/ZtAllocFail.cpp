#include "ZtAllocFail.h"

#include <cstddef>
#include <cstdlib>
#include <new>

// The real allocator behind the linker's --wrap=malloc, --wrap=realloc and --wrap=free.
extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __real_realloc(void* block, std::size_t size);
extern "C" void __real_free(void* block);

namespace ZtTest {
namespace {

// Plain data only: it is read by every allocation of the process, also before and after main.
struct State {
  bool active, fired;
  AllocKind kind;
  unsigned long long remaining;  // calls of `kind` until the failure; 0 when not armed
  unsigned long long calls[3];   // by kind
};
State g_State{};
long long g_LiveBlocks = 0;  // apart from g_State: it counts all the time

void* Counted(void* block) {
  g_LiveBlocks += block != nullptr ? 1 : 0;
  return block;
}

// Counts the call; true if this one is to fail.
bool ShouldFail(AllocKind kind) {
  if (!g_State.active) return false;
  ++g_State.calls[static_cast<int>(kind)];
  if (g_State.remaining == 0 || g_State.kind != kind || --g_State.remaining != 0) return false;
  g_State.fired = true;
  return true;
}

void* NewBlock(std::size_t size) {
  return ShouldFail(AllocKind::New) ? nullptr : Counted(__real_malloc(size == 0 ? 1 : size));
}

}  // namespace

ZtAllocFail::ZtAllocFail() : ZtAllocFail(AllocKind::New, 0) {}
ZtAllocFail::ZtAllocFail(AllocKind kind, unsigned long long nth) {
  if (g_State.active) std::abort();  // only one may be alive at a time
  g_State = State{true, false, kind, nth, {}};
}
ZtAllocFail::~ZtAllocFail() { g_State = State{}; }
bool ZtAllocFail::Fired() const { return g_State.fired; }
unsigned long long ZtAllocFail::Calls(AllocKind kind) const {
  return g_State.calls[static_cast<int>(kind)];
}
long long LiveBlocks() { return g_LiveBlocks; }

}  // namespace ZtTest

extern "C" void* __wrap_malloc(std::size_t size) {
  return ZtTest::ShouldFail(ZtTest::AllocKind::Malloc) ? nullptr
                                                       : ZtTest::Counted(__real_malloc(size));
}

extern "C" void* __wrap_realloc(void* block, std::size_t size) {
  if (ZtTest::ShouldFail(ZtTest::AllocKind::Realloc)) return nullptr;
  void* moved = __real_realloc(block, size);
  if (block == nullptr) return ZtTest::Counted(moved);
  if (moved == nullptr && size == 0) --ZtTest::g_LiveBlocks;  // a size of 0 freed the block
  return moved;
}

extern "C" void __wrap_free(void* block) {
  ZtTest::g_LiveBlocks -= block != nullptr ? 1 : 0;
  __real_free(block);
}

// The replaceable global allocation functions, on the real malloc and free.
void* operator new(std::size_t size) {
  void* block = ZtTest::NewBlock(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept { return ZtTest::NewBlock(n); }
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept { return ZtTest::NewBlock(n); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { std::free(block); }
