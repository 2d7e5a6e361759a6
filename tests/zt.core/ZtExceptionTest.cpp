#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "ZtException.h"

using Zt::CGuid;
using Zt::CIException;
using Zt::CZtException;
using Zt::CZtOutOfMemoryException;

namespace {

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

TEST(CZtException, CarriesWhatItWasCreatedWith) {
  try {
    throw CZtException::Create("realloc failed", "ZtMemBase", "Zt::CZtMemBase::Alloc", 42);
  } catch (CZtException& e) {
    EXPECT_STREQ(e.GetMessageText(), "realloc failed");
    EXPECT_STREQ(e.GetFile(), "ZtMemBase");
    EXPECT_STREQ(e.GetFunction(), "Zt::CZtMemBase::Alloc");
    EXPECT_EQ(e.GetLine(), 42u);
    EXPECT_STREQ(e.GetName(), "Zt.Exception");
    EXPECT_EQ(e.GetGUID(), CZtException::ClassGuid);
    EXPECT_EQ(e.GetInnerException(), nullptr);
  }
}

TEST(CZtException, KeepsACopyOfTheInnerChainAfterTheCaughtOneIsGone) {
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
  } catch (CZtException& e) {
    outer.reset(e.Clone());
  }
  // The thrown objects are gone; the clone owns copies of the whole chain.
  const auto* head = dynamic_cast<const CZtException*>(outer.get());
  ASSERT_NE(head, nullptr);
  EXPECT_STREQ(head->GetMessageText(), "outer");
  // A derived link keeps its class, name, GUID, message and place.
  const auto* middle = dynamic_cast<const CTestException*>(head->GetInnerException());
  ASSERT_NE(middle, nullptr);
  EXPECT_STREQ(middle->GetName(), "Zt.TestException");
  EXPECT_EQ(middle->GetGUID(), CTestException::Guid);
  EXPECT_STREQ(middle->GetMessageText(), "middle");
  EXPECT_STREQ(middle->GetFile(), "TestFile");
  EXPECT_STREQ(middle->GetFunction(), "Zt::Test::Raise");
  EXPECT_EQ(middle->GetLine(), 7u);
  const auto* first = dynamic_cast<const CZtOutOfMemoryException*>(middle->GetInnerException());
  ASSERT_NE(first, nullptr);
  EXPECT_STREQ(first->GetMessageText(), "std::bad_alloc");
  EXPECT_STREQ(first->GetName(), "Zt.OutOfMemoryException");
  EXPECT_EQ(first->GetGUID(), CZtOutOfMemoryException::ClassGuid);

  // HasException looks down the chain, never up it.
  EXPECT_TRUE(head->HasException(CZtOutOfMemoryException::ClassGuid));
  EXPECT_TRUE(head->HasException(CTestException::Guid));
  EXPECT_TRUE(head->HasException(CZtException::ClassGuid));
  EXPECT_FALSE(first->HasException(CTestException::Guid));
  EXPECT_FALSE(head->HasException(CGuid()));

  // ToString tells every link, outermost first.
  const std::string text = head->ToString();
  for (const char* part :
       {"Zt.Exception: outer", "f2", "file", "Zt.TestException: middle", "Zt::Test::Raise",
        "TestFile", "line 7", "Zt.OutOfMemoryException: std::bad_alloc"}) {
    EXPECT_NE(text.find(part), std::string::npos) << part << " in\n" << text;
  }
  EXPECT_LT(text.find("outer"), text.find("middle"));
  EXPECT_LT(text.find("middle"), text.find("std::bad_alloc"));
}

TEST(CZtOutOfMemoryException, IsCaughtAsItselfAsCZtExceptionAndAsCIException) {
  int caught = 0;
  try {
    throw CZtOutOfMemoryException::Create("m", "f", "g", 1);
  } catch (CZtOutOfMemoryException&) {
    ++caught;
  }
  try {
    throw CZtOutOfMemoryException::Create("m", "f", "g", 1);
  } catch (CZtException& e) {
    EXPECT_STREQ(e.GetName(), "Zt.OutOfMemoryException");
    ++caught;
  }
  try {
    throw CZtOutOfMemoryException::Create("m", "f", "g", 1);
  } catch (CIException& e) {
    std::unique_ptr<CIException> clone(e.Clone());
    EXPECT_NE(dynamic_cast<CZtOutOfMemoryException*>(clone.get()), nullptr);
    ++caught;
  }
  EXPECT_EQ(caught, 3);
  EXPECT_NE(CZtOutOfMemoryException::ClassGuid, CZtException::ClassGuid);
}

}  // namespace
