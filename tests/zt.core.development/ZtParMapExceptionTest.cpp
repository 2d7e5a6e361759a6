#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <utility>

#include "ZtParException.h"

using Zt::CGuid;
using Zt::CIException;
using Zt::CZtException;
using Zt::CZtParameterException;
using Zt::CZtString;

namespace {

constexpr const char* kParMapFile = "source\\zt.core.development\\ZtParMap";

// What each of the five specific classes must report, written out here so
// that the test does not take the classes' own constants for it.
template <class E>
struct Expected {
  const char* name;
  const char* guid;
  const char* fixed;
};
const std::tuple<Expected<Zt::CZtParInvalidNameException>, Expected<Zt::CZtParAccessReadException>,
                 Expected<Zt::CZtParAccessWriteException>, Expected<Zt::CZtParInvalidTypeException>,
                 Expected<Zt::CZtParInvalidValueException>>
    kExpected{{"Zt.ParInvalidNameException", "{2952225E-DB39-479E-A4E1-7496D6D531B2}",
               "Unknown parameter name"},
              {"Zt.ParAccessReadException", "{2D69D395-4593-48BC-BC70-05C182CEFAE0}",
               "Parameter read access denied"},
              {"Zt.ParAccessWriteException", "{2C95F24C-6098-4354-A291-A8A3C0D0EFAE}",
               "Parameter write access denied"},
              {"Zt.ParInvalidTypeException", "{944D12C7-608C-4509-9755-66A898B5432C}",
               "Wrong type for parameter"},
              {"Zt.ParInvalidValueException", "{3044F9AE-0257-4215-B36C-E8EFD6A543ED}",
               "Invalid parameter value"}};
template <class E>
Expected<E> ExpectedOf() {
  return std::get<Expected<E>>(kExpected);
}

template <class E>
class ParDetailException : public ::testing::Test {};
template <class... E>
::testing::Types<E...> ClassesOf(const std::tuple<Expected<E>...>&);
using DetailClasses = decltype(ClassesOf(kExpected));
// "Zt.ParInvalidNameException" gives "ParInvalidNameException".
struct DetailClassName {
  template <class E>
  static std::string GetName(int) {
    return std::string(ExpectedOf<E>().name).substr(3);
  }
};
TYPED_TEST_SUITE(ParDetailException, DetailClasses, DetailClassName);

// Raised with a detail (or none) and an inner exception, caught as the
// common base, and cloned: the clone keeps class, texts, location and chain.
TYPED_TEST(ParDetailException, ComposesItsMessageAndKeepsEverythingInAClone) {
  const auto expected = ExpectedOf<TypeParam>();
  const std::pair<const char*, std::string> cases[] = {
      {"Expected type 'unsigned' differs from 'double'",
       std::string(expected.fixed) + "; Expected type 'unsigned' differs from 'double'"},
      {"", expected.fixed},
  };
  for (const auto& [detail, message] : cases) {
    CZtException cause = CZtException::Create("handler refused", "Handler", "Zt::Handler::On", 3);
    std::unique_ptr<CIException> clone;
    try {
      throw TypeParam(detail, "Zt::Somewhere::Raise", 17, &cause);
    } catch (CZtParameterException& e) {
      clone.reset(e.Clone());
    }
    const auto* typed = dynamic_cast<const TypeParam*>(clone.get());
    ASSERT_NE(typed, nullptr) << message;
    EXPECT_EQ(typed->GetMessageText(), message);
    EXPECT_STREQ(typed->GetName(), expected.name);
    EXPECT_EQ(typed->GetGUID(), CGuid(expected.guid));
    EXPECT_STREQ(typed->GetFile(), kParMapFile);
    EXPECT_STREQ(typed->GetFunction(), "Zt::Somewhere::Raise");
    EXPECT_EQ(typed->GetLine(), 17u);
    ASSERT_NE(typed->GetInnerException(), nullptr);
    EXPECT_STREQ(typed->GetInnerException()->GetMessageText(), "handler refused");
    EXPECT_FALSE(typed->HasException(CZtParameterException::ClassGuid))
        << "the base's GUID is replaced, not kept beside";
  }
}

TEST(CZtParameterException, UsesItsMessageAsItStandsUnderItsOwnNameAndGuid) {
  const CZtParameterException e("any text; as given", "Zt::Somewhere::Raise", 5, nullptr);
  const std::unique_ptr<CIException> clone(e.Clone());
  ASSERT_NE(dynamic_cast<CZtParameterException*>(clone.get()), nullptr);
  EXPECT_STREQ(clone->GetMessageText(), "any text; as given");
  EXPECT_STREQ(clone->GetName(), "Zt.ParameterException");
  EXPECT_EQ(clone->GetGUID(), CGuid("{3500903C-1B00-4CDB-AFC3-53C91539D6F9}"));
  EXPECT_STREQ(clone->GetFile(), kParMapFile);
}

}  // namespace
