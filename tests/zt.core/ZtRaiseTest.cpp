#include <gtest/gtest.h>

#include <new>
#include <string>

#include "ZtChain.h"
#include "ZtRaise.h"

using Zt::CIException;
using Zt::CZtException;
using Zt::CZtOutOfMemoryException;
using Zt::CZtString;
using ZtTest::ExpectRaise;

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
  ExpectRaise([] { CZtProbe<double>::Fail(); },
              {{"probe failed", "Zt::CZtProbe<double>::Fail", "source\\zt.core.ex\\ZtProbe"}});
  EXPECT_EQ(Zt::Detail::ZtMemberName<Zt::CZtString>("CZtMemObj", "Reserve"),
            "Zt::CZtMemObj<class Zt::CZtString>::Reserve");
  EXPECT_EQ(Zt::Detail::ZtMemberName<unsigned char>("CZtArrayBase", "New"),
            "Zt::CZtArrayBase<unsigned char>::New");
}

// The head of a wrapped chain is a plain CZtException, whatever it wraps.
TEST(ZtRaise, WrappingAddsOneLinkAndAlwaysThrowsCZtException) {
  ExpectRaise(
      [] {
        try {
          throw CZtOutOfMemoryException::Create("inner", "f", "g", 1);
        } catch (CIException& e) {
          ZT_WRAP("Zt::CZtArrayString::Resize", CZtString("Error resizing ") << "Array", e);
        }
      },
      {{"Error resizing Array", "Zt::CZtArrayString::Resize", "ZtRaiseTest"},
       {"inner", "g", "f", true}});
}

TEST(ZtRaise, OutOfMemoryTakesTheTextOfWhatBehindAnOptionalPrefix) {
  const std::bad_alloc failure;
  const std::string what = failure.what();
  ExpectRaise([&] { ZT_RAISE_OUT_OF_MEMORY("Zt::CZtArrayBase<int>::New", failure); },
              {{what, "Zt::CZtArrayBase<int>::New", "ZtRaiseTest", true}});
  ExpectRaise(
      [&] {
        ZT_RAISE_OUT_OF_MEMORY("Zt::CZtMatrix<double>::Resize", failure, "Error resizing matrix:");
      },
      {{"Error resizing matrix:" + what, "Zt::CZtMatrix<double>::Resize", "ZtRaiseTest", true}});
}

}  // namespace
