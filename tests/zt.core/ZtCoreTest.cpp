#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "CGuid.h"
#include "ZtChain.h"
#include "ZtRaise.h"
#include "ZtString.h"

using namespace Zt;
using namespace ZtTest;

namespace {

constexpr const char* ZtSourceFile = "ZtCoreTest";

// A derived exception as the parameter layer builds them: name and GUID set after the base.
class CTestException : public CZtException {
public:
  CTestException(const char* message, CIException* inner)
      : CZtException(message, "TestFile", "Zt::Test::Raise", 7, inner) {
    SetName("Zt.TestException");
    SetGUID(Guid);
  }
  CIException* Clone() const override {
    return new CTestException(const_cast<CTestException&>(*this));
  }
  static constexpr CGuid Guid{"{5EE36AA5-1C62-43F8-BC50-DC96AD3829D0}"};
};

// A clone of what `raise` raised, which outlives the thrown object.
template <class F>
std::unique_ptr<CZtException> CloneOf(F raise) {
  try {
    raise();
  } catch (CZtException& e) {
    return std::unique_ptr<CZtException>(dynamic_cast<CZtException*>(e.Clone()));
  }
  return nullptr;
}

TEST(CZtException, RaisesCarryMessageFunctionFileAndLineWrapsAndReportsOutOfMemory) {
  const auto create = [] { throw CZtException::Create("realloc failed", "f", "Zt::g", 42); };
  ExpectRaise(create, {{"realloc failed", "Zt::g", "f"}});
  EXPECT_EQ(CloneOf(create)->GetLine(), 42u);
  const auto raise = [] { ZT_RAISE("Zt::CZtArrayDouble::Delete", "Nullptr --> Not there"); };
  EXPECT_EQ(CloneOf(raise)->GetLine(), __LINE__ - 1u);
  ExpectRaise(raise, {{"Nullptr --> Not there", "Zt::CZtArrayDouble::Delete", ZtSourceFile}});
  // Wrapping adds a plain CZtException link; out of memory says what() after an optional prefix.
  const std::string what = std::bad_alloc().what();
  ExpectRaise(
      [] {
        try {
          throw CZtOutOfMemoryException::Create("inner", "f", "g", 1);
        } catch (CIException& e) {
          ZT_WRAP("Zt::CZtArrayString::Resize", CZtString("Error resizing ") << "Array", e);
        }
      },
      {{"Error resizing Array", "Zt::CZtArrayString::Resize", ZtSourceFile},
       {"inner", "g", "f", true}});
  ExpectRaise([] { ZT_RAISE_OUT_OF_MEMORY("Zt::CZtArrayBase<int>::New", std::bad_alloc()); },
              {{what, "Zt::CZtArrayBase<int>::New", ZtSourceFile, true}});
  ExpectRaise([] { ZT_RAISE_OUT_OF_MEMORY("Zt::M::Resize", std::bad_alloc(), "Error resizing:"); },
              {{"Error resizing:" + what, "Zt::M::Resize", ZtSourceFile, true}});
}

TEST(CZtException, ACloneKeepsACopyOfTheInnerChainAfterTheCaughtOneIsGone) {
  const auto outer = CloneOf([] {
    try {
      try {
        throw CZtOutOfMemoryException::Create("std::bad_alloc", "ZtArrayBase", "f0", 1);
      } catch (CIException& e) {
        throw CTestException("middle", &e);
      }
    } catch (CIException& e) {
      throw CZtException::Create("outer", "file", "f2", 3, e);
    }
  });
  // The thrown objects are gone: each link, of its own class, is a copy.
  ASSERT_NE(outer, nullptr);
  const CZtException& head = *outer;
  EXPECT_EQ(LinksOf(head),
            (std::vector<Link>{{"outer", "f2", "file"},
                               {"middle", "Zt::Test::Raise", "TestFile", false, "Zt.TestException"},
                               {"std::bad_alloc", "f0", "ZtArrayBase", true}}));
  const CIException* first = InnerOf(*head.GetInnerException());
  // HasException looks down the chain, never up it.
  EXPECT_EQ((std::vector<bool>{
                head.HasException(CZtOutOfMemoryException::ClassGuid),
                head.HasException(CTestException::Guid), head.HasException(CZtException::ClassGuid),
                first->HasException(CTestException::Guid), head.HasException(CGuid())}),
            (std::vector<bool>{true, true, true, false, false}));
  // ToString tells every link, outermost first.
  EXPECT_STREQ(head.ToString(),
               "Zt.Exception: outer\n  at f2 (file, line 3)\ninner Zt.TestException: middle\n  at "
               "Zt::Test::Raise (TestFile, line 7)\ninner Zt.OutOfMemoryException: std::bad_alloc\n"
               "  at f0 (ZtArrayBase, line 1)");
}

TEST(CGuid, ParsesTheBracedTextOfEitherCaseAndComparesEveryDigit) {
  constexpr CGuid guid("{3500903C-1B00-4CDB-AFC3-53C91539D6F9}");
  static_assert(guid.Data1 == 0x3500903Cu && sizeof(CGuid) == 16, "built by the compiler");
  std::vector<unsigned> fields{guid.Data2, guid.Data3};
  fields.insert(fields.end(), guid.Data4, guid.Data4 + 8);
  EXPECT_EQ(fields, (std::vector<unsigned>{0x1B00, 0x4CDB, 0xAF, 0xC3, 0x53, 0xC9, 0x15, 0x39, 0xD6,
                                           0xF9}));
  // Every digit and brace takes part in the comparison; malformed text gives the zero GUID.
  const std::string braced = "{2C95F24C-6098-4354-A291-A8A3C0D0EFAE}";
  EXPECT_EQ(CGuid("{2c95f24c-6098-4354-a291-a8a3c0d0efae}"), CGuid(braced.c_str()));
  for (std::size_t i = 0; i < 38; ++i) {
    std::string changed = braced;
    changed[i] = braced[i] == '0' ? '1' : '0';
    const CGuid base(braced.c_str()), other(changed.c_str());
    EXPECT_TRUE(braced[i] == '-' || (other != base && !(other == base))) << i;
  }
  for (const char* text :
       {static_cast<const char*>(nullptr), "", "3500903C-1B00-4CDB-AFC3-53C91539D6F9",
        "{3500903C-1B00-4CDB-AFC3-53C91539D6F}", "{3500903C-1B00-4CDB-AFC3-53C91539D6F9}x",
        "{3500903C_1B00-4CDB-AFC3-53C91539D6F9}", "{3500903G-1B00-4CDB-AFC3-53C91539D6F9}"})
    EXPECT_EQ(CGuid(text), CGuid()) << (text != nullptr ? text : "null");
}

std::string S(const CZtString& s) { return s.ToCString(); }

TEST(CZtString, CopiesAssignsAppendsAndConcatenatesByValue) {
  CZtString text("abc"), copy(text), self("ab"), numbers;
  text = "changed";
  EXPECT_EQ(S(copy), "abc");  // deep copy
  copy = text;
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
  EXPECT_TRUE(a + b == "leftright" && "left" == a && a != b && CZtString() == nullptr);
  EXPECT_FALSE(a == "lef" || "lef" == a || a != "left" || "left" != a || a != CZtString("left") ||
               a == nullptr);
  // Always a valid block (width, length and bytes: the byte array's CopyFrom test).
  EXPECT_TRUE(static_cast<const Zt::IMemoryAccess&>(CZtString("four")).IsValid());
  delete static_cast<Zt::IMemoryAccess*>(new CZtString("x"));  // a virtual destructor
}

}  // namespace
