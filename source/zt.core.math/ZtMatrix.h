#ifndef ZT_MATH_ZTMATRIX_H
#define ZT_MATH_ZTMATRIX_H

// Internal: the matrix under the two-dimensional arrays. Never included by a
// public header.

#include <type_traits>
#include <vector>

#include "ZtInterop.h"

namespace Zt {

// The precision that goes with an element type: 1e-12 for floating point,
// 0 for integers. Carried for users of the matrix; nothing here reads it.
template <class T>
class CZtValuePrecision {
public:
  CZtValuePrecision() : m_Precision(std::is_integral<T>::value ? T(0) : static_cast<T>(1e-12)) {}

  T Precision() const { return m_Precision; }

protected:
  T m_Precision;
};

// Extents and element address of a matrix stored row by row: element (row,
// column) lies at index row * Columns() + column.
template <class T>
class CZtMatrixBase : public CZtValuePrecision<T> {
public:
  CZtMatrixBase() : m_Rows(0), m_Columns(0), m_pData(nullptr) {}
  CZtMatrixBase(const CZtMatrixBase&) = delete;
  CZtMatrixBase& operator=(const CZtMatrixBase&) = delete;
  virtual ~CZtMatrixBase() = default;

  unsigned long long Rows() const { return m_Rows; }
  unsigned long long Columns() const { return m_Columns; }
  // The first element; null while the matrix has never had storage.
  T* Data() const { return m_pData; }

protected:
  unsigned long long m_Rows;
  unsigned long long m_Columns;
  T* m_pData;
};

// A matrix whose elements a std::vector owns. Storage only grows: shrinking
// keeps it, so the matrix stays valid once it has had elements.
template <class T>
class CZtMatrix : public CZtMatrixBase<T>, public IMemory2D {
public:
  static constexpr const char* ZtSourceFile = "source\\zt.core.math\\ZtMatrix";

  CZtMatrix() = default;
  ~CZtMatrix() override;

  // Takes the extents as they are, also when only one is 0, and resizes the
  // storage to their product, keeping the old contents in linear order.
  void SetDimensions(unsigned long long rows, unsigned long long columns);

  unsigned long long GetElementSize() const override;
  void GetSize(unsigned long long& rows, unsigned long long& columns) const override;
  const void* GetPointer() const override;
  // True once the matrix has storage.
  bool IsValid() const override;
  // Is SetDimensions: old elements keep their linear place.
  void New(unsigned long long rows, unsigned long long columns) override;
  // Keeps each element at its row and column; new ones are zero. An extent
  // of 0 makes both 0.
  void Resize(unsigned long long rows, unsigned long long columns) override;
  // Extents 0 and 0; storage kept.
  void Delete() override;
  // Zero bytes over Rows() x Columns() elements.
  void Reset() override;
  // Extents and contents of a source of the same element width, in one copy.
  void CopyFrom(const IMemory2DAccess* source) override;
  void* GetPointer() override;

private:
  std::vector<T> m_Vector;
};

extern template class CZtMatrix<double>;
extern template class CZtMatrix<int>;

}  // namespace Zt

#endif
