#include "ZtMatrix.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "ZtRaise.h"

namespace Zt {

namespace {
template <class T>
std::string Name(const char* member) {
  return Detail::ZtMemberName<T>("CZtMatrix", member);
}
}  // namespace

template <class T>
CZtMatrix<T>::~CZtMatrix() = default;

template <class T>
void CZtMatrix<T>::SetDimensions(unsigned long long rows, unsigned long long columns) {
  // Only failures of the family are caught here: the vector's std::bad_alloc
  // and std::length_error leave as they are, with the new extents stored.
  try {
    this->m_Rows = rows;
    this->m_Columns = columns;
    m_Vector.resize(rows * columns);
    this->m_pData = m_Vector.data();
  } catch (CIException& e) {
    this->m_Rows = 0;
    this->m_Columns = 0;
    ZT_WRAP(Name<T>("SetDimensions"), "Error resizing matrix", e);
  }
}

template <class T>
unsigned long long CZtMatrix<T>::GetElementSize() const {
  return sizeof(T);
}

template <class T>
void CZtMatrix<T>::GetSize(unsigned long long& rows, unsigned long long& columns) const {
  rows = this->m_Rows;
  columns = this->m_Columns;
}

template <class T>
const void* CZtMatrix<T>::GetPointer() const {
  return this->m_pData;
}

template <class T>
void* CZtMatrix<T>::GetPointer() {
  return this->m_pData;
}

template <class T>
bool CZtMatrix<T>::IsValid() const {
  return this->m_pData != nullptr;
}

template <class T>
void CZtMatrix<T>::New(unsigned long long rows, unsigned long long columns) {
  SetDimensions(rows, columns);
}

template <class T>
void CZtMatrix<T>::Resize(unsigned long long rows, unsigned long long columns) {
  const unsigned long long oldRows = this->m_Rows;
  const unsigned long long oldColumns = this->m_Columns;
  this->m_Rows = rows;
  this->m_Columns = columns;
  if (rows == oldRows && columns == oldColumns) {
    return;
  }
  try {
    if (oldRows == 0 || oldColumns == 0) {
      // Nothing to place: an extent such as 0 by 5 stays as given.
      m_Vector.resize(rows * columns);
    } else if (rows == 0 || columns == 0) {
      this->m_Rows = 0;
      this->m_Columns = 0;
      m_Vector.resize(0);
    } else {
      std::vector<T> placed(rows * columns);
      const unsigned long long keptRows = std::min(oldRows, rows);
      const unsigned long long keptColumns = std::min(oldColumns, columns);
      for (unsigned long long column = 0; column < keptColumns; ++column) {
        for (unsigned long long row = 0; row < keptRows; ++row) {
          placed[row * columns + column] = m_Vector[row * oldColumns + column];
        }
      }
      m_Vector.swap(placed);
    }
    this->m_pData = m_Vector.data();
  } catch (std::bad_alloc& e) {
    // The storage and its address stay as they were.
    this->m_Rows = 0;
    this->m_Columns = 0;
    ZT_RAISE_OUT_OF_MEMORY(Name<T>("Resize"), e, "Error resizing matrix:");
  }
}

template <class T>
void CZtMatrix<T>::Delete() {
  SetDimensions(0, 0);
}

template <class T>
void CZtMatrix<T>::Reset() {
  const unsigned long long count = this->m_Rows * this->m_Columns;
  if (count != 0) {
    std::memset(this->m_pData, 0, count * sizeof(T));
  }
}

template <class T>
void CZtMatrix<T>::CopyFrom(const IMemory2DAccess* source) {
  if (source->GetElementSize() != GetElementSize()) {
    ZT_RAISE(Name<T>("CopyFrom"), "cannot copy Memory2D, elementSize is different");
  }
  unsigned long long rows = 0;
  unsigned long long columns = 0;
  source->GetSize(rows, columns);
  SetDimensions(rows, columns);
  const std::size_t bytes = sizeof(T) * rows * columns;
  if (bytes != 0) {
    // memmove: the source may be this very matrix.
    std::memmove(GetPointer(), source->GetPointer(), bytes);
  }
}

template class CZtMatrix<double>;
template class CZtMatrix<int>;

}  // namespace Zt
