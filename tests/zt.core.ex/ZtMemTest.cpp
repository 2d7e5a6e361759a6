#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "ZtMemBase.h"
#include "ZtMemObj.h"

using Zt::CZtMem;
using Zt::CZtMemBase;
using Zt::CZtMemObj;

// An element that counts its instances and records the order of destruction.
struct Probe {
  static inline int live = 0;
  static inline int made = 0;
  static inline std::vector<int> destroyed;
  Probe() : id(made++) { ++live; }
  virtual ~Probe() {
    --live;
    destroyed.push_back(id);
  }
  int id;
};

namespace Zt {
namespace Detail {
template <>
struct ZtTypeName<Probe> {
  static constexpr const char* value = "struct Probe";
};
}  // namespace Detail
}  // namespace Zt

namespace {

// A block's state as the tests compare it.
struct State {
  unsigned long long length;
  unsigned long long capacity;
  unsigned long long allocs;
  bool unreserved;
  bool operator==(const State& o) const {
    return length == o.length && capacity == o.capacity && allocs == o.allocs &&
           unreserved == o.unreserved;
  }
};
std::ostream& operator<<(std::ostream& out, const State& s) {
  return out << "{length " << s.length << ", capacity " << s.capacity << ", allocs " << s.allocs
             << (s.unreserved ? ", unreserved}" : ", reserved}");
}
State StateOf(const CZtMemBase& m) {
  return {m.Length(), m.Capacity(), m.AllocCount(), m.IsUnreserved()};
}

TEST(CZtMemBase, ANewBlockOwnsWholeBlocksAndIsUnreserved) {
  struct Case {
    unsigned long long length;
    unsigned long long capacity;
  };
  for (const Case& c : {Case{0, 4}, Case{1, 4}, Case{4, 4}, Case{5, 8}, Case{9, 12}, Case{16, 16}}) {
    CZtMem<double> m(c.length);
    EXPECT_EQ(StateOf(m), (State{c.length, c.capacity, 1, true})) << c.length;
    EXPECT_NE(m.Data(), nullptr);
    EXPECT_EQ(m.ElementSize(), 8u);
    EXPECT_EQ(m.BlockSize(), 4u);
    // The last element in use; for a length of 0 one element below the block.
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(m.Last()),
              reinterpret_cast<std::uintptr_t>(m.Data()) + (c.length - 1) * 8);
  }
}

TEST(CZtMemBase, RoundToBlocksKeepsCapacityOnSmallShrinksOnly) {
  // Unreserved, capacity 16, length 12: made as 16, then shrunk by a little.
  CZtMem<int> loose(16);
  loose.Resize(12);
  ASSERT_EQ(StateOf(loose), (State{12, 16, 1, true}));
  // Reserved, capacity 24, length 4: a high-water mark.
  CZtMem<int> high(24);
  high.Reserve(24);
  high.Resize(4);
  ASSERT_EQ(StateOf(high), (State{4, 24, 2, false}));

  struct Case {
    const CZtMemBase* block;
    unsigned long long request;
    unsigned long long expected;
  };
  const Case cases[] = {
      {&loose, 0, 4},     // a request for nothing still gets one block
      {&loose, 10, 16},   // shrink by 2: the capacity stays
      {&loose, 6, 16},    // shrink by 6 = a block and a half: stays
      {&loose, 5, 8},     // shrink by 7: down to what is needed
      {&loose, 4, 4},     // shrink by 8
      {&loose, 13, 16},   // growth within the capacity
      {&loose, 16, 16},
      {&loose, 17, 20},   // growth by exactly what is needed, no doubling
      {&loose, 100, 100},
      {&high, 2, 24},     // shrink by 2 from the length
      {&high, 8, 8},      // above the length: the difference wraps, so it shrinks
      {&high, 5, 8},
      {&high, 24, 24},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(c.block->RoundToBlocks(c.request), c.expected)
        << "request " << c.request << " at " << StateOf(*c.block);
  }
}

