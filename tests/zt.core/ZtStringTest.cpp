#include <gtest/gtest.h>

#include <climits>
#include <cstring>

#include "ZtString.h"

using Zt::CZtString;

namespace {

TEST(CZtString, ConstructsCopiesAndAssigns) {
  const CZtString empty;
  EXPECT_STREQ(empty.ToCString(), "");
  EXPECT_EQ(empty.Length(), 0u);

  CZtString text("abc");
  CZtString copy(text);
  text = "changed";
  EXPECT_STREQ(copy.ToCString(), "abc");  // deep copy
  copy = text;
  EXPECT_STREQ(copy.ToCString(), "changed");

  // Assigning a pointer into the string's own text, and itself.
  copy = copy.ToCString() + 2;
  EXPECT_STREQ(copy.ToCString(), "anged");
  const CZtString& same = copy;
  copy = same;
  EXPECT_STREQ(copy.ToCString(), "anged");
}

TEST(CZtString, AppendsChainAndNumbersPrintInDecimal) {
  CZtString s;
  s << "Error setting memory size to " << 18446744073709551615ull << " elements";
  EXPECT_STREQ(s.ToCString(), "Error setting memory size to 18446744073709551615 elements");

  struct Case {
    int value;
    const char* text;
  } const cases[] = {{0, "0"}, {-1, "-1"}, {INT_MIN, "-2147483648"}, {INT_MAX, "2147483647"}};
  for (const auto& c : cases) {
    CZtString n;
    EXPECT_EQ(&(n << c.value), &n);
    EXPECT_STREQ(n.ToCString(), c.text);
  }

  CZtString self("ab");
  self << self;
  EXPECT_STREQ(self.ToCString(), "abab");
}

TEST(CZtString, ConcatenatesByValue) {
  const CZtString a("left");
  const CZtString b("right");
  EXPECT_STREQ((a + b).ToCString(), "leftright");
  EXPECT_STREQ((a + "; " + b).ToCString(), "left; right");
  EXPECT_STREQ(a.ToCString(), "left");
  EXPECT_TRUE(a + b == "leftright");
  EXPECT_TRUE(a != b);
}

TEST(CZtString, ReadsAsABlockOfCharacters) {
  const CZtString text("four");
  const Zt::IMemoryAccess& block = text;
  EXPECT_EQ(block.GetElementSize(), 1u);
  EXPECT_EQ(block.Length(), 4u);
  EXPECT_TRUE(block.IsValid());
  EXPECT_EQ(block.GetPointer(), static_cast<const void*>(text.ToCString()));
  EXPECT_EQ(std::memcmp(block.GetPointer(), "four", 5), 0);

  // Deleted through the interface's virtual destructor.
  Zt::IMemoryAccess* heap = new CZtString("x");
  delete heap;
}

}  // namespace
