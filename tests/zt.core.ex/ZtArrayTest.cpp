#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "ZtAllocFail.h"
#include "ZtChain.h"
#include "ZtCoreEx.h"
#include "ZtHollowArray.h"

using Zt::IMemory;
using Zt::IMemoryAccess;
using ZtTest::ExpectRaise;
using Values = std::vector<long long>;

namespace {

// The numeric arrays, with what their failures must name, written out here
// rather than taken from the library.
template <class A, class T>
struct Family {
  using Array = A;
  using Elem = T;
};
struct DoubleFamily : Family<Zt::CZtArrayDouble, double> {
  static constexpr const char *Name = "Double", *Type = "double";
};
struct IntFamily : Family<Zt::CZtArrayInt, int> {
  static constexpr const char *Name = "Int", *Type = "int";
};
struct UCharFamily : Family<Zt::CZtArrayUChar, unsigned char> {
  static constexpr const char *Name = "UChar", *Type = "unsigned char";
};
struct UIntFamily : Family<Zt::CZtArrayUInt, unsigned int> {
  static constexpr const char *Name = "UInt", *Type = "unsigned int";
};
struct UShortFamily : Family<Zt::CZtArrayUShort, unsigned short> {
  static constexpr const char *Name = "UShort", *Type = "unsigned short";
};

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
  for (unsigned long long i = 0; i < n; ++i) {
    array[i] = static_cast<typename F::Elem>(i + 1);
  }
  return array;
}

struct Double2DFamily : Family<Zt::CZtArray2DDouble, double> {
  static constexpr const char *Name = "2DDouble", *Type = "double";
};
struct Int2DFamily : Family<Zt::CZtArray2DInt, int> {
  static constexpr const char *Name = "2DInt", *Type = "int";
};

template <class F>
class NumericArray : public ::testing::Test {
protected:
  // A failure of the implementation, CZtArrayBase<T>.
  static ZtTest::Link BaseFailure(const std::string& message, const char* member,
                                  bool outOfMemory = false) {
    return {message, std::string("Zt::CZtArrayBase<") + F::Type + ">::" + member,
            "source\\zt.core.ex\\ZtArrayBase", outOfMemory};
  }
};
using Families = ::testing::Types<DoubleFamily, IntFamily, UCharFamily, UIntFamily, UShortFamily>;
TYPED_TEST_SUITE(NumericArray, Families);

TYPED_TEST(NumericArray, ConstructorsAndChangesLeaveTheToldContents) {
  using A = typename TypeParam::Array;
  using T = typename TypeParam::Elem;
  const A empty;
  EXPECT_EQ(empty.Length(), 0u);
  EXPECT_TRUE(empty.IsValid());
  EXPECT_EQ(empty.GetDataPtr(), nullptr);
  EXPECT_EQ(empty.GetElementSize(), sizeof(T));
  EXPECT_EQ(Contents(A(3)), (Values{0, 0, 0}));
  EXPECT_EQ(Contents(A(2, T(7))), (Values{7, 7}));
  EXPECT_EQ(Contents(A(0, T(7))), Values{});

  struct Case {
    const char* name;
    std::function<void(IMemory&)> op;
    Values expected;
    bool keepsStorage;  // the block's address stays
  };
  const Case cases[] = {
      {"New same length", [](IMemory& m) { m.New(4); }, {0, 0, 0, 0}, true},
      {"New shorter", [](IMemory& m) { m.New(2); }, {0, 0}, true},
      {"New longer", [](IMemory& m) { m.New(5); }, {0, 0, 0, 0, 0}, false},
      {"Resize longer", [](IMemory& m) { m.Resize(6); }, {1, 2, 3, 4, 0, 0}, false},
      {"Resize shorter", [](IMemory& m) { m.Resize(2); }, {1, 2}, true},
      {"Resize shorter, then longer",
       [](IMemory& m) {
         m.Resize(1);
         m.Resize(3);
       },
       {1, 0, 0},
       true},
      {"Reset", [](IMemory& m) { m.Reset(); }, {0, 0, 0, 0}, true},
      {"Delete", [](IMemory& m) { m.Delete(); }, {}, true},
  };
  for (const Case& c : cases) {
    A array = Counting<TypeParam>(4);
    const void* before = array.GetPointer();
    c.op(array);  // through the interface, as a caller unaware of the type
    EXPECT_EQ(Contents(array), c.expected) << c.name;
    EXPECT_TRUE(array.IsValid()) << c.name;
    EXPECT_EQ(array.GetPointer(), array.GetDataPtr()) << c.name;
    if (c.keepsStorage) {
      EXPECT_EQ(array.GetPointer(), before) << c.name;
    }
  }
}