TEST(CZtMemBase, ResizeFollowsTheLengthOnlyWhileUnreserved) {
  struct Step {
    bool reserve;  // Reserve(count) instead of Resize(count)
    unsigned long long count;
    State after;
  };
  const std::vector<Step> unreserved = {
      {false, 0, {0, 4, 1, true}},     // no early return at 0, and no allocation
      {false, 16, {16, 16, 2, true}},
      {false, 16, {16, 16, 2, true}},  // same non-zero length: nothing at all
      {false, 12, {12, 16, 2, true}},
      {false, 10, {10, 16, 2, true}},
      {false, 4, {4, 16, 2, true}},    // 6 below the length: stays
      {false, 16, {16, 16, 2, true}},
      {false, 4, {4, 4, 3, true}},     // 12 below: shrinks
      {false, 5, {5, 8, 4, true}},
  };
  const std::vector<Step> reserved = {
      {true, 2, {0, 4, 2, false}},     // the first Reserve reallocates even to no gain
      {true, 2, {0, 4, 2, false}},     // later ones only grow
      {false, 9, {9, 12, 3, false}},
      {false, 0, {0, 12, 3, false}},   // the capacity is a high-water mark
      {false, 12, {12, 12, 3, false}},
      {true, 0, {12, 12, 3, false}},   // below the length reserves for the length
      {true, 13, {12, 16, 4, false}},
      {false, 17, {17, 20, 5, false}},
  };
  for (const auto* steps : {&unreserved, &reserved}) {
    CZtMem<short> m(0);
    for (const Step& s : *steps) {
      if (s.reserve) {
        m.Reserve(s.count);
      } else {
        m.Resize(s.count);
      }
      EXPECT_EQ(StateOf(m), s.after) << (s.reserve ? "Reserve(" : "Resize(") << s.count << ")";
    }
  }
}

TEST(CZtMemBase, ContentsSurviveReallocation) {
  CZtMem<unsigned char> m(3);
  std::memcpy(m.Data(), "abc", 3);
  m.Resize(1000);
  EXPECT_EQ(std::memcmp(m.Data(), "abc", 3), 0);
  m.Resize(2);
  EXPECT_EQ(m.Capacity(), 4u);
  EXPECT_EQ(std::memcmp(m.Data(), "ab", 2), 0);
}

class CZtMemObjTest : public ::testing::Test {
protected:
  void SetUp() override {
    Probe::live = 0;
    Probe::made = 0;
    Probe::destroyed.clear();
  }
  static std::vector<int> Ids(const CZtMemObj<Probe>& m) {
    std::vector<int> ids;
    for (unsigned long long i = 0; i < m.Length(); ++i) {
      ids.push_back(m.Elements()[i]->id);
    }
    return ids;
  }
};

TEST_F(CZtMemObjTest, ObjectsKeepTheirAddressesAndDieFromTheTop) {
  {
    CZtMemObj<Probe> m(3);
    EXPECT_EQ(Ids(m), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(m.ElementCount(), 3u);
    EXPECT_TRUE(m.IsUnreserved());
    EXPECT_FALSE(m.Memory().IsUnreserved());
    const Probe* first = m.Elements()[0];

    m.Resize(3);  // the present length: nothing is made or destroyed
    EXPECT_EQ(Probe::made, 3);
    EXPECT_TRUE(Probe::destroyed.empty());

    m.Resize(9);  // grows the pointer block; the objects stay where they are
    EXPECT_EQ(m.Elements()[0], first);
    EXPECT_EQ(Ids(m), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8}));

    m.Resize(4);
    EXPECT_EQ(Probe::destroyed, (std::vector<int>{8, 7, 6, 5, 4}));
    EXPECT_EQ(Ids(m), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(Probe::live, 4);
    EXPECT_EQ(m.Elements()[0], first);
    Probe::destroyed.clear();
  }
  // The destructor destroys the rest, also from the top.
  EXPECT_EQ(Probe::destroyed, (std::vector<int>{3, 2, 1, 0}));
  EXPECT_EQ(Probe::live, 0);
}

TEST_F(CZtMemObjTest, ThePointerBlockNeverShrinksAndPruneFreesNothing) {
  CZtMemObj<Probe> m(10);
  EXPECT_EQ(m.Memory().Capacity(), 12u);
  m.Resize(1);
  m.Resize(0);
  EXPECT_EQ(m.Memory().Capacity(), 12u);
  const unsigned long long allocs = m.Memory().AllocCount();

  m.Prune();  // not reserved by the object itself: nothing to do
  m.Reserve(2);
  EXPECT_FALSE(m.IsUnreserved());
  m.Prune();  // reserved, with spare capacity, and still nothing changes
  EXPECT_EQ(m.Memory().Capacity(), 12u);
  EXPECT_EQ(m.Memory().AllocCount(), allocs);

  m.Reserve(13);
  EXPECT_EQ(m.Memory().Capacity(), 16u);
  EXPECT_EQ(m.Length(), 0u);
}

}  // namespace
