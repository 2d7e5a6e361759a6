#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <utility>

#include "ZtString.h"

using Zt::CZtString;

namespace {

std::string S(const CZtString& s) { return s.ToCString(); }

TEST(CZtString, CopiesAssignsAppendsAndConcatenatesByValue) {
  CZtString text("abc"), copy(text), self("ab"), numbers;
  text = "changed";
  EXPECT_EQ(S(copy), "abc");  // deep copy
  copy = text;
  EXPECT_EQ(S(copy), "changed");
  copy = copy.ToCString() + 2;  // a pointer into its own text
  const CZtString& same = copy;
  copy = same;
  self << self;
  EXPECT_EQ(S(copy) + "|" + S(self) + "|" + S(CZtString()), "anged|abab|");
  EXPECT_EQ(CZtString().Length(), 0u);

  numbers << "size " << 18446744073709551615ull << " " << 0 << " " << -1;
  EXPECT_EQ(&(numbers << " " << INT_MIN << " " << INT_MAX), &numbers);
  EXPECT_EQ(S(numbers), "size 18446744073709551615 0 -1 -2147483648 2147483647");

  const CZtString a("left"), b("right");
  EXPECT_EQ(S(a + b) + "|" + S(a + "; " + b) + "|" + S(a), "leftright|left; right|left");
  EXPECT_TRUE(a + b == "leftright");
  EXPECT_TRUE(a != b);
}

TEST(CZtString, ReadsAsABlockOfCharacters) {
  const CZtString text("four");
  const Zt::IMemoryAccess& block = text;
  EXPECT_EQ(std::make_pair(block.GetElementSize(), block.Length()), std::make_pair(1ull, 4ull));
  EXPECT_TRUE(block.IsValid());
  EXPECT_EQ(block.GetPointer(), static_cast<const void*>(text.ToCString()));
  EXPECT_EQ(std::memcmp(block.GetPointer(), "four", 5), 0);
  delete static_cast<Zt::IMemoryAccess*>(new CZtString("x"));  // a virtual destructor
}

}  // namespace
