// Every cell on every path with its runs placed against protected pages: a
// conversion reads nothing before the first or after the last source sample
// that it uses, writes nothing outside the target run, and gives the
// reference's result. A read or write past a protected page ends the program
// with a fault; bytes beside the target run on the open side are checked.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "ZtConvertTesting.h"

using namespace ZtTest;

namespace {

// Usable bytes between two protected pages, mapped once and reused.
class CGuardedRegion {
public:
  explicit CGuardedRegion(std::size_t bytes) : m_page(std::size_t(sysconf(_SC_PAGESIZE))) {
    m_usable = (bytes + m_page - 1) / m_page * m_page;
    void* p = mmap(nullptr, m_usable + 2 * m_page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (p == MAP_FAILED) throw std::bad_alloc();
    m_base = static_cast<unsigned char*>(p);
    if (mprotect(Begin(), m_usable, PROT_READ | PROT_WRITE) != 0) throw std::bad_alloc();
  }
  ~CGuardedRegion() { munmap(m_base, m_usable + 2 * m_page); }
  CGuardedRegion(const CGuardedRegion&) = delete;
  CGuardedRegion& operator=(const CGuardedRegion&) = delete;
  unsigned char* Begin() const { return m_base + m_page; }
  unsigned char* End() const { return Begin() + m_usable; }

private:
  std::size_t m_page, m_usable = 0;
  unsigned char* m_base = nullptr;
};

// What runs when a protected page is touched: the conversion in hand, said
// before the fault ends the program.
char g_running[256];
extern "C" void SayWhatFaulted(int signal) {
  const char head[] = "fault in a guarded conversion: ";
  (void)!write(2, head, sizeof head - 1);
  (void)!write(2, g_running, strnlen(g_running, sizeof g_running));
  (void)!write(2, "\n", 1);
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}
[[maybe_unused]] const bool g_faultsSaid = std::signal(SIGSEGV, SayWhatFaulted) != SIG_ERR;

constexpr std::size_t kOpenSide = 64;
constexpr unsigned char kUntouched = 0x5A;

// Both runs of one conversion against the front or the back pages.
struct SPlacement {
  const CGuardedRegion& sourceRegion;
  const CGuardedRegion& targetRegion;
  bool atFront;
};

// One cell and run length. The source bytes the cell may read are those from
// the first source sample its channels use to the last; `source` holds the
// run as a whole pixel run, or is null to take the region's bytes as they
// are. `expected`, when given, is the reference's target run.
::testing::AssertionResult RunGuarded(const SPlacement& where, EPath path, EPixelType::ID tp,
                                      EDataType::ID td, EPixelType::ID sp, EDataType::ID sd,
                                      unsigned count, const unsigned char* source,
                                      const unsigned char* expected) {
  const auto& m =
      ZtConvertRef::kTable[ZtConvertRef::LayoutIndex(sp)][ZtConvertRef::LayoutIndex(tp)];
  int first = 4, last = -1;
  for (int k = 0; k < m.targetSamples; ++k) {
    if (m.from[k] == ZtConvertRef::F) continue;
    first = std::min(first, m.from[k]);
    last = std::max(last, m.from[k]);
  }
  const std::size_t size = std::size_t(SampleBytes(sd));
  const std::size_t targetBytes = count * std::size_t(Components(tp) * SampleBytes(td));
  // The readable stretch: from the first used byte of the first pixel to the
  // last used byte of the last pixel.
  const std::size_t skipFront = std::size_t(first) * size;
  const std::size_t readable = count == 0 ? 0
                                          : (count - 1) * std::size_t(Components(sp)) * size +
                                                std::size_t(last + 1) * size - skipFront;
  unsigned char* readableBegin =
      where.atFront ? where.sourceRegion.Begin() : where.sourceRegion.End() - readable;
  if (source != nullptr && readable != 0) std::memcpy(readableBegin, source + skipFront, readable);
  // The run starts before the readable stretch where its first pixel has
  // unused samples, which lie in the protected page or just before the
  // stretch; formed as an address, the same as a caller's offset pointer.
  const void* run =
      reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(readableBegin) - skipFront);
  unsigned char* target =
      where.atFront ? where.targetRegion.Begin() : where.targetRegion.End() - targetBytes;
  unsigned char* open = where.atFront ? target + targetBytes : target - kOpenSide;
  std::memset(open, kUntouched, kOpenSide);
  std::snprintf(g_running, sizeof g_running, "%s, %u pixels, %s path, runs at the %s",
                Describe(sp, sd, tp, td).c_str(), count, PathName(path),
                where.atFront ? "front" : "back");
  if (!RunOnPath(path, target, run, Zt::CZtImageFormat(1, 1, tp, td),
                 Zt::CZtImageFormat(int(count), 1, sp, sd))) {
    return ::testing::AssertionFailure() << "refused: " << Describe(sp, sd, tp, td);
  }
  if (std::any_of(open, open + kOpenSide, [](unsigned char b) { return b != kUntouched; })) {
    return ::testing::AssertionFailure() << "wrote outside the target run: " << g_running;
  }
  if (expected != nullptr && targetBytes != 0 && std::memcmp(target, expected, targetBytes) != 0) {
    return ::testing::AssertionFailure() << "differs from the reference: " << g_running;
  }
  return ::testing::AssertionSuccess();
}

// Every cell, all run lengths from 0 to twice the widest vector (64 one-byte
// pixels) plus one, and one longer than a block of any cell on any path, with
// both runs against the front pages and against the back pages.
TEST(ConvertBounds, EveryCellReadsAndWritesOnlyItsRunsOnEveryPath) {
  constexpr unsigned kShortRuns = 2 * 64 + 1, kBeyondBlock = 5003;
  const CGuardedRegion sources(std::size_t(kBeyondBlock) * 32);
  const CGuardedRegion targets(std::size_t(kBeyondBlock) * 32 + kOpenSide);
  for (const auto& sp : kPixelTypes) {
    for (const auto& sd : kDataTypes) {
      const Bytes source =
          RandomBytes(std::size_t(kBeyondBlock) * std::size_t(sp.components * sd.bytes), 11);
      for (EPixelType::ID tp : kTargetPixelTypes) {
        for (const auto& td : kDataTypes) {
          const Bytes expected = ZtConvertRef::ConvertImage(tp, td.type, sp.type, sd.type,
                                                            kBeyondBlock, source.data());
          for (EPath path : Paths()) {
            for (bool atFront : {true, false}) {
              for (unsigned count = 0; count <= kShortRuns + 1; ++count) {
                ASSERT_TRUE(RunGuarded(SPlacement{sources, targets, atFront}, path, tp, td.type,
                                       sp.type, sd.type, count > kShortRuns ? kBeyondBlock : count,
                                       source.data(), expected.data()));
              }
            }
          }
        }
      }
    }
  }
}

// Every distinct cell with a target of at least 4 MB, which the wide paths
// write past the caches with streaming stores, against the back pages (the
// target then starts at no particular alignment). Only where the cell reads
// and writes: the source's bytes are whatever the region holds, zeros.
TEST(ConvertBounds, LargeTargetsStayInsideTheirRuns) {
  constexpr std::size_t kLarge = std::size_t(4) << 20;
  const CGuardedRegion sources(kLarge * 32 + 4096);
  const CGuardedRegion targets(kLarge + 4096 + kOpenSide);
  for (EPixelType::ID sp : kTargetPixelTypes) {
    for (const auto& sd : kDataTypes) {
      for (EPixelType::ID tp : kTargetPixelTypes) {
        for (const auto& td : kDataTypes) {
          const unsigned count = unsigned(kLarge / std::size_t(Components(tp) * td.bytes) + 3);
          for (EPath path : Paths()) {
            ASSERT_TRUE(RunGuarded(SPlacement{sources, targets, false}, path, tp, td.type, sp,
                                   sd.type, count, nullptr, nullptr));
          }
        }
      }
    }
  }
}

// Overlapping runs, as the cells must order them: a colour loop over the
// whole run, each pixel's red, green and blue read and stored in turn (a
// source sample that feeds several channels read once), then the alpha loop.
// Written on one shared buffer with the reference's rule and channel table.
template <class S, class T>
void ConvertOrdered(unsigned char* buffer, std::size_t sourceAt, std::size_t targetAt,
                    EPixelType::ID sp, EPixelType::ID tp, unsigned count) {
  const auto& m =
      ZtConvertRef::kTable[ZtConvertRef::LayoutIndex(sp)][ZtConvertRef::LayoutIndex(tp)];
  const std::size_t ss = std::size_t(Components(sp)), ts = std::size_t(m.targetSamples);
  const bool bgr = tp == EPixelType::BGR || tp == EPixelType::BGRA;
  const std::size_t colours = ts < 3 ? 1 : 3;
  const auto load = [&](std::size_t i, int k) {
    S v;
    std::memcpy(&v, buffer + sourceAt + (i * ss + std::size_t(k)) * sizeof(S), sizeof(S));
    return ZtConvertRef::Convert<S, T>(v);
  };
  const auto store = [&](std::size_t i, std::size_t k, T v) {
    std::memcpy(buffer + targetAt + (i * ts + k) * sizeof(T), &v, sizeof(T));
  };
  for (std::size_t i = 0; i < count; ++i) {
    int readFrom[3] = {-1, -1, -1};
    T read[3] = {};
    for (std::size_t c = 0; c < colours; ++c) {
      const std::size_t k = bgr ? 2 - c : c;  // red first
      readFrom[c] = m.from[k];
      std::size_t earlier = 0;
      while (readFrom[earlier] != readFrom[c]) ++earlier;
      read[c] = earlier < c ? read[earlier] : load(i, readFrom[c]);
      store(i, k, read[c]);
    }
  }
  if (ts % 2 != 0) return;  // no alpha
  for (std::size_t i = 0; i < count; ++i) {
    const int from = m.from[ts - 1];
    store(i, ts - 1, from == ZtConvertRef::F ? ZtConvertRef::Fill<T>() : load(i, from));
  }
}

// Cells of equal formats copy the run as a whole, like memmove, and are left
// out. Converted onto itself (shift 0), a red-blue swap reads red, stores it
// over blue, then reads that stored red as blue: the swap does not swap, also
// over runs long enough for several blocks.
TEST(ConvertBounds, OverlappingRunsKeepThePixelOrderOnEveryPath) {
  const EDataType::ID pairs[][2] = {{EDataType::UByte, EDataType::UByte},
                                    {EDataType::UByte, EDataType::UShort},
                                    {EDataType::UShort, EDataType::Byte},
                                    {EDataType::Float, EDataType::Double},
                                    {EDataType::Double, EDataType::Float}};
  constexpr std::size_t kSourceAt = 4096;
  const Bytes start = RandomBytes(kSourceAt + 5000 * 32 + kSourceAt, 31);
  for (EPixelType::ID sp : kTargetPixelTypes) {
    for (EPixelType::ID tp : kTargetPixelTypes) {
      for (const auto& pair : pairs) {
        if (sp == tp && pair[0] == pair[1]) continue;
        for (long shift : {-70L, -3L, 0L, 1L, 6L, 64L, 200L}) {
          const unsigned count = shift == 0 ? 5000 : 300;
          const std::size_t targetAt = std::size_t(long(kSourceAt) + shift);
          Bytes expected = start;
          ZtConvertRef::WithSampleType(pair[0], [&](auto s) {
            ZtConvertRef::WithSampleType(pair[1], [&](auto t) {
              ConvertOrdered<decltype(s), decltype(t)>(expected.data(), kSourceAt, targetAt, sp, tp,
                                                       count);
            });
          });
          for (EPath path : Paths()) {
            Bytes actual = start;
            ASSERT_TRUE(RunOnPath(path, actual.data() + targetAt, actual.data() + kSourceAt,
                                  Zt::CZtImageFormat(1, 1, tp, pair[1]),
                                  Zt::CZtImageFormat(int(count), 1, sp, pair[0])));
            ASSERT_TRUE(actual == expected)
                << Describe(sp, pair[0], tp, pair[1]) << ", target " << shift
                << " bytes from the source, " << PathName(path) << " path";
          }
        }
      }
    }
  }
}

}  // namespace