TYPED_TEST(NumericArray, IndexIsCheckedAgainstTheLengthInBothForms) {
  using A = typename TypeParam::Array;
  const auto outside = this->BaseFailure("Array index out of bounds", "operator []");
  for (unsigned long long length : {0ull, 5ull}) {
    A array(length);
    const A& constant = array;
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
  A copied(source);
  A assigned(5);
  assigned = source;
  A filled(9);
  filled.CopyFrom(&source);
  for (A* target : {&copied, &assigned, &filled}) {
    EXPECT_EQ(Contents(*target), (Values{1, 2, 3}));
    EXPECT_NE(target->GetDataPtr(), source.GetDataPtr());
  }
  A self = Counting<TypeParam>(3);
  A& alias = self;
  self = alias;
  self.CopyFrom(&self);
  EXPECT_EQ(Contents(self), (Values{1, 2, 3}));

  // CopyFrom refuses a null source and another element width, unchanged.
  const Zt::CZtArrayDouble wide(2);
  const Zt::CZtArrayUChar narrow(2);
  const IMemoryAccess* other = sizeof(typename TypeParam::Elem) == 1
                                   ? static_cast<const IMemoryAccess*>(&wide)
                                   : static_cast<const IMemoryAccess*>(&narrow);
  ExpectRaise([&] { self.CopyFrom(nullptr); },
              {this->BaseFailure("Invalid memory interface pointer", "CopyFrom")});
  ExpectRaise([&] { self.CopyFrom(other); },
              {this->BaseFailure("Element sizes of memory blocks do not agree", "CopyFrom")});
  EXPECT_EQ(Contents(self), (Values{1, 2, 3}));
}

TYPED_TEST(NumericArray, AMissingImplementationIsReportedUnderTheWrappersNames) {
  using A = typename TypeParam::Array;
  ZtTest::Hollow<A> hollow;
  const A& constant = hollow;
  const A source(1);
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"GetElementSize", [&] { (void)constant.GetElementSize(); }},
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
      {"", [&] { A copy(constant); }},  // the copy constructor
  };
  const std::string cls = std::string("CZtArray") + TypeParam::Name;
  for (const auto& c : cases) {
    const std::string member = *c.first ? c.first : cls;
    ExpectRaise(c.second, {{"Nullptr --> Object not initialized", "Zt::" + cls + "::" + member,
                            cls.substr(1)}});
  }
  EXPECT_FALSE(hollow.IsValid());
}

TYPED_TEST(NumericArray, LengthsBeyondTheVectorPassThroughAsLengthError) {
  using A = typename TypeParam::Array;
  A array = Counting<TypeParam>(3);
  EXPECT_THROW(array.Resize(~0ull), std::length_error);
  EXPECT_EQ(Contents(array), (Values{1, 2, 3}));
  EXPECT_THROW(array.New(~0ull), std::length_error);
  EXPECT_EQ(array.Length(), 0u);  // New empties before it grows
}

TEST(NumericArrays, CopyFromComparesWidthsNotTypes) {
  Zt::CZtArrayUInt source(2, 0xFFFFFFFFu);
  Zt::CZtArrayInt target;
  target.CopyFrom(&source);
  EXPECT_EQ(Contents(target), (Values{-1, -1}));
  // Any memory of width 1 fills a byte array, a string among them.
  const Zt::CZtString text("abc");
  Zt::CZtArrayUChar bytes(7);
  bytes.CopyFrom(&text);
  EXPECT_EQ(Contents(bytes), (Values{'a', 'b', 'c'}));
  const Zt::CZtArrayUShort shorts(1);
  EXPECT_THROW(target.CopyFrom(&shorts), Zt::CZtException);
}

