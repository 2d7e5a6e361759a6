#include <gtest/gtest.h>

#include <vector>

#include "ZtMatrix.h"

using Zt::CZtMatrix;
using Shape = std::vector<int>;

namespace {

// Rows, columns, then the elements in linear order.
template <class M>
Shape ShapeOf(const M& m) {
  unsigned long long rows = 0, columns = 0;
  m.GetSize(rows, columns);
  Shape shape{static_cast<int>(rows), static_cast<int>(columns)};
  const auto* data = static_cast<const int*>(m.GetPointer());
  shape.insert(shape.end(), data, data + rows * columns);
  return shape;
}

// A rows x columns matrix holding 1, 2, 3, ... in linear order.
void Count(CZtMatrix<int>& m, unsigned long long rows, unsigned long long columns) {
  m.New(rows, columns);
  for (unsigned long long i = 0; i < rows * columns; ++i) {
    static_cast<int*>(m.GetPointer())[i] = static_cast<int>(i + 1);
  }
}

TEST(CZtMatrix, NewKeepsLinearPlacesAndResizeKeepsRowAndColumn) {
  EXPECT_EQ(CZtMatrix<double>().Precision(), 1e-12);
  EXPECT_EQ(CZtMatrix<int>().Precision(), 0);
  struct Case {
    unsigned long long fromRows, fromColumns;
    bool resize;  // Resize, else New
    unsigned long long rows, columns;
    Shape expected;
  };
  const Case cases[] = {
      {2, 2, true, 3, 3, {3, 3, 1, 2, 0, 3, 4, 0, 0, 0, 0}},
      {2, 2, false, 3, 3, {3, 3, 1, 2, 3, 4, 0, 0, 0, 0, 0}},
      {3, 4, true, 2, 2, {2, 2, 1, 2, 5, 6}},
      {3, 4, false, 2, 2, {2, 2, 1, 2, 3, 4}},
      {2, 3, true, 3, 1, {3, 1, 1, 4, 0}},
      {2, 3, true, 2, 3, {2, 3, 1, 2, 3, 4, 5, 6}},
      {2, 2, true, 0, 5, {0, 0}},  // Resize makes both extents 0 ...
      {2, 2, true, 3, 0, {0, 0}},
      {2, 2, false, 0, 5, {0, 5}},  // ... where New keeps them
      {0, 5, true, 2, 3, {2, 3, 0, 0, 0, 0, 0, 0}},
  };
  for (const Case& c : cases) {
    CZtMatrix<int> m;
    Count(m, c.fromRows, c.fromColumns);
    c.resize ? m.Resize(c.rows, c.columns) : m.New(c.rows, c.columns);
    EXPECT_EQ(ShapeOf(m), c.expected)
        << c.fromRows << "x" << c.fromColumns << (c.resize ? " Resize " : " New ") << c.rows << "x"
        << c.columns;
  }
}

TEST(CZtMatrix, ValidityFollowsStorageNotExtents) {
  CZtMatrix<int> m;
  EXPECT_FALSE(m.IsValid());
  m.Reset();  // 0 by 0: nothing to clear
  m.New(0, 3);
  EXPECT_FALSE(m.IsValid());
  Count(m, 2, 3);
  const void* storage = m.GetPointer();
  m.Reset();
  EXPECT_EQ(ShapeOf(m), (Shape{2, 3, 0, 0, 0, 0, 0, 0}));
  m.Delete();
  EXPECT_EQ(ShapeOf(m), (Shape{0, 0}));
  EXPECT_TRUE(m.IsValid());
  EXPECT_EQ(m.GetPointer(), storage);
}

TEST(CZtMatrix, CopyFromTakesExtentsAndBytesAlsoFromItselfAndFromNothing) {
  CZtMatrix<int> source;
  Count(source, 2, 3);
  const CZtMatrix<int> empty;
  CZtMatrix<int> target;
  Count(target, 4, 4);
  target.CopyFrom(&source);
  EXPECT_EQ(ShapeOf(target), (Shape{2, 3, 1, 2, 3, 4, 5, 6}));
  target.CopyFrom(&target);
  EXPECT_EQ(ShapeOf(target), (Shape{2, 3, 1, 2, 3, 4, 5, 6}));
  target.CopyFrom(&empty);
  EXPECT_EQ(ShapeOf(target), (Shape{0, 0}));
}

}  // namespace
