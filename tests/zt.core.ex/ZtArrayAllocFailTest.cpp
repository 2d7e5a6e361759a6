// Exhausted memory under the string arrays, down in their memory blocks:
// which exception arrives, with which chain of messages, and what state is
// left behind.

#include <gtest/gtest.h>

#include <new>
#include <string>

#include "ZtAllocFailChain.h"
#include "ZtArrayString.h"

using ZtTest::AllocKind;
using ZtTest::ExpectRaiseWhenFailing;

namespace {

const std::string kBadAlloc = std::bad_alloc().what();
const char* const kStringArray = "ZtArrayString";
const char* const kMemBase = "ZtMemBase";

TEST(StringArrayOutOfMemory, ResizeWrapsEveryLayerAndKeepsTheArray) {
  Zt::CZtArrayString array(4);  // fills the first block of four pointers
  array[3] = "last";
  const Zt::CZtString* last = &array[3];
  ExpectRaiseWhenFailing(
      AllocKind::Realloc, 1, [&] { array.Resize(5); },
      {{"Error resizing Array", "Zt::CZtArrayString::Resize", kStringArray},
       {"Error setting memory size to 5 elements", "Zt::CZtMemObj<class Zt::CZtString>::Resize",
        "source\\zt.core.development\\ZtMemObj"},
       {"Error setting memory size: ", "Zt::CZtMemBase::Resize", kMemBase},
       {"realloc failed", "Zt::CZtMemBase::Alloc", kMemBase}});
  EXPECT_EQ(array.Length(), 4u);
  EXPECT_EQ(&array[3], last);
  EXPECT_STREQ(array[3].ToCString(), "last");
}

TEST(StringArrayOutOfMemory, NewAndAssignmentLeaveTheArrayInvalid) {
  Zt::CZtArrayString array(2);
  // The block object: out of memory, with the text of what().
  ExpectRaiseWhenFailing(AllocKind::New, 1, [&] { array.New(3); },
                         {{kBadAlloc, "Zt::CZtArrayString::New", kStringArray, true}});
  EXPECT_FALSE(array.IsValid());
  // The block's memory: its own failure passes through New unwrapped.
  ExpectRaiseWhenFailing(AllocKind::Malloc, 1, [&] { array.New(3); },
                         {{"Error creating memory object", "Zt::CZtMemBase::CZtMemBase", kMemBase},
                          {"Error setting memory size: ", "Zt::CZtMemBase::Resize", kMemBase},
                          {"malloc failed", "Zt::CZtMemBase::Alloc", kMemBase}});
  EXPECT_FALSE(array.IsValid());
  // Assignment wraps the failure of its New.
  const Zt::CZtArrayString source(3);
  array.New(1);
  ExpectRaiseWhenFailing(AllocKind::New, 1, [&] { array = source; },
                         {{"Error Copying Array", "Zt::CZtArrayString::operator =", kStringArray},
                          {kBadAlloc, "Zt::CZtArrayString::New", kStringArray, true}});
  EXPECT_FALSE(array.IsValid());
}

}  // namespace
