#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "ZtAllocFail.h"
#include "ZtChain.h"
#include "ZtCoreEx.h"
#include "ZtHollowArray.h"

using namespace Zt;
using ZtTest::ExpectRaise;
using Values = std::vector<long long>;
using Calls = std::vector<std::pair<const char*, std::function<void()>>>;

namespace {

// The array types with the names that their failures must give, written out
// here rather than taken from the library.
template <class A, class T>
struct Family {
  using Array = A;
  using Elem = T;
};
#define ZT_FAMILY(F, A, T, N)                          \
  struct F : Family<A, T> {                            \
    static constexpr const char *Name = N, *Type = #T; \
  }
ZT_FAMILY(DoubleFamily, CZtArrayDouble, double, "Double");
ZT_FAMILY(IntFamily, CZtArrayInt, int, "Int");
ZT_FAMILY(UCharFamily, CZtArrayUChar, unsigned char, "UChar");
ZT_FAMILY(UIntFamily, CZtArrayUInt, unsigned int, "UInt");
ZT_FAMILY(UShortFamily, CZtArrayUShort, unsigned short, "UShort");
ZT_FAMILY(Double2DFamily, CZtArray2DDouble, double, "2DDouble");
ZT_FAMILY(Int2DFamily, CZtArray2DInt, int, "2DInt");
#undef ZT_FAMILY

// Every call of `calls` on an array without implementation raises `message`
// from the wrapper's member of the same name (the class's own name if empty).
template <class F>
void ExpectHollowCalls(const Calls& calls, const char* message) {
  const std::string cls = std::string("CZtArray") + F::Name;
  for (const auto& c : calls) {
    ExpectRaise(c.second, {{message, "Zt::" + cls + "::" + (*c.first ? c.first : cls.c_str()),
                            cls.substr(1)}});
  }
}

template <class A>
Values Contents(const A& array) {
  Values values;
  for (unsigned long long i = 0; i < array.Length(); ++i) {
    values.push_back(static_cast<long long>(array[i]));
  }
  return values;
}

// An array holding 1, 2, ..., n.
template <class F>
typename F::Array Counting(unsigned long long n) {
  typename F::Array array(n);
  for (unsigned long long i = 0; i < n; ++i) array[i] = static_cast<typename F::Elem>(i + 1);
  return array;
}

template <class F>
class NumericArray : public ::testing::Test {
protected:
  // A failure of the implementation, CZtArrayBase<T>.
  static ZtTest::Link BaseFailure(const char* message, const char* member) {
    return {message, std::string("Zt::CZtArrayBase<") + F::Type + ">::" + member,
            "source\\zt.core.ex\\ZtArrayBase"};
  }
};
using Families = ::testing::Types<DoubleFamily, IntFamily, UCharFamily, UIntFamily, UShortFamily>;
TYPED_TEST_SUITE(NumericArray, Families);

TYPED_TEST(NumericArray, ConstructorsAndChangesLeaveTheToldContents) {
  using A = typename TypeParam::Array;
  using T = typename TypeParam::Elem;
  const A empty;
  EXPECT_EQ(
      std::make_tuple(empty.Length(), empty.IsValid(), empty.GetDataPtr(), empty.GetElementSize()),
      std::make_tuple(0ull, true, static_cast<const T*>(nullptr), sizeof(T)));
  EXPECT_EQ(Contents(A(3)), (Values{0, 0, 0}));
  EXPECT_EQ(Contents(A(2, T(7))), (Values{7, 7}));
  EXPECT_EQ(Contents(A(0, T(7))), Values{});
  struct Case {
    std::function<void(IMemory&)> op;  // through the interface, unaware of the type
    Values expected;
    bool keepsStorage;  // the block's address stays
  } const cases[] = {
      {[](IMemory& m) { m.New(4); }, {0, 0, 0, 0}, true},
      {[](IMemory& m) { m.New(2); }, {0, 0}, true},
      {[](IMemory& m) { m.New(5); }, {0, 0, 0, 0, 0}, false},
      {[](IMemory& m) { m.Resize(6); }, {1, 2, 3, 4, 0, 0}, false},
      {[](IMemory& m) { m.Resize(2); }, {1, 2}, true},
      {[](IMemory& m) { m.Resize(1), m.Resize(3); }, {1, 0, 0}, true},
      {[](IMemory& m) { m.Reset(); }, {0, 0, 0, 0}, true},
      {[](IMemory& m) { m.Delete(); }, {}, true},
  };
  for (const Case& c : cases) {
    A array = Counting<TypeParam>(4);
    const void* before = array.GetPointer();
    c.op(array);
    EXPECT_EQ(Contents(array), c.expected) << &c - cases;
    EXPECT_TRUE(array.IsValid() && array.GetPointer() == array.GetDataPtr()) << &c - cases;
    EXPECT_TRUE(!c.keepsStorage || array.GetPointer() == before) << &c - cases;
  }
  // Lengths beyond the vector's pass through as length_error; New empties first.
  A array = Counting<TypeParam>(3);
  EXPECT_THROW(array.Resize(~0ull), std::length_error);
  EXPECT_EQ(Contents(array), (Values{1, 2, 3}));
  EXPECT_THROW(array.New(~0ull), std::length_error);
  EXPECT_EQ(array.Length(), 0u);
}

TYPED_TEST(NumericArray, IndexIsCheckedAgainstTheLengthInBothForms) {
  const auto outside = this->BaseFailure("Array index out of bounds", "operator []");
  for (unsigned long long length : {0ull, 5ull}) {
    typename TypeParam::Array array(length);
    const auto& constant = array;
    if (length > 0) {
      EXPECT_EQ(&array[length - 1], array.GetDataPtr() + length - 1);
      EXPECT_EQ(&constant[length - 1], array.GetDataPtr() + length - 1);
    }
    for (unsigned long long bad : {length, ~0ull}) {
      ExpectRaise([&] { (void)array[bad]; }, {outside});
      ExpectRaise([&] { (void)constant[bad]; }, {outside});
    }
  }
}

TYPED_TEST(NumericArray, CopiesAreDeepAndSelfCopiesChangeNothing) {
  using A = typename TypeParam::Array;
  const A source = Counting<TypeParam>(3);
  A copied(source), assigned(5), filled(9), self = Counting<TypeParam>(3);
  assigned = source;
  filled.CopyFrom(&source);
  for (A* target : {&copied, &assigned, &filled}) {
    EXPECT_EQ(Contents(*target), (Values{1, 2, 3}));
    EXPECT_NE(target->GetDataPtr(), source.GetDataPtr());
  }
  A& alias = self;
  self = alias;
  self.CopyFrom(&self);
  EXPECT_EQ(Contents(self), (Values{1, 2, 3}));
  // CopyFrom refuses a null source and another element width, unchanged.
  const std::conditional_t<sizeof(typename TypeParam::Elem) == 1, CZtArrayDouble, CZtArrayUChar>
      other(2);
  ExpectRaise([&] { self.CopyFrom(nullptr); },
              {this->BaseFailure("Invalid memory interface pointer", "CopyFrom")});
  ExpectRaise([&] { self.CopyFrom(&other); },
              {this->BaseFailure("Element sizes of memory blocks do not agree", "CopyFrom")});
  EXPECT_EQ(Contents(self), (Values{1, 2, 3}));
}

TYPED_TEST(NumericArray, AMissingImplementationIsReportedUnderTheWrappersNames) {
  using A = typename TypeParam::Array;
  ZtTest::Hollow<A> hollow;
  const A& constant = hollow;
  const A source(1);
  ExpectHollowCalls<TypeParam>({{"GetElementSize", [&] { (void)constant.GetElementSize(); }},
                                {"Length", [&] { (void)constant.Length(); }},
                                {"New", [&] { hollow.New(1); }},
                                {"Resize", [&] { hollow.Resize(1); }},
                                {"Delete", [&] { hollow.Delete(); }},
                                {"Reset", [&] { hollow.Reset(); }},
                                {"CopyFrom", [&] { hollow.CopyFrom(&source); }},
                                {"operator []", [&] { (void)hollow[0]; }},
                                {"operator []", [&] { (void)constant[0]; }},
                                {"GetDataPtr", [&] { (void)hollow.GetDataPtr(); }},
                                {"GetDataPtr", [&] { (void)constant.GetPointer(); }},
                                {"GetDataPtr", [&] { (void)hollow.GetPointer(); }},
                                {"", [&] { A copy(constant); }}},  // the copy constructor
                               "Nullptr --> Object not initialized");
  EXPECT_FALSE(hollow.IsValid());
}

TEST(NumericArrays, CopyFromComparesWidthsNotTypes) {
  CZtArrayUInt source(2, 0xFFFFFFFFu);
  CZtArrayInt target;
  target.CopyFrom(&source);
  EXPECT_EQ(Contents(target), (Values{-1, -1}));
  // Any memory of width 1 fills a byte array, a string among them.
  CZtArrayUChar bytes(7);
  bytes.CopyFrom(&static_cast<const IMemoryAccess&>(CZtString("abc")));
  EXPECT_EQ(Contents(bytes), (Values{'a', 'b', 'c'}));
  const CZtArrayUShort shorts(1);
  EXPECT_THROW(target.CopyFrom(&shorts), CZtException);
}

// Rows, columns, then the elements row by row.
template <class A>
Values ShapeOf(const A& array) {
  unsigned long long rows = 0, columns = 0;
  array.GetSize(rows, columns);
  Values shape{static_cast<long long>(rows), static_cast<long long>(columns)};
  for (unsigned long long r = 0; r < rows; ++r) {
    for (unsigned long long c = 0; c < columns; ++c)
      shape.push_back(static_cast<long long>(array(r, c)));
  }
  return shape;
}

// A rows x columns array holding 1, 2, 3, ... row by row.
template <class F>
typename F::Array Counting2D(unsigned long long rows, unsigned long long columns) {
  typename F::Array array(rows, columns);
  for (unsigned long long i = 0; i < rows * columns; ++i) {
    array.GetDataPtr()[i] = static_cast<typename F::Elem>(i + 1);
  }
  return array;
}

template <class F>
class TwoDimensionalArray : public ::testing::Test {};
using Families2D = ::testing::Types<Double2DFamily, Int2DFamily>;
TYPED_TEST_SUITE(TwoDimensionalArray, Families2D);

TYPED_TEST(TwoDimensionalArray, ElementAccessNeedsStorageAndIndicesInsideTheExtents) {
  using A = typename TypeParam::Array;
  const ZtTest::Link invalid{
      "Nullptr --> Array Data Invalid",
      std::string("Zt::CZtArray2DBase<") + TypeParam::Type + ">::operator ()",
      "source\\zt.core.ex\\ZtArray2DBase"};
  ZtTest::Link outside = invalid;
  outside.message = "Array index out of bounds";
  const A empty;
  EXPECT_EQ(ShapeOf(empty), (Values{0, 0}));
  EXPECT_EQ(std::make_tuple(empty.IsValid(), empty.GetDataPtr(), empty.GetElementSize()),
            std::make_tuple(false, static_cast<const typename TypeParam::Elem*>(nullptr),
                            sizeof(typename TypeParam::Elem)));
  ExpectRaise([&] { (void)empty(0, 0); }, {invalid});
  A array = Counting2D<TypeParam>(2, 3);
  EXPECT_EQ(ShapeOf(array), (Values{2, 3, 1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(&array(1, 2), array.GetDataPtr() + 5);
  ExpectRaise([&] { (void)array(2, 0); }, {outside});
  ExpectRaise([&] { (void)array(0, 3); }, {outside});
  // Delete keeps the storage: still valid, but nothing lies inside 0 by 0.
  array.Delete();
  EXPECT_TRUE(array.IsValid());
  ExpectRaise([&] { (void)array(0, 0); }, {outside});
  // Lengths beyond the vector's pass through as length_error.
  A resized = Counting2D<TypeParam>(2, 2), renewed = Counting2D<TypeParam>(2, 2);
  EXPECT_THROW(resized.Resize(~0ull, 2), std::length_error);
  EXPECT_THROW(renewed.New(~0ull / 2, 1), std::length_error);
}

TYPED_TEST(TwoDimensionalArray, CopiesAreDeepAndSelfAssignmentEmpties) {
  using A = typename TypeParam::Array;
  const ZtTest::ZtExpectedLeak leaks;  // an assignment leaves the replaced matrix allocated
  const A source = Counting2D<TypeParam>(2, 3);
  A copied(source), assigned(4, 4), filled(1, 1), self = Counting2D<TypeParam>(2, 2);
  assigned = source;
  filled.CopyFrom(&source);
  for (A* target : {&copied, &assigned, &filled}) {
    EXPECT_EQ(ShapeOf(*target), (Values{2, 3, 1, 2, 3, 4, 5, 6}));
    EXPECT_NE(target->GetDataPtr(), source.GetDataPtr());
  }
  A& alias = self;
  self = alias;
  EXPECT_EQ(ShapeOf(self), (Values{0, 0}));
  EXPECT_FALSE(self.IsValid());
}

TYPED_TEST(TwoDimensionalArray, AMissingImplementationIsReportedUnderTheWrappersNames) {
  using A = typename TypeParam::Array;
  ZtTest::Hollow<A> hollow;
  const A& constant = hollow;
  const A source(1, 1);
  unsigned long long rows = 0, columns = 0;
  ExpectHollowCalls<TypeParam>({{"GetElementSize", [&] { (void)constant.GetElementSize(); }},
                                {"GetSize", [&] { constant.GetSize(rows, columns); }},
                                {"New", [&] { hollow.New(1, 1); }},
                                {"Resize", [&] { hollow.Resize(1, 1); }},
                                {"Delete", [&] { hollow.Delete(); }},
                                {"Reset", [&] { hollow.Reset(); }},
                                {"CopyFrom", [&] { hollow.CopyFrom(&source); }},
                                {"operator ()", [&] { (void)hollow(0, 0); }},
                                {"operator ()", [&] { (void)constant(0, 0); }},
                                {"GetDataPtr", [&] { (void)hollow.GetDataPtr(); }},
                                {"GetDataPtr", [&] { (void)constant.GetPointer(); }},
                                {"GetDataPtr", [&] { (void)hollow.GetPointer(); }}},
                               "BaseRef is nullptr");
  EXPECT_FALSE(hollow.IsValid());
}

TEST(TwoDimensionalArrays, CopyFromRefusesAnotherElementWidth) {
  CZtArray2DDouble target(1, 2);
  const CZtArray2DInt narrow(3, 3);
  ExpectRaise([&] { target.CopyFrom(&narrow); },
              {{"cannot copy Memory2D, elementSize is different", "Zt::CZtMatrix<double>::CopyFrom",
                "source\\zt.core.math\\ZtMatrix"}});
  EXPECT_EQ(ShapeOf(target), (Values{1, 2, 0, 0}));
}

using Texts = std::vector<std::string>;

Texts TextsOf(const CZtArrayString& array) {
  Texts texts;
  for (unsigned long long i = 0; i < array.Length(); ++i) texts.emplace_back(array[i].ToCString());
  return texts;
}

ZtTest::Link StringFailure(const char* message, const char* member) {
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

TEST(CZtArrayString, ChangesKeepElementsAndTheirAddressesAndCopiesAreDeep) {
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
    ExpectRaise([&] { (void)array[bad]; },
                {StringFailure("Array index out of bounds", "operator []")});
    ExpectRaise([&] { (void)constant[bad]; },
                {StringFailure("Array index out of bounds", "operator []")});
  }
  const CZtArrayString source("one,two", ',');
  CZtArrayString copied(source), assigned("x,y,z", ','), invalid;
  assigned = source;
  for (CZtArrayString* target : {&copied, &assigned}) {
    EXPECT_EQ(TextsOf(*target), (Texts{"one", "two"}));
    EXPECT_NE(&(*target)[0], &source[0]);
  }
  invalid.Delete();  // copies of an invalid array are invalid
  EXPECT_FALSE(CZtArrayString(invalid).IsValid());
  assigned = invalid;
  EXPECT_FALSE(assigned.IsValid());
}

TEST(CZtArrayString, AnInvalidArrayRefusesAccessUntilNew) {
  const std::function<void(CZtArrayString&)> invalidations[] = {
      [](CZtArrayString& a) { a.Delete(); }, [](CZtArrayString& a) { a.Delete(), a.Delete(); },
      [](CZtArrayString& a) { a = *&a; }};  // assignment to itself destroys the contents first
  const auto invalid = [](const char* member) {
    return StringFailure("Nullptr --> Array Data Invalid", member);
  };
  for (const auto& invalidate : invalidations) {
    CZtArrayString array("a,b", ',');
    invalidate(array);
    const CZtArrayString& constant = array;
    EXPECT_FALSE(array.IsValid());
    EXPECT_EQ(array.Length(), 0u);
    ExpectRaise([&] { array.Reset(); }, {invalid("Reset")});
    ExpectRaise([&] { (void)array[0]; }, {invalid("operator []")});
    ExpectRaise([&] { (void)constant[0]; }, {invalid("operator []")});
    // Resize wraps its own refusal at once.
    ExpectRaise([&] { array.Resize(1); },
                {StringFailure("Error resizing Array", "Resize"), invalid("Resize")});
    array.New(2);
    EXPECT_EQ(TextsOf(array), (Texts{"", ""}));
  }
}

}  // namespace
