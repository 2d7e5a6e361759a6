#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <tuple>
#include <vector>

#include "ZtAllocFail.h"
#include "ZtAllocFailChain.h"
#include "ZtMatrix.h"
#include "ZtMemBase.h"
#include "ZtMemObj.h"

using namespace Zt;
using namespace ZtTest;
using Ids = std::vector<int>;

// An element that counts instances, records destruction order and can fail its construction.
struct Probe {
  static inline int made = 0, failAt = -1;
  static inline Ids destroyed;
  Probe() : id(made++) {
    if (id == failAt) throw CZtException::Create("probe refused", "ZtMemTest", "Probe::Probe", 1);
  }
  virtual ~Probe() { destroyed.push_back(id); }
  int id;
};

template <>
struct Zt::Detail::ZtTypeName<Probe> {
  static constexpr const char* value = "struct Probe";
};

namespace {

const char* const kMemObj = "source\\zt.core.development\\ZtMemObj";

// Length, capacity, successful allocations, and 1 while unreserved.
using State = std::vector<unsigned long long>;
State StateOf(const CZtMemBase& m) {
  return {m.Length(), m.Capacity(), m.AllocCount(), m.IsUnreserved() ? 1ull : 0ull};
}

TEST(CZtMemBase, CapacityFollowsTheLengthOnlyUntilTheFirstReservation) {
  // Reserve (else Resize) to a count: the state after.
  const std::tuple<bool, unsigned long long, State> steps[] = {
      {false, 0, {0, 4, 1, 1}},  // no early return at 0, and no allocation
      {false, 16, {16, 16, 2, 1}},
      {false, 10, {10, 16, 2, 1}},  // 6 below the length: the capacity stays
      {false, 3, {3, 4, 3, 1}},     // 7 below: down to what is needed
      {false, 16, {16, 16, 4, 1}},
      {false, 10, {10, 16, 4, 1}},
      {false, 5, {5, 16, 4, 1}},
      // The first reservation reallocates: above the length the difference wraps to a shrink.
      {true, 6, {5, 8, 5, 0}},
      {true, 2, {5, 8, 5, 0}},   // below the length: reserves for the length
      {false, 0, {0, 8, 5, 0}},  // reserved: the capacity is a high-water mark
      {false, 8, {8, 8, 5, 0}},
      {false, 9, {9, 12, 6, 0}},
      {true, 13, {9, 16, 7, 0}},
  };
  CZtMem<short> m(0);
  for (const auto& [reserve, count, after] : steps) {
    reserve ? m.Reserve(count) : m.Resize(count);
    EXPECT_EQ(StateOf(m), after) << (reserve ? "Reserve(" : "Resize(") << count << ")";
    if (reserve) continue;  // Resize points at the last element; Reserve leaves it
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(m.Last()),
              reinterpret_cast<std::uintptr_t>(m.Data()) + (m.Length() - 1) * sizeof(short));
  }
}

// A failed reservation leaves the block as it was (failed Resize: the string arrays' sweep).
TEST(CZtMemBase, AFailedReservationLeavesTheBlockIntactAndMatrixPrecision) {
  CZtMem<int> block(3);
  std::memcpy(block.Data(), "0123456789a", 12);
  unsigned char* data = block.Data();
  ExpectRaiseWhenFailing(AllocKind::Realloc, 1, [&] { block.Reserve(100); },
                         {{"Error reserving memory ", "Zt::CZtMemBase::Reserve", "ZtMemBase"},
                          {"realloc failed", "Zt::CZtMemBase::Alloc", "ZtMemBase"}});
  EXPECT_TRUE(block.Data() == data && StateOf(block) == (State{3, 4, 1, 1}) &&
              std::memcmp(block.Data(), "0123456789a", 12) == 0);
  // The matrices' other members are tested through the two-dimensional arrays.
  EXPECT_TRUE(CZtMatrix<double>().Precision() == 1e-12 && CZtMatrix<int>().Precision() == 0);
}

class CZtMemObjTest : public ::testing::Test {
protected:
  void SetUp() override { Probe::made = 0, Probe::failAt = -1, Probe::destroyed.clear(); }
};

TEST_F(CZtMemObjTest, ObjectsKeepTheirAddressesAndDieFromTheTopAndThePointersStay) {
  {
    CZtMemObj<Probe> m(3);
    const Probe* first = m.Elements()[0];
    m.Resize(3);  // the present length: nothing is made or destroyed
    m.Resize(9);  // the pointer block grows; the objects stay where they are
    Ids ids;
    for (unsigned long long i = 0; i < m.Length(); ++i) ids.push_back(m.Elements()[i]->id);
    EXPECT_EQ(ids, (Ids{0, 1, 2, 3, 4, 5, 6, 7, 8}));
    m.Resize(4);
    EXPECT_TRUE(Probe::destroyed == (Ids{8, 7, 6, 5, 4}) && m.Elements()[0] == first);
    Probe::destroyed.clear();
  }
  EXPECT_EQ(Probe::destroyed, (Ids{3, 2, 1, 0}));
  // The pointer block never shrinks, and Prune frees nothing.
  CZtMemObj<Probe> m(10);
  EXPECT_TRUE(m.IsUnreserved() && !m.Memory().IsUnreserved());
  m.Resize(0);
  EXPECT_EQ(StateOf(m.Memory()), (State{0, 12, 2, 0}));
  m.Prune();
  EXPECT_TRUE(m.IsUnreserved());
  m.Reserve(2);
  m.Prune();
  EXPECT_TRUE(!m.IsUnreserved() && StateOf(m.Memory()) == (State{0, 12, 2, 0}));
  // Reserve grows the pointer block, and wraps the block's failure.
  m.Reserve(20);
  EXPECT_EQ(StateOf(m.Memory()), (State{0, 20, 3, 0}));
  ExpectRaiseWhenFailing(
      AllocKind::Realloc, 1, [&] { m.Reserve(40); },
      {{"Error reserving memory for object ", "Zt::CZtMemObj<struct Probe>::Reserve", kMemObj},
       {"Error reserving memory ", "Zt::CZtMemBase::Reserve", "ZtMemBase"},
       {"realloc failed", "Zt::CZtMemBase::Alloc", "ZtMemBase"}});
}

// Of three new objects the second fails: the new length and old count stay; names are generic.
TEST_F(CZtMemObjTest, AFailedConstructionLeavesTheNewLengthAndTheOldCount) {
  const std::string init = "Zt::CZtMemObj<struct Probe>::InitElements";
  CZtMemObj<Probe> m(2);
  Probe::failAt = 3;
  ExpectRaise([&] { m.Resize(5); }, {{"Error setting memory size to 5 elements",
                                      "Zt::CZtMemObj<struct Probe>::Resize", kMemObj},
                                     {"Error reserving memory for object ", init, kMemObj},
                                     {"probe refused", "Probe::Probe", "ZtMemTest"}});
  EXPECT_EQ(std::make_pair(m.Length(), m.ElementCount()), std::make_pair(5ull, 2ull));
  delete m.Elements()[2];  // made in the failed call and no longer counted
}

}  // namespace
