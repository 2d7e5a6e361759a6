#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "ZtChain.h"
#include "ZtCoreEx.h"

using Zt::CZtArrayString;
using Zt::CZtString;
using ZtTest::ExpectRaise;
using Texts = std::vector<std::string>;

namespace {

Texts TextsOf(const CZtArrayString& array) {
  Texts texts;
  for (unsigned long long i = 0; i < array.Length(); ++i) {
    texts.emplace_back(array[i].ToCString());
  }
  return texts;
}

ZtTest::Link Failure(const char* message, const char* member) {
  return {message, std::string("Zt::CZtArrayString::") + member, "ZtArrayString"};
}

TEST(CZtArrayString, SplitsFieldsAsGetlineReadsThem) {
  const std::pair<const char*, Texts> cases[] = {
      {"", {}},
      {"a", {"a"}},
      {"a,,b", {"a", "", "b"}},
      {",a", {"", "a"}},
      {"a,", {"a"}},  // a trailing delimiter adds no empty field
      {",", {""}},
      {",,", {"", ""}},
      {" a , b ", {" a ", " b "}},
      {"no delimiter here", {"no delimiter here"}},
  };
  for (const auto& c : cases) {
    const CZtArrayString array(c.first, ',');
    EXPECT_TRUE(array.IsValid()) << c.first;
    EXPECT_EQ(TextsOf(array), c.second) << "'" << c.first << "'";
  }
  EXPECT_EQ(TextsOf(CZtArrayString("x\xE9y", '\xE9')), (Texts{"x", "y"}));
}

TEST(CZtArrayString, ChangesKeepElementsAndTheirAddresses) {
  CZtArrayString array("a,b,c", ',');
  CZtString& first = array[0];
  array.Resize(5);
  EXPECT_EQ(TextsOf(array), (Texts{"a", "b", "c", "", ""}));
  array.Resize(2);
  EXPECT_EQ(TextsOf(array), (Texts{"a", "b"}));
  EXPECT_EQ(&array[0], &first);
  array.Reset();
  EXPECT_EQ(TextsOf(array), (Texts{"", ""}));
  array.New(3);
  EXPECT_EQ(TextsOf(array), (Texts{"", "", ""}));

  const CZtArrayString& constant = array;
  for (unsigned long long bad : {3ull, ~0ull}) {
    ExpectRaise([&] { (void)array[bad]; }, {Failure("Array index out of bounds", "operator []")});
    ExpectRaise([&] { (void)constant[bad]; },
                {Failure("Array index out of bounds", "operator []")});
  }
}

TEST(CZtArrayString, CopiesAreDeepAndCopiesOfInvalidArraysAreInvalid) {
  const CZtArrayString source("one,two", ',');
  CZtArrayString copied(source);
  CZtArrayString assigned("x,y,z", ',');
  assigned = source;
  for (CZtArrayString* target : {&copied, &assigned}) {
    EXPECT_EQ(TextsOf(*target), (Texts{"one", "two"}));
    EXPECT_NE(&(*target)[0], &source[0]);
  }
  CZtArrayString invalid;
  invalid.Delete();
  EXPECT_FALSE(CZtArrayString(invalid).IsValid());
  assigned = invalid;
  EXPECT_FALSE(assigned.IsValid());
}

TEST(CZtArrayString, AnInvalidArrayRefusesAccessUntilNew) {
  const std::function<void(CZtArrayString&)> invalidations[] = {
      [](CZtArrayString& a) { a.Delete(); },
      [](CZtArrayString& a) {
        a.Delete();
        a.Delete();
      },
      // Assignment to itself destroys the contents first; nothing repairs it.
      [](CZtArrayString& a) { a = *&a; },
  };
  const auto invalid = Failure("Nullptr --> Array Data Invalid", "Resize");
  for (const auto& invalidate : invalidations) {
    CZtArrayString array("a,b", ',');
    invalidate(array);
    const CZtArrayString& constant = array;
    EXPECT_FALSE(array.IsValid());
    EXPECT_EQ(array.Length(), 0u);
    ExpectRaise([&] { array.Reset(); }, {Failure("Nullptr --> Array Data Invalid", "Reset")});
    ExpectRaise([&] { (void)array[0]; },
                {Failure("Nullptr --> Array Data Invalid", "operator []")});
    ExpectRaise([&] { (void)constant[0]; },
                {Failure("Nullptr --> Array Data Invalid", "operator []")});
    // Resize wraps its own refusal at once.
    ExpectRaise([&] { array.Resize(1); }, {Failure("Error resizing Array", "Resize"), invalid});
    array.New(2);
    EXPECT_EQ(TextsOf(array), (Texts{"", ""}));
  }
}

}  // namespace
