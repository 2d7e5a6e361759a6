// Exhausted memory under the arrays and memory blocks: which exception
// arrives, with which chain of messages, and what state is left behind.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>
#include <string>
#include <vector>

#include "ZtAllocFail.h"
#include "ZtArray2DBase.h"
#include "ZtArray2DDouble.h"
#include "ZtArray2DInt.h"
#include "ZtArrayDouble.h"
#include "ZtArrayInt.h"
#include "ZtArrayString.h"
#include "ZtArrayUChar.h"
#include "ZtArrayUInt.h"
#include "ZtArrayUShort.h"
#include "ZtException.h"
#include "ZtMemBase.h"
#include "ZtMemObj.h"

using Zt::CIException;
using Zt::CZtException;
using Zt::CZtOutOfMemoryException;
using Zt::CZtString;
using ZtTest::AllocKind;
using ZtTest::ZtAllocFail;

namespace {

const std::string kBadAlloc = std::bad_alloc().what();

// One exception of a chain, outermost first.
struct Link {
  std::string message;
  std::string function;
  std::string file;
};

// Checks a caught chain link by link, and that it ends where `expected` does.
void ExpectChain(const CIException& head, const std::vector<Link>& expected) {
  const CIException* e = &head;
  for (const Link& link : expected) {
    if (e == nullptr) {
      ADD_FAILURE() << "the chain ends before \"" << link.message << "\"";
      return;
    }
    EXPECT_EQ(link.message, e->GetMessageText());
    EXPECT_EQ(link.function, e->GetFunction());
    EXPECT_EQ(link.file, e->GetFile());
    const auto* z = dynamic_cast<const CZtException*>(e);
    e = z == nullptr ? nullptr : z->GetInnerException();
  }
  if (e != nullptr) {
    ADD_FAILURE() << "the chain goes on with \"" << e->GetMessageText() << "\"";
  }
}

// Runs `op` with the nth allocation of `kind` failing; checks that the
// failure was injected and that a CZtException (and not one of its derived
// classes, unless `outOfMemory`) leaves with the chain `expected`.
void ExpectFailure(AllocKind kind, unsigned long long nth, const std::function<void()>& op,
                   const std::vector<Link>& expected, bool outOfMemory = false) {
  bool fired = false;
  try {
    ZtAllocFail failure(kind, nth);
    try {
      op();
    } catch (...) {
      fired = failure.Fired();
      throw;
    }
    ADD_FAILURE() << "no failure, expected: " << expected.front().message;
  } catch (CZtOutOfMemoryException& e) {
    EXPECT_TRUE(outOfMemory) << "an out-of-memory exception at the head of the chain";
    ExpectChain(e, expected);
  } catch (CZtException& e) {
    EXPECT_FALSE(outOfMemory) << "a plain CZtException where CZtOutOfMemoryException belongs";
    ExpectChain(e, expected);
  }
  EXPECT_TRUE(fired) << "the injected failure did not happen";
}

// Runs `op` with the nth allocation of `kind` failing and expects the
// standard library's std::bad_alloc itself, unconverted.
void ExpectBadAlloc(AllocKind kind, unsigned long long nth, const std::function<void()>& op) {
  ZtAllocFail failure(kind, nth);
  try {
    op();
    ADD_FAILURE() << "no failure";
  } catch (CIException& e) {
    ADD_FAILURE() << "converted into \"" << e.GetMessageText() << "\"";
  } catch (std::bad_alloc&) {
  }
  EXPECT_TRUE(failure.Fired());
}

const char* const kMemBase = "ZtMemBase";
const char* const kMemObj = "source\\zt.core.development\\ZtMemObj";
const char* const kStringArray = "ZtArrayString";

// --- Memory blocks ----------------------------------------------------------

TEST(MemoryBlocksOutOfMemory, AFailedReallocLeavesTheBlockIntact) {
  struct Case {
    const char* name;
    std::function<void(Zt::CZtMemBase&)> op;
    Link wrapper;
  };
  const Case cases[] = {
      {"Resize", [](Zt::CZtMemBase& m) { m.Resize(100); },
       {"Error setting memory size: ", "Zt::CZtMemBase::Resize", kMemBase}},
      {"Reserve", [](Zt::CZtMemBase& m) { m.Reserve(100); },
       {"Error reserving memory ", "Zt::CZtMemBase::Reserve", kMemBase}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Zt::CZtMem<int> block(3);
    std::memcpy(block.Data(), "0123456789a", 12);
    unsigned char* data = block.Data();
    ExpectFailure(AllocKind::Realloc, 1, [&] { c.op(block); },
                  {c.wrapper, {"realloc failed", "Zt::CZtMemBase::Alloc", kMemBase}});
    EXPECT_EQ(block.Data(), data);
    EXPECT_EQ(block.Length(), 3u);
    EXPECT_EQ(block.Capacity(), 4u);
    EXPECT_EQ(block.AllocCount(), 1u);
    EXPECT_TRUE(block.IsUnreserved());
    EXPECT_EQ(std::memcmp(block.Data(), "0123456789a", 12), 0);
  }
}

TEST(MemoryBlocksOutOfMemory, AFailedMallocFailsTheConstruction) {
  ExpectFailure(AllocKind::Malloc, 1, [] { Zt::CZtMem<double> block(5); },
                {{"Error creating memory object", "Zt::CZtMemBase::CZtMemBase", kMemBase},
                 {"Error setting memory size: ", "Zt::CZtMemBase::Resize", kMemBase},
                 {"malloc failed", "Zt::CZtMemBase::Alloc", kMemBase}});
}

TEST(MemoryBlocksOutOfMemory, InitElementsTurnsBadAllocIntoAPlainException) {
  Zt::CZtMemObj<CZtString> block(2);
  // Growing to 5 makes three strings; the second of them fails.
  ExpectFailure(AllocKind::New, 2, [&] { block.Resize(5); },
                {{"Error setting memory size to 5 elements",
                  "Zt::CZtMemObj<class Zt::CZtString>::Resize", kMemObj},
                 {kBadAlloc, "Zt::CZtMemObj<class Zt::CZtString>::InitElements", kMemObj}});
  // The pointer block has its new length, but the objects of the failed call
  // are no longer counted: the one made is the caller's loss.
  EXPECT_EQ(block.Length(), 5u);
  EXPECT_EQ(block.ElementCount(), 2u);
  delete block.Elements()[2];
}

// --- String arrays ----------------------------------------------------------

TEST(StringArrayOutOfMemory, ResizeWrapsEveryLayerAndKeepsTheArray) {
  Zt::CZtArrayString array(4);  // fills the first block of four pointers
  array[3] = "last";
  const CZtString* last = &array[3];
  ExpectFailure(
      AllocKind::Realloc, 1, [&] { array.Resize(5); },
      {{"Error resizing Array", "Zt::CZtArrayString::Resize", kStringArray},
       {"Error setting memory size to 5 elements", "Zt::CZtMemObj<class Zt::CZtString>::Resize",
        kMemObj},
       {"Error setting memory size: ", "Zt::CZtMemBase::Resize", kMemBase},
       {"realloc failed", "Zt::CZtMemBase::Alloc", kMemBase}});
  EXPECT_TRUE(array.IsValid());
  EXPECT_EQ(array.Length(), 4u);
  EXPECT_EQ(&array[3], last);
  EXPECT_STREQ(array[3].ToCString(), "last");
}

TEST(StringArrayOutOfMemory, NewLeavesTheArrayInvalid) {
  // The block object itself: CZtOutOfMemoryException with the text of what().
  {
    Zt::CZtArrayString array(2);
    ExpectFailure(AllocKind::New, 1, [&] { array.New(3); },
                  {{kBadAlloc, "Zt::CZtArrayString::New", kStringArray}}, true);
    EXPECT_FALSE(array.IsValid());
    EXPECT_EQ(array.Length(), 0u);
  }
  // The block's memory: the block's own failure passes through New unwrapped.
  {
    Zt::CZtArrayString array(2);
    ExpectFailure(AllocKind::Malloc, 1, [&] { array.New(3); },
                  {{"Error creating memory object", "Zt::CZtMemBase::CZtMemBase", kMemBase},
                   {"Error setting memory size: ", "Zt::CZtMemBase::Resize", kMemBase},
                   {"malloc failed", "Zt::CZtMemBase::Alloc", kMemBase}});
    EXPECT_FALSE(array.IsValid());
  }
}

TEST(StringArrayOutOfMemory, AssignmentWrapsTheFailureOfNew) {
  const Zt::CZtArrayString source(3);
  Zt::CZtArrayString target(1);
  ExpectFailure(AllocKind::New, 1, [&] { target = source; },
                {{"Error Copying Array", "Zt::CZtArrayString::operator =", kStringArray},
                 {kBadAlloc, "Zt::CZtArrayString::New", kStringArray}});
  EXPECT_FALSE(target.IsValid());
}

// --- Numeric arrays ---------------------------------------------------------

template <class A, class T>
struct Numeric {
  using Array = A;
  using Elem = T;
};
template <class F>
class NumericArrayOutOfMemory : public ::testing::Test {};
using NumericFamilies =
    ::testing::Types<Numeric<Zt::CZtArrayDouble, double>, Numeric<Zt::CZtArrayInt, int>,
                     Numeric<Zt::CZtArrayUChar, unsigned char>,
                     Numeric<Zt::CZtArrayUInt, unsigned int>,
                     Numeric<Zt::CZtArrayUShort, unsigned short>>;
// Names the typed tests by element type, "unsigned_char" and so on.
struct ElementNames {
  template <class F>
  static std::string GetName(int) {
    std::string name = Zt::Detail::ZtTypeName<typename F::Elem>::value;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
  }
};
TYPED_TEST_SUITE(NumericArrayOutOfMemory, NumericFamilies, ElementNames);

TYPED_TEST(NumericArrayOutOfMemory, NewAndResizeRaiseOutOfMemory) {
  using A = typename TypeParam::Array;
  using T = typename TypeParam::Elem;
  const std::string base = Zt::Detail::ZtMemberName<T>("CZtArrayBase", "");
  const char* const file = "source\\zt.core.ex\\ZtArrayBase";

  A resized(2, T(5));
  ExpectFailure(AllocKind::New, 1, [&] { resized.Resize(1000); },
                {{kBadAlloc, base + "Resize", file}}, true);
  ASSERT_EQ(resized.Length(), 2u);
  EXPECT_EQ(resized[1], T(5));

  A renewed(2, T(5));
  ExpectFailure(AllocKind::New, 1, [&] { renewed.New(1000); }, {{kBadAlloc, base + "New", file}},
                true);
  EXPECT_EQ(renewed.Length(), 0u);  // emptied before the failed growth
  EXPECT_TRUE(renewed.IsValid());

  // A length constructor reports its New; the implementation object itself
  // and copies of vectors fail with the standard exception.
  ExpectFailure(AllocKind::New, 2, [] { A array(10); }, {{kBadAlloc, base + "New", file}}, true);
  ExpectBadAlloc(AllocKind::New, 1, [] { A array(10); });
  const A source(10);
  ExpectBadAlloc(AllocKind::New, 1, [&] { A copy(source); });
  ExpectBadAlloc(AllocKind::New, 2, [&] { A copy(source); });
  A target;
  ExpectBadAlloc(AllocKind::New, 1, [&] { target = source; });
}

// --- Two-dimensional arrays -------------------------------------------------

TEST(TwoDimensionalArrayOutOfMemory, ResizeRaisesWithAPrefixAndZeroesTheExtents) {
  struct Case {
    const char* name;
    unsigned long long rows, columns;  // before
  };
  // A rearranging resize and a resize from empty extents.
  for (const Case& c : {Case{"from 2x2", 2, 2}, Case{"from 0x3", 0, 3}}) {
    SCOPED_TRACE(c.name);
    Zt::CZtArray2DDouble array(c.rows, c.columns);
    const void* storage = array.GetDataPtr();
    const bool valid = array.IsValid();
    ExpectFailure(AllocKind::New, 1, [&] { array.Resize(30, 30); },
                  {{"Error resizing matrix:" + kBadAlloc, "Zt::CZtMatrix<double>::Resize",
                    "source\\zt.core.math\\ZtMatrix"}},
                  true);
    unsigned long long rows = 9, columns = 9;
    array.GetSize(rows, columns);
    EXPECT_EQ(rows, 0u);
    EXPECT_EQ(columns, 0u);
    EXPECT_EQ(array.GetDataPtr(), storage);
    EXPECT_EQ(array.IsValid(), valid);
  }
}

TEST(TwoDimensionalArrayOutOfMemory, EverythingElsePassesBadAllocThrough) {
  // New stores the extents before its storage fails, and keeps the storage.
  Zt::CZtArray2DInt array(1, 2);
  const int* storage = array.GetDataPtr();
  ExpectBadAlloc(AllocKind::New, 1, [&] { array.New(30, 30); });
  unsigned long long rows = 0, columns = 0;
  array.GetSize(rows, columns);
  EXPECT_EQ(rows, 30u);
  EXPECT_EQ(columns, 30u);
  EXPECT_EQ(array.GetDataPtr(), storage);

  const Zt::CZtArray2DInt source(2, 2);
  Zt::CZtArray2DInt target(1, 1);
  ExpectBadAlloc(AllocKind::New, 1, [&] { target.CopyFrom(&source); });
  for (unsigned long long nth : {1ull, 2ull, 3ull}) {
    // The wrapper, its implementation, its matrix's storage.
    ExpectBadAlloc(AllocKind::New, nth, [] { Zt::CZtArray2DInt made(3, 3); });
  }
}

}  // namespace
