#include "ZtArray2DBase.h"

#include <memory>

#include "ZtRaise.h"

namespace Zt {

namespace {
// The one member of this class that raises.
template <class T>
std::string Name() {
  return Detail::ZtMemberName<T>("CZtArray2DBase", "operator ()");
}

// A new matrix with the given extents, freed again if New fails.
template <class T>
CZtMatrix<T>* MakeMatrix(unsigned long long rows, unsigned long long columns) {
  std::unique_ptr<CZtMatrix<T>> matrix(new CZtMatrix<T>());
  matrix->New(rows, columns);
  return matrix.release();
}
}  // namespace

template <class T>
CZtArray2DBase<T>::CZtArray2DBase() : IMemory2D(), m_pMatrix(MakeMatrix<T>(0, 0)) {}

template <class T>
CZtArray2DBase<T>::CZtArray2DBase(unsigned long long rows, unsigned long long columns)
    : IMemory2D(), m_pMatrix(MakeMatrix<T>(rows, columns)) {}

template <class T>
CZtArray2DBase<T>::~CZtArray2DBase() {
  delete m_pMatrix;
}

template <class T>
CZtArray2DBase<T>& CZtArray2DBase<T>::operator=(const CZtArray2DBase& other) {
  m_pMatrix = new CZtMatrix<T>();
  CopyFrom(&other);
  return *this;
}

template <class T>
unsigned long long CZtArray2DBase<T>::GetElementSize() const {
  return m_pMatrix->GetElementSize();
}

template <class T>
void CZtArray2DBase<T>::GetSize(unsigned long long& rows, unsigned long long& columns) const {
  m_pMatrix->GetSize(rows, columns);
}

template <class T>
const void* CZtArray2DBase<T>::GetPointer() const {
  return m_pMatrix->Data();
}

template <class T>
void* CZtArray2DBase<T>::GetPointer() {
  return m_pMatrix->Data();
}

template <class T>
bool CZtArray2DBase<T>::IsValid() const {
  return m_pMatrix->IsValid();
}

template <class T>
void CZtArray2DBase<T>::New(unsigned long long rows, unsigned long long columns) {
  m_pMatrix->New(rows, columns);
}

template <class T>
void CZtArray2DBase<T>::Resize(unsigned long long rows, unsigned long long columns) {
  m_pMatrix->Resize(rows, columns);
}

template <class T>
void CZtArray2DBase<T>::Delete() {
  m_pMatrix->Delete();
}

template <class T>
void CZtArray2DBase<T>::Reset() {
  m_pMatrix->Reset();
}

template <class T>
void CZtArray2DBase<T>::CopyFrom(const IMemory2DAccess* source) {
  m_pMatrix->CopyFrom(source);
}

template <class T>
const T& CZtArray2DBase<T>::operator()(unsigned long long row, unsigned long long column) const {
  if (!IsValid()) {
    ZT_RAISE(Name<T>(), "Nullptr --> Array Data Invalid");
  }
  if (row < m_pMatrix->Rows() && column < m_pMatrix->Columns()) {
    return m_pMatrix->Data()[row * m_pMatrix->Columns() + column];
  }
  ZT_RAISE(Name<T>(), "Array index out of bounds");
}

template <class T>
T& CZtArray2DBase<T>::operator()(unsigned long long row, unsigned long long column) {
  return const_cast<T&>(static_cast<const CZtArray2DBase&>(*this)(row, column));
}

template class CZtArray2DBase<double>;
template class CZtArray2DBase<int>;

}  // namespace Zt
