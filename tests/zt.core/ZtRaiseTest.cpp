#include <gtest/gtest.h>

#include <new>
#include <string>

#include "ZtRaise.h"

using Zt::CIException;
using Zt::CZtException;
using Zt::CZtOutOfMemoryException;
using Zt::CZtString;

namespace {

constexpr const char* ZtSourceFile = "ZtRaiseTest";

// A generic class names its own file, whatever file instantiates it.
template <class T>
struct CZtProbe {
  static constexpr const char* ZtSourceFile = "source\\zt.core.ex\\ZtProbe";
  static void Fail() { ZT_RAISE(Zt::Detail::ZtMemberName<T>("CZtProbe", "Fail"), "probe failed"); }
};

TEST(ZtRaise, NamesFileFunctionAndTheLineOfTheRaise) {
  unsigned int line = 0;
  try {
    line = __LINE__ + 1;
    ZT_RAISE("Zt::CZtArrayDouble::Delete", "Nullptr --> Object not initialized");
  } catch (CZtException& e) {
    EXPECT_STREQ(e.GetMessageText(), "Nullptr --> Object not initialized");
    EXPECT_STREQ(e.GetFile(), "ZtRaiseTest");
    EXPECT_STREQ(e.GetFunction(), "Zt::CZtArrayDouble::Delete");
    EXPECT_EQ(e.GetLine(), line);
  }
}

TEST(ZtRaise, GenericMembersUseTheirClassFileAndFullName) {
  try {
    CZtProbe<double>::Fail();
  } catch (CZtException& e) {
    EXPECT_STREQ(e.GetFile(), "source\\zt.core.ex\\ZtProbe");
    EXPECT_STREQ(e.GetFunction(), "Zt::CZtProbe<double>::Fail");
  }
  EXPECT_EQ(Zt::Detail::ZtMemberName<Zt::CZtString>("CZtMemObj", "Reserve"),
            "Zt::CZtMemObj<class Zt::CZtString>::Reserve");
  EXPECT_EQ(Zt::Detail::ZtMemberName<unsigned char>("CZtArrayBase", "New"),
            "Zt::CZtArrayBase<unsigned char>::New");
}

TEST(ZtRaise, WrappingAddsOneLinkAndAlwaysThrowsCZtException) {
  try {
    try {
      throw CZtOutOfMemoryException::Create("inner", "f", "g", 1);
    } catch (CIException& e) {
      ZT_WRAP("Zt::CZtArrayString::Resize", CZtString("Error resizing ") << "Array", e);
    }
  } catch (CZtOutOfMemoryException&) {
    ADD_FAILURE() << "the head of a wrapped chain is a plain CZtException";
  } catch (CZtException& e) {
    EXPECT_STREQ(e.GetMessageText(), "Error resizing Array");
    ASSERT_NE(e.GetInnerException(), nullptr);
    EXPECT_STREQ(e.GetInnerException()->GetMessageText(), "inner");
    EXPECT_TRUE(e.HasException(CZtOutOfMemoryException::ClassGuid));
  }
}

TEST(ZtRaise, OutOfMemoryTakesTheTextOfWhatBehindAnOptionalPrefix) {
  const std::bad_alloc failure;
  const std::string what = failure.what();
  try {
    ZT_RAISE_OUT_OF_MEMORY("Zt::CZtArrayBase<int>::New", failure);
  } catch (CZtOutOfMemoryException& e) {
    EXPECT_EQ(what, e.GetMessageText());
    EXPECT_EQ(e.GetInnerException(), nullptr);
  }
  try {
    ZT_RAISE_OUT_OF_MEMORY("Zt::CZtMatrix<double>::Resize", failure, "Error resizing matrix:");
  } catch (CZtOutOfMemoryException& e) {
    EXPECT_EQ("Error resizing matrix:" + what, e.GetMessageText());
  }
}

}  // namespace