// --- Two-dimensional arrays ------------------------------------------------

// Rows, columns, then the elements row by row.
template <class A>
Values ShapeOf(const A& array) {
  unsigned long long rows = 0, columns = 0;
  array.GetSize(rows, columns);
  Values shape{static_cast<long long>(rows), static_cast<long long>(columns)};
  for (unsigned long long r = 0; r < rows; ++r) {
    for (unsigned long long c = 0; c < columns; ++c) {
      shape.push_back(static_cast<long long>(array(r, c)));
    }
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
  const std::string function =
      std::string("Zt::CZtArray2DBase<") + TypeParam::Type + ">::operator ()";
  const char* const file = "source\\zt.core.ex\\ZtArray2DBase";
  const A empty;
  EXPECT_EQ(ShapeOf(empty), (Values{0, 0}));
  EXPECT_FALSE(empty.IsValid());
  EXPECT_EQ(empty.GetDataPtr(), nullptr);
  EXPECT_EQ(empty.GetElementSize(), sizeof(typename TypeParam::Elem));
  ExpectRaise([&] { (void)empty(0, 0); }, {{"Nullptr --> Array Data Invalid", function, file}});

  A array = Counting2D<TypeParam>(2, 3);
  EXPECT_EQ(ShapeOf(array), (Values{2, 3, 1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(&array(1, 2), array.GetDataPtr() + 5);
  ExpectRaise([&] { (void)array(2, 0); }, {{"Array index out of bounds", function, file}});
  ExpectRaise([&] { (void)array(0, 3); }, {{"Array index out of bounds", function, file}});
  // Delete keeps the storage: still valid, but nothing lies inside 0 by 0.
  array.Delete();
  EXPECT_TRUE(array.IsValid());
  ExpectRaise([&] { (void)array(0, 0); }, {{"Array index out of bounds", function, file}});
}

TYPED_TEST(TwoDimensionalArray, CopiesAreDeepAndSelfAssignmentEmpties) {
  using A = typename TypeParam::Array;
  // Each copy and assignment leaves the replaced matrix allocated for good.
  const ZtTest::ZtExpectedLeak leaks;
  const A source = Counting2D<TypeParam>(2, 3);
  A copied(source);
  A assigned(4, 4);
  assigned = source;
  A filled(1, 1);
  filled.CopyFrom(&source);
  for (A* target : {&copied, &assigned, &filled}) {
    EXPECT_EQ(ShapeOf(*target), (Values{2, 3, 1, 2, 3, 4, 5, 6}));
    EXPECT_NE(target->GetDataPtr(), source.GetDataPtr());
  }
  A self = Counting2D<TypeParam>(2, 2);
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
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"GetElementSize", [&] { (void)constant.GetElementSize(); }},
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
      {"GetDataPtr", [&] { (void)hollow.GetPointer(); }},
  };
  const std::string cls = std::string("CZtArray") + TypeParam::Name;
  for (const auto& c : cases) {
    ExpectRaise(c.second, {{"BaseRef is nullptr", "Zt::" + cls + "::" + c.first, cls.substr(1)}});
  }
  EXPECT_FALSE(hollow.IsValid());
}

TYPED_TEST(TwoDimensionalArray, LengthsBeyondTheVectorPassThroughAsLengthError) {
  using A = typename TypeParam::Array;
  A resized = Counting2D<TypeParam>(2, 2);
  EXPECT_THROW(resized.Resize(~0ull, 2), std::length_error);
  A renewed = Counting2D<TypeParam>(2, 2);
  EXPECT_THROW(renewed.New(~0ull / 2, 1), std::length_error);
}

TEST(TwoDimensionalArrays, CopyFromRefusesAnotherElementWidth) {
  Zt::CZtArray2DDouble target(1, 2);
  const Zt::CZtArray2DInt narrow(3, 3);
  ExpectRaise([&] { target.CopyFrom(&narrow); },
              {{"cannot copy Memory2D, elementSize is different", "Zt::CZtMatrix<double>::CopyFrom",
                "source\\zt.core.math\\ZtMatrix"}});
  EXPECT_EQ(ShapeOf(target), (Values{1, 2, 0, 0}));
}

}  // namespace
