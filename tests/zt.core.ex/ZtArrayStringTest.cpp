#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "ZtCoreEx.h"

using Zt::CZtArrayString;
using Zt::CZtException;
using Zt::CZtString;

namespace {

std::vector<std::string> Texts(const CZtArrayString& array) {
  std::vector<std::string> texts;
  for (unsigned long long i = 0; i < array.Length(); ++i) {
    texts.emplace_back(array[i].ToCString());
  }
  return texts;
}

CZtArrayString Of(const std::vector<std::string>& texts) {
  CZtArrayString array(texts.size());
  for (std::size_t i = 0; i < texts.size(); ++i) {
    array[i] = texts[i].c_str();
  }
  return array;
}

// Checks that `op` raises a CZtException from ZtArrayString with `message`
// under `function`, holding an inner exception with `inner` if that is given.
void ExpectFailure(const std::function<void()>& op, const char* function, const char* message,
                   const char* inner = nullptr) {
  try {
    op();
    ADD_FAILURE() << "no failure, expected: " << message;
  } catch (CZtException& e) {
    EXPECT_STREQ(e.GetMessageText(), message);
    EXPECT_STREQ(e.GetFile(), "ZtArrayString");
    EXPECT_STREQ(e.GetFunction(), function);
    if (inner == nullptr) {
      EXPECT_EQ(e.GetInnerException(), nullptr);
    } else if (e.GetInnerException() == nullptr) {
      ADD_FAILURE() << "no inner exception, expected: " << inner;
    } else {
      EXPECT_STREQ(e.GetInnerException()->GetMessageText(), inner);
      EXPECT_STREQ(e.GetInnerException()->GetFunction(), function);
      EXPECT_STREQ(e.GetInnerException()->GetFile(), "ZtArrayString");
    }
  }
}

TEST(CZtArrayString, SplitsFieldsAsGetlineReadsThem) {
  struct Case {
    const char* text;
    char delimiter;
    std::vector<std::string> fields;
  };
  const Case cases[] = {
      {"", ',', {}},
      {"a", ',', {"a"}},
      {"a,b", ',', {"a", "b"}},
      {"a,,b", ',', {"a", "", "b"}},
      {",a", ',', {"", "a"}},
      {"a,", ',', {"a"}},
      {",", ',', {""}},
      {",,", ',', {"", ""}},
      {" a , b ", ',', {" a ", " b "}},
      {"no delimiter here", ';', {"no delimiter here"}},
      {"x\xE9y\xE9", '\xE9', {"x", "y"}},
      {"line one\nline two", '\n', {"line one", "line two"}},
  };
  for (const Case& c : cases) {
    const CZtArrayString array(c.text, c.delimiter);
    EXPECT_TRUE(array.IsValid()) << c.text;
    EXPECT_EQ(Texts(array), c.fields) << "'" << c.text << "'";
  }
}

TEST(CZtArrayString, LengthChangesKeepElementsAndTheirAddresses) {
  CZtArrayString array = Of({"a", "b", "c"});
  CZtString& first = array[0];
  array.Resize(7);
  EXPECT_EQ(&array[0], &first);
  EXPECT_EQ(Texts(array), (std::vector<std::string>{"a", "b", "c", "", "", "", ""}));
  array.Resize(2);
  EXPECT_EQ(&array[0], &first);
  EXPECT_EQ(Texts(array), (std::vector<std::string>{"a", "b"}));
  array.Resize(2);
  EXPECT_EQ(Texts(array), (std::vector<std::string>{"a", "b"}));
  array.Reset();
  EXPECT_EQ(Texts(array), (std::vector<std::string>{"", ""}));
  array.New(3);
  EXPECT_EQ(Texts(array), (std::vector<std::string>{"", "", ""}));
  EXPECT_EQ(Texts(CZtArrayString()), std::vector<std::string>{});
}

TEST(CZtArrayString, IndexIsCheckedInBothForms) {
  CZtArrayString array = Of({"x", "y"});
  const CZtArrayString& constant = array;
  EXPECT_EQ(&constant[1], &array[1]);
  for (unsigned long long bad : {2ull, 3ull, ~0ull}) {
    ExpectFailure([&] { (void)array[bad]; }, "Zt::CZtArrayString::operator []",
                  "Array index out of bounds");
    ExpectFailure([&] { (void)constant[bad]; }, "Zt::CZtArrayString::operator []",
                  "Array index out of bounds");
  }
}

TEST(CZtArrayString, CopiesAreDeepAndCopiesOfInvalidArraysAreInvalid) {
  const CZtArrayString source = Of({"one", "two"});
  CZtArrayString copied(source);
  CZtArrayString assigned = Of({"x", "y", "z"});
  assigned = source;
  for (CZtArrayString* target : {&copied, &assigned}) {
    EXPECT_EQ(Texts(*target), (std::vector<std::string>{"one", "two"}));
    EXPECT_NE(&(*target)[0], &source[0]);
    (*target)[0] = "changed";
  }
  EXPECT_EQ(Texts(source), (std::vector<std::string>{"one", "two"}));

  CZtArrayString invalid;
  invalid.Delete();
  const CZtArrayString copyOfInvalid(invalid);
  EXPECT_FALSE(copyOfInvalid.IsValid());
  CZtArrayString assignedInvalid = Of({"a"});
  assignedInvalid = invalid;
  EXPECT_FALSE(assignedInvalid.IsValid());

  // Assignment to itself destroys the contents first, and nothing repairs it.
  CZtArrayString self = Of({"a", "b"});
  CZtArrayString& alias = self;
  self = alias;
  EXPECT_FALSE(self.IsValid());
  EXPECT_EQ(self.Length(), 0u);
}

TEST(CZtArrayString, AnInvalidArrayRefusesAccessUntilNew) {
  // Three ways to an invalid array.
  const std::vector<std::function<void(CZtArrayString&)>> invalidate = {
      [](CZtArrayString& a) { a.Delete(); },
      [](CZtArrayString& a) { a.Delete(); a.Delete(); },
      [](CZtArrayString& a) { CZtArrayString& alias = a; a = alias; },
  };
  for (const auto& makeInvalid : invalidate) {
    CZtArrayString array = Of({"a", "b"});
    makeInvalid(array);
    const CZtArrayString& constant = array;
    EXPECT_FALSE(array.IsValid());
    EXPECT_EQ(array.Length(), 0u);
    ExpectFailure([&] { array.Reset(); }, "Zt::CZtArrayString::Reset",
                  "Nullptr --> Array Data Invalid");
    ExpectFailure([&] { (void)array[0]; }, "Zt::CZtArrayString::operator []",
                  "Nullptr --> Array Data Invalid");
    ExpectFailure([&] { (void)constant[0]; }, "Zt::CZtArrayString::operator []",
                  "Nullptr --> Array Data Invalid");
    // Resize wraps its own refusal at once.
    ExpectFailure([&] { array.Resize(1); }, "Zt::CZtArrayString::Resize", "Error resizing Array",
                  "Nullptr --> Array Data Invalid");
    EXPECT_FALSE(array.IsValid());

    array.New(2);
    EXPECT_TRUE(array.IsValid());
    EXPECT_EQ(Texts(array), (std::vector<std::string>{"", ""}));
  }
}

}  // namespace
