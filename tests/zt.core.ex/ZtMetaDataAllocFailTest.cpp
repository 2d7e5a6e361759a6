// Exhausted memory under the metadata store: a failed construction reports
// CZtOutOfMemoryException, directly or inside "Error initializing
// meta-data"; every other allocation failure reaches the caller as the
// standard library's std::bad_alloc, unconverted.

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>

#include "ZtAllocFail.h"
#include "ZtCoreEx.h"

using Zt::CIException;
using Zt::CZtException;
using Zt::CZtMetaData;
using Zt::CZtOutOfMemoryException;
using Zt::CZtString;
using ZtTest::AllocKind;
using ZtTest::ZtAllocFail;

namespace {

unsigned long long NewCalls(const std::function<void()>& op) {
  ZtAllocFail counting;
  op();
  return counting.Calls(AllocKind::New);
}

TEST(MetaDataOutOfMemory, AFailedConstructionReportsOutOfMemory) {
  const std::string what = std::bad_alloc().what();
  const unsigned long long calls = NewCalls([] { CZtMetaData store; });
  ASSERT_EQ(calls, 8u) << "the map, then its seven tables";
  for (unsigned long long k = 1; k <= calls; ++k) {
    // Once the map object is stored, a failure leaves it allocated: the
    // constructor raises and nothing holds the map any more.
    const ZtTest::ZtExpectedLeak leak;
    try {
      ZtAllocFail failure(AllocKind::New, k);
      CZtMetaData store;
      ADD_FAILURE() << k << ": constructed";
    } catch (CZtOutOfMemoryException& e) {
      EXPECT_EQ(k, 1u) << "only the map object's own allocation is reported bare";
      EXPECT_EQ(e.GetMessageText(), what);
      EXPECT_STREQ(e.GetFunction(), "Zt::CZtMetaData::Init");
      EXPECT_STREQ(e.GetFile(), "ZtMetaData");
    } catch (CZtException& e) {
      EXPECT_GT(k, 1u);
      EXPECT_STREQ(e.GetMessageText(), "Error initializing meta-data");
      EXPECT_STREQ(e.GetFunction(), "Zt::CZtMetaData::Init");
      const CIException* inner = e.GetInnerException();
      ASSERT_NE(inner, nullptr);
      EXPECT_NE(dynamic_cast<const CZtOutOfMemoryException*>(inner), nullptr);
      EXPECT_EQ(inner->GetMessageText(), what);
      EXPECT_STREQ(inner->GetFile(), "source\\zt.core.development\\ZtParMap");
    }
  }
}

TEST(MetaDataOutOfMemory, ElementOperationsPassBadAllocThroughUnchanged) {
  const CZtString name("a name long enough to need a block of its own");
  const CZtString text("a value long enough to need a block of its own");
  Zt::CZtArrayString texts(2);
  texts[0] = text;
  CZtMetaData filled;
  filled.AddElement(name, text, texts);
  filled.AddElement(text, name, 2.5);
  const struct {
    const char* what;
    std::function<void(CZtMetaData&)> prepare, operation;
  } cases[] = {
      {"add text", [](CZtMetaData&) {}, [&](CZtMetaData& s) { s.AddElement(name, text, text); }},
      {"add text array", [](CZtMetaData&) {},
       [&](CZtMetaData& s) { s.AddElement(name, text, texts); }},
      {"set text", [&](CZtMetaData& s) { s.AddElement(name, "", CZtString()); },
       [&](CZtMetaData& s) { s.SetElement(name, text); }},
      {"get text", [&](CZtMetaData& s) { s.AddElement(name, "", text); },
       [&](CZtMetaData& s) {
         CZtString value;
         s.GetElement(name, value);
       }},
      {"get array element as uint", [&](CZtMetaData& s) { s.AddElement(name, "", texts); },
       [&](CZtMetaData& s) {
         unsigned int value = 0;
         s.GetElement(name, value);
       }},
      {"assign", [&](CZtMetaData& s) { s.AddElement("x", "", 1u); },
       [&](CZtMetaData& s) { s = filled; }},
  };
  for (const auto& c : cases) {
    unsigned long long calls = 0;
    {
      CZtMetaData store;
      c.prepare(store);
      calls = NewCalls([&] { c.operation(store); });
    }
    ASSERT_GT(calls, 0u) << c.what;
    for (unsigned long long k = 1; k <= calls; ++k) {
      CZtMetaData store;
      c.prepare(store);
      bool passed = false;
      try {
        ZtAllocFail failure(AllocKind::New, k);
        c.operation(store);
      } catch (CIException& e) {
        ADD_FAILURE() << c.what << ", " << k << ": converted into \"" << e.GetMessageText() << "\"";
      } catch (std::bad_alloc&) {
        passed = true;
      }
      EXPECT_TRUE(passed) << c.what << ", " << k << " of " << calls;
    }
  }
}

// A copy first builds its own empty store, whose allocations are guarded,
// then copies the elements, whose allocations are not.
TEST(MetaDataOutOfMemory, ACopyIsGuardedOnlyWhileItBuildsItsOwnStore) {
  CZtMetaData source;
  source.AddElement("a name long enough to need a block of its own", "", CZtString("value"));
  const unsigned long long calls = NewCalls([&] { CZtMetaData copy(source); });
  ASSERT_GT(calls, 8u);
  for (unsigned long long k = 1; k <= calls; ++k) {
    const ZtTest::ZtExpectedLeak leak;  // the map of a failed construction stays
    try {
      ZtAllocFail failure(AllocKind::New, k);
      CZtMetaData copy(source);
      ADD_FAILURE() << k << ": copied";
    } catch (CZtException& e) {
      EXPECT_LE(k, 8u) << e.GetMessageText();
      EXPECT_TRUE(e.HasException(CZtOutOfMemoryException::ClassGuid)) << k;
    } catch (std::bad_alloc&) {
      EXPECT_GT(k, 8u);
    }
  }
}

}  // namespace
