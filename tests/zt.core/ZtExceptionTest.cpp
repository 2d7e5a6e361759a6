#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>

#include "ZtChain.h"
#include "ZtRaise.h"

using namespace Zt;
using namespace ZtTest;
using Links = std::vector<Link>;

namespace {

constexpr const char* ZtSourceFile = "ZtExceptionTest";

// A derived exception as the parameter layer builds them: name and GUID are
// replaced after the base is built.
class CTestException : public CZtException {
public:
  CTestException(const char* message, CIException* inner)
      : CZtException(message, "TestFile", "Zt::Test::Raise", 7, inner) {
    SetName("Zt.TestException");
    SetGUID(Guid);
  }
  CTestException(CTestException& other) : CZtException(other) {}
  CIException* Clone() const override {
    return new CTestException(const_cast<CTestException&>(*this));
  }
  static constexpr CGuid Guid{"{5EE36AA5-1C62-43F8-BC50-DC96AD3829D0}"};
};

// A generic class names its own file, whatever file instantiates it.
template <class T>
struct CZtProbe {
  static constexpr const char* ZtSourceFile = "source\\zt.core.ex\\ZtProbe";
  static void Fail() { ZT_RAISE(Detail::ZtMemberName<T>("CZtProbe", "Fail"), "probe failed"); }
};

template <class F>
unsigned int LineOf(F raise) {
  try {
    raise();
  } catch (CZtException& e) {
    return e.GetLine();
  }
  return 0;
}

TEST(CZtException, RaisesCarryMessageFunctionFileAndLine) {
  const auto create = [] { throw CZtException::Create("realloc failed", "f", "Zt::g", 42); };
  EXPECT_EQ(Raised(create), (Chain{{"Zt.Exception", "realloc failed"}}));
  ExpectRaise(create, {{"realloc failed", "Zt::g", "f"}});
  EXPECT_EQ(LineOf(create), 42u);
  const auto raise = [] { ZT_RAISE("Zt::CZtArrayDouble::Delete", "Nullptr --> Not there"); };
  EXPECT_EQ(LineOf(raise), __LINE__ - 1u);
  ExpectRaise(raise, {{"Nullptr --> Not there", "Zt::CZtArrayDouble::Delete", ZtSourceFile}});
  ExpectRaise([] { CZtProbe<double>::Fail(); },
              {{"probe failed", "Zt::CZtProbe<double>::Fail", "source\\zt.core.ex\\ZtProbe"}});
}

// Wrapping adds one link, and the head is a plain CZtException whatever it
// wraps; out of memory takes the text of what() behind an optional prefix.
TEST(CZtException, WrapsAndReportsOutOfMemory) {
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
  EXPECT_EQ(Raised([] { throw CZtOutOfMemoryException::Create("m", "f", "g", 1); }),
            (Chain{{"Zt.OutOfMemoryException", "m"}}));
}

TEST(CZtException, ACloneKeepsACopyOfTheInnerChainAfterTheCaughtOneIsGone) {
  std::unique_ptr<CIException> outer;
  try {
    try {
      try {
        throw CZtOutOfMemoryException::Create("std::bad_alloc", "ZtArrayBase", "f0", 1);
      } catch (CIException& e) {
        throw CTestException("middle", &e);
      }
    } catch (CIException& e) {
      throw CZtException::Create("outer", "file", "f2", 3, e);
    }
  } catch (CIException& e) {
    outer.reset(e.Clone());
  }
  // The thrown objects are gone: each link, of its own class, is a copy.
  ASSERT_NE(dynamic_cast<const CZtException*>(outer.get()), nullptr);
  const auto& head = dynamic_cast<const CZtException&>(*outer);
  EXPECT_EQ(LinksOf(head),
            (Links{{"outer", "f2", "file"},
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
  const std::string text = head.ToString();
  for (const char* part :
       {"Zt.Exception: outer", "f2", "file", "Zt.TestException: middle", "Zt::Test::Raise",
        "TestFile", "line 7", "Zt.OutOfMemoryException: std::bad_alloc"}) {
    EXPECT_NE(text.find(part), std::string::npos) << part << " in\n" << text;
  }
  EXPECT_LT(text.find("outer"), text.find("middle"));
  EXPECT_LT(text.find("middle"), text.find("std::bad_alloc"));
}

}  // namespace
