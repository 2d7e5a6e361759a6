#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ZtAllocFail.h"
#include "ZtArray2DBase.h"
#include "ZtException.h"
#include "ZtMatrix.h"

using Zt::CZtArray2DBase;
using Zt::CZtException;
using Zt::CZtMatrix;
using Zt::IMemory2DAccess;

namespace {

// Extents and elements in linear order.
struct Shape {
  unsigned long long rows;
  unsigned long long columns;
  std::vector<int> elements;
  bool operator==(const Shape& o) const {
    return rows == o.rows && columns == o.columns && elements == o.elements;
  }
};
std::ostream& operator<<(std::ostream& out, const Shape& s) {
  out << s.rows << "x" << s.columns << " [";
  for (int e : s.elements) {
    out << " " << e;
  }
  return out << " ]";
}

template <class M>
Shape ShapeOf(const M& m) {
  Shape s{};
  m.GetSize(s.rows, s.columns);
  const auto* data = static_cast<const int*>(m.GetPointer());
  for (unsigned long long i = 0; i < s.rows * s.columns; ++i) {
    s.elements.push_back(data[i]);
  }
  return s;
}

// A rows x columns matrix holding 1, 2, 3, ... in linear order.
void Count(CZtMatrix<int>& m, unsigned long long rows, unsigned long long columns) {
  m.New(rows, columns);
  for (unsigned long long i = 0; i < rows * columns; ++i) {
    static_cast<int*>(m.GetPointer())[i] = static_cast<int>(i + 1);
  }
}

TEST(CZtValuePrecision, FollowsTheElementType) {
  EXPECT_EQ(CZtMatrix<double>().Precision(), 1e-12);
  EXPECT_EQ(CZtMatrix<int>().Precision(), 0);
}

TEST(CZtMatrix, NewKeepsLinearPlacesAndResizeKeepsRowAndColumn) {
  struct Case {
    const char* name;
    unsigned long long fromRows, fromColumns;
    bool resize;  // Resize, else New
    unsigned long long rows, columns;
    Shape expected;
  };
  const Case cases[] = {
      {"Resize 2x2 to 3x3", 2, 2, true, 3, 3, {3, 3, {1, 2, 0, 3, 4, 0, 0, 0, 0}}},
      {"New 2x2 to 3x3", 2, 2, false, 3, 3, {3, 3, {1, 2, 3, 4, 0, 0, 0, 0, 0}}},
      {"Resize 3x4 to 2x2", 3, 4, true, 2, 2, {2, 2, {1, 2, 5, 6}}},
      {"New 3x4 to 2x2", 3, 4, false, 2, 2, {2, 2, {1, 2, 3, 4}}},
      {"Resize 2x2 to 1x4", 2, 2, true, 1, 4, {1, 4, {1, 2, 0, 0}}},
      {"Resize 2x3 to 3x1", 2, 3, true, 3, 1, {3, 1, {1, 4, 0}}},
      {"Resize to the same extents", 2, 3, true, 2, 3, {2, 3, {1, 2, 3, 4, 5, 6}}},
      {"Resize to 0 rows", 2, 2, true, 0, 5, {0, 0, {}}},
      {"Resize to 0 columns", 2, 2, true, 3, 0, {0, 0, {}}},
      {"New to 0 rows", 2, 2, false, 0, 5, {0, 5, {}}},
      {"Resize from 0x5", 0, 5, true, 2, 3, {2, 3, {0, 0, 0, 0, 0, 0}}},
      {"Resize from 0x0", 0, 0, true, 1, 2, {1, 2, {0, 0}}},
  };
  for (const Case& c : cases) {
    CZtMatrix<int> m;
    Count(m, c.fromRows, c.fromColumns);
    if (c.resize) {
      m.Resize(c.rows, c.columns);
    } else {
      m.New(c.rows, c.columns);
    }
    EXPECT_EQ(ShapeOf(m), c.expected) << c.name;
    EXPECT_EQ(m.Rows(), c.expected.rows) << c.name;
    EXPECT_EQ(m.Columns(), c.expected.columns) << c.name;
    EXPECT_EQ(m.GetPointer(), static_cast<const void*>(m.Data())) << c.name;
  }
}

TEST(CZtMatrix, ValidityFollowsStorageNotExtents) {
  CZtMatrix<int> m;
  EXPECT_FALSE(m.IsValid());
  EXPECT_EQ(m.GetPointer(), nullptr);
  m.Reset();  // 0 by 0: nothing to clear
  m.New(0, 3);
  EXPECT_FALSE(m.IsValid());
  Count(m, 2, 3);
  EXPECT_TRUE(m.IsValid());
  const void* storage = m.GetPointer();
  m.Reset();
  EXPECT_EQ(ShapeOf(m), (Shape{2, 3, {0, 0, 0, 0, 0, 0}}));
  m.Delete();
  EXPECT_EQ(ShapeOf(m), (Shape{0, 0, {}}));
  EXPECT_TRUE(m.IsValid());
  EXPECT_EQ(m.GetPointer(), storage);
}

TEST(CZtMatrix, CopyFromTakesExtentsAndBytesOfItsWidthOnly) {
  CZtMatrix<int> source;
  Count(source, 2, 3);
  CZtMatrix<int> empty;
  struct Case {
    const IMemory2DAccess* source;
    Shape expected;
  };
  for (const Case& c : {Case{&source, {2, 3, {1, 2, 3, 4, 5, 6}}}, Case{&empty, {0, 0, {}}}}) {
    CZtMatrix<int> target;
    Count(target, 4, 4);
    target.CopyFrom(c.source);
    EXPECT_EQ(ShapeOf(target), c.expected);
  }
  CZtMatrix<int> self;
  Count(self, 2, 2);
  self.CopyFrom(&self);
  EXPECT_EQ(ShapeOf(self), (Shape{2, 2, {1, 2, 3, 4}}));

  CZtMatrix<double> wide;
  wide.New(1, 1);
  CZtMatrix<int> target;
  Count(target, 1, 2);
  try {
    target.CopyFrom(&wide);
    ADD_FAILURE() << "a double matrix was copied into an int one";
  } catch (CZtException& e) {
    EXPECT_STREQ(e.GetMessageText(), "cannot copy Memory2D, elementSize is different");
    EXPECT_STREQ(e.GetFunction(), "Zt::CZtMatrix<int>::CopyFrom");
    EXPECT_STREQ(e.GetFile(), "source\\zt.core.math\\ZtMatrix");
  }
  EXPECT_EQ(ShapeOf(target), (Shape{1, 2, {1, 2}}));
}

TEST(CZtArray2DBase, ElementAccessChecksStorageFirstThenEachExtent) {
  struct Case {
    unsigned long long rows, columns;  // extents made with New
    bool deleted;                      // then Delete, which keeps the storage
    unsigned long long row, column;
    const char* failure;               // null: the access succeeds
  };
  const char* const invalid = "Nullptr --> Array Data Invalid";
  const char* const outside = "Array index out of bounds";
  const Case cases[] = {
      {0, 0, false, 0, 0, invalid}, {0, 4, false, 0, 0, invalid}, {2, 3, true, 0, 0, outside},
      {2, 3, false, 2, 0, outside}, {2, 3, false, 0, 3, outside}, {2, 3, false, ~0ull, 0, outside},
      {2, 3, false, 1, 2, nullptr}, {2, 3, false, 0, 0, nullptr},
  };
  for (const Case& c : cases) {
    CZtArray2DBase<double> array(c.rows, c.columns);
    if (c.deleted) {
      array.Delete();
    }
    const CZtArray2DBase<double>& constant = array;
    for (int form = 0; form < 2; ++form) {
      try {
        const double* element = form == 0 ? &array(c.row, c.column) : &constant(c.row, c.column);
        EXPECT_EQ(c.failure, nullptr) << c.row << "," << c.column;
        EXPECT_EQ(element, static_cast<const double*>(array.GetPointer()) + c.row * c.columns +
                               c.column);
      } catch (CZtException& e) {
        ASSERT_NE(c.failure, nullptr) << e.GetMessageText();
        EXPECT_STREQ(e.GetMessageText(), c.failure);
        EXPECT_STREQ(e.GetFunction(), "Zt::CZtArray2DBase<double>::operator ()");
        EXPECT_STREQ(e.GetFile(), "source\\zt.core.ex\\ZtArray2DBase");
      }
    }
  }
}

TEST(CZtArray2DBase, AssignmentCopiesIntoANewMatrixSoSelfAssignmentEmpties) {
  // Each assignment leaves the replaced matrix allocated for good.
  const ZtTest::ZtExpectedLeak leaks;
  CZtArray2DBase<int> source(2, 2);
  for (unsigned long long i = 0; i < 4; ++i) {
    static_cast<int*>(source.GetPointer())[i] = static_cast<int>(10 + i);
  }
  CZtArray2DBase<int> target(5, 5);
  target = source;
  EXPECT_EQ(ShapeOf(target), (Shape{2, 2, {10, 11, 12, 13}}));
  EXPECT_NE(target.GetPointer(), source.GetPointer());

  CZtArray2DBase<int>& alias = source;
  source = alias;
  EXPECT_EQ(ShapeOf(source), (Shape{0, 0, {}}));
  EXPECT_FALSE(source.IsValid());
}

}  // namespace
