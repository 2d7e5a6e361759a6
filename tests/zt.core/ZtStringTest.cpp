#include <gtest/gtest.h>

#include <climits>
#include <string>

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

// Width, length and bytes as a block are read by the byte array's CopyFrom test.
TEST(CZtString, IsAlwaysAValidBlock) {
  EXPECT_TRUE(static_cast<const Zt::IMemoryAccess&>(CZtString("four")).IsValid());
  delete static_cast<Zt::IMemoryAccess*>(new CZtString("x"));  // a virtual destructor
}

}  // namespace
