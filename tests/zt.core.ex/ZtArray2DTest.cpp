#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "ZtAllocFail.h"
#include "ZtCoreEx.h"

using Zt::CZtException;
using Zt::IMemory2D;
using Zt::IMemory2DAccess;

namespace {

template <class A, class T>
struct Family {
  using Array = A;
  using Elem = T;
};
struct DoubleFamily : Family<Zt::CZtArray2DDouble, double> {
  static constexpr const char* Class = "CZtArray2DDouble";
  static constexpr const char* Type = "double";
};
struct IntFamily : Family<Zt::CZtArray2DInt, int> {
  static constexpr const char* Class = "CZtArray2DInt";
  static constexpr const char* Type = "int";
};

// Extents and elements in linear order.
struct Shape {
  unsigned long long rows;
  unsigned long long columns;
  std::vector<long long> elements;
  bool operator==(const Shape& o) const {
    return rows == o.rows && columns == o.columns && elements == o.elements;
  }
};
std::ostream& operator<<(std::ostream& out, const Shape& s) {
  out << s.rows << "x" << s.columns << " [";
  for (long long e : s.elements) {
    out << " " << e;
  }
  return out << " ]";
}

template <class A>
Shape ShapeOf(const A& array) {
  Shape s{};
  array.GetSize(s.rows, s.columns);
  for (unsigned long long r = 0; r < s.rows; ++r) {
    for (unsigned long long c = 0; c < s.columns; ++c) {
      s.elements.push_back(static_cast<long long>(array(r, c)));
    }
  }
  return s;
}

// A rows x columns array holding 1, 2, 3, ... row by row.
template <class F>
typename F::Array Counting(unsigned long long rows, unsigned long long columns) {
  typename F::Array array(rows, columns);
  for (unsigned long long i = 0; i < rows * columns; ++i) {
    array.GetDataPtr()[i] = static_cast<typename F::Elem>(i + 1);
  }
  return array;
}

void ExpectFailure(const std::function<void()>& op, const std::string& message,
                   const std::string& file, const std::string& function) {
  try {
    op();
    ADD_FAILURE() << "no failure, expected: " << message;
  } catch (CZtException& e) {
    EXPECT_EQ(message, e.GetMessageText());
    EXPECT_EQ(file, e.GetFile());
    EXPECT_EQ(function, e.GetFunction());
  }
}

// An array that has lost its implementation object; it is handed back
// before destruction.
template <class F>
class Hollow : public F::Array {
public:
  Hollow() : F::Array(2, 2), m_pSaved(this->m_pBaseRef) { this->m_pBaseRef = nullptr; }
  ~Hollow() override { this->m_pBaseRef = m_pSaved; }

private:
  Zt::CZtArray2DBase<typename F::Elem>* m_pSaved;
};

template <class F>
class TwoDimensionalArray : public ::testing::Test {};
using Families = ::testing::Types<DoubleFamily, IntFamily>;
TYPED_TEST_SUITE(TwoDimensionalArray, Families);

TYPED_TEST(TwoDimensionalArray, ANewEmptyArrayHasNoStorageAndIsNotValid) {
  using A = typename TypeParam::Array;
  const A empty;
  EXPECT_EQ(ShapeOf(empty), (Shape{0, 0, {}}));
  EXPECT_FALSE(empty.IsValid());
  EXPECT_EQ(empty.GetDataPtr(), nullptr);
  EXPECT_EQ(empty.GetPointer(), nullptr);
  EXPECT_EQ(empty.GetElementSize(), sizeof(typename TypeParam::Elem));
  const std::string function =
      std::string("Zt::CZtArray2DBase<") + TypeParam::Type + ">::operator ()";
  ExpectFailure([&] { (void)empty(0, 0); }, "Nullptr --> Array Data Invalid",
                "source\\zt.core.ex\\ZtArray2DBase", function);

  const A zeros(2, 3);
  EXPECT_EQ(ShapeOf(zeros), (Shape{2, 3, {0, 0, 0, 0, 0, 0}}));
  EXPECT_TRUE(zeros.IsValid());
  EXPECT_EQ(&zeros(1, 2), zeros.GetDataPtr() + 5);
  ExpectFailure([&] { (void)zeros(2, 0); }, "Array index out of bounds",
                "source\\zt.core.ex\\ZtArray2DBase", function);
}

TYPED_TEST(TwoDimensionalArray, OperationsThroughTheInterface) {
  using A = typename TypeParam::Array;
  struct Case {
    const char* name;
    std::function<void(IMemory2D&)> op;
    Shape expected;
  };
  const Case cases[] = {
      {"Resize", [](IMemory2D& m) { m.Resize(3, 3); }, {3, 3, {1, 2, 0, 3, 4, 0, 0, 0, 0}}},
      {"New", [](IMemory2D& m) { m.New(3, 3); }, {3, 3, {1, 2, 3, 4, 0, 0, 0, 0, 0}}},
      {"Reset", [](IMemory2D& m) { m.Reset(); }, {2, 2, {0, 0, 0, 0}}},
      {"Delete", [](IMemory2D& m) { m.Delete(); }, {0, 0, {}}},
  };
  for (const Case& c : cases) {
    A array = Counting<TypeParam>(2, 2);
    c.op(array);
    EXPECT_EQ(ShapeOf(array), c.expected) << c.name;
    EXPECT_TRUE(array.IsValid()) << c.name;  // storage is kept in every case
  }
}

TYPED_TEST(TwoDimensionalArray, CopiesAreDeepAndSelfAssignmentEmpties) {
  using A = typename TypeParam::Array;
  // Each copy and assignment leaves the replaced matrix allocated for good.
  const ZtTest::ZtExpectedLeak leaks;
  const A source = Counting<TypeParam>(2, 3);
  A copied(source);
  A assigned(4, 4);
  assigned = source;
  A filled(1, 1);
  filled.CopyFrom(&source);
  for (A* target : {&copied, &assigned, &filled}) {
    EXPECT_EQ(ShapeOf(*target), (Shape{2, 3, {1, 2, 3, 4, 5, 6}}));
    EXPECT_NE(target->GetDataPtr(), source.GetDataPtr());
    (*target)(0, 0) = 9;
  }
  EXPECT_EQ(ShapeOf(source), (Shape{2, 3, {1, 2, 3, 4, 5, 6}}));

  A self = Counting<TypeParam>(2, 2);
  A& alias = self;
  self = alias;
  EXPECT_EQ(ShapeOf(self), (Shape{0, 0, {}}));
  EXPECT_FALSE(self.IsValid());
}

TYPED_TEST(TwoDimensionalArray, AMissingImplementationIsReportedUnderTheWrappersNames) {
  using A = typename TypeParam::Array;
  const std::string prefix = std::string("Zt::") + TypeParam::Class + "::";
  const std::string file = std::string(TypeParam::Class).substr(1);  // "ZtArray2DDouble"
  Hollow<TypeParam> hollow;
  const A& constant = hollow;
  const A source(1, 1);
  unsigned long long rows = 0, columns = 0;
  struct Case {
    const char* function;
    std::function<void()> op;
  };
  const Case cases[] = {
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
      {"GetDataPtr", [&] { (void)constant.GetDataPtr(); }},
      {"GetDataPtr", [&] { (void)hollow.GetPointer(); }},
      {"GetDataPtr", [&] { (void)constant.GetPointer(); }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.function);
    ExpectFailure(c.op, "BaseRef is nullptr", file, prefix + c.function);
  }
  EXPECT_FALSE(hollow.IsValid());
}

TYPED_TEST(TwoDimensionalArray, LengthsBeyondTheVectorPassThroughAsLengthError) {
  using A = typename TypeParam::Array;
  A array = Counting<TypeParam>(2, 2);
  EXPECT_THROW(array.Resize(~0ull, 2), std::length_error);
  A other = Counting<TypeParam>(2, 2);
  EXPECT_THROW(other.New(~0ull / 2, 1), std::length_error);
  EXPECT_THROW(A(1, ~0ull / 2), std::length_error);
}

TEST(TwoDimensionalArrays, CopyFromRefusesAnotherElementWidth) {
  Zt::CZtArray2DDouble target(1, 2);
  target(0, 1) = 2.5;
  const Zt::CZtArray2DInt narrow(3, 3);
  ExpectFailure([&] { target.CopyFrom(&narrow); }, "cannot copy Memory2D, elementSize is different",
                "source\\zt.core.math\\ZtMatrix", "Zt::CZtMatrix<double>::CopyFrom");
  EXPECT_EQ(ShapeOf(target), (Shape{1, 2, {0, 2}}));
}

}  // namespace
