#ifndef ZT_CORE_EX_ZTARRAY2DWRAPPERIMPL_H
#define ZT_CORE_EX_ZTARRAY2DWRAPPERIMPL_H

// Internal: the members of CZtArray2DWrapper<T>. Included only by the source
// file of each exported two-dimensional array, which gives ZtArray2DNames<T>
// and then instantiates the wrapper for its element type.

#include <memory>

#include "ZtArray2DBase.h"
#include "ZtArray2DWrapper.h"
#include "ZtArrayNames.h"
#include "ZtRaise.h"

namespace Zt {

template <class T>
CZtArray2DBase<T>& CZtArray2DWrapper<T>::Ref(const char* member) const {
  if (m_pBaseRef == nullptr) {
    using Names = Detail::ZtArray2DNames<T>;
    constexpr const char* ZtSourceFile = Names::File;
    ZT_RAISE(Detail::ZtQualifiedName(Names::Class, member), "BaseRef is nullptr");
  }
  return *m_pBaseRef;
}

template <class T>
CZtArray2DWrapper<T>::CZtArray2DWrapper() : IMemory2D(), m_pBaseRef(new CZtArray2DBase<T>()) {}

template <class T>
CZtArray2DWrapper<T>::CZtArray2DWrapper(unsigned long long rows, unsigned long long columns)
    : IMemory2D(), m_pBaseRef(new CZtArray2DBase<T>(rows, columns)) {}

template <class T>
CZtArray2DWrapper<T>::CZtArray2DWrapper(const CZtArray2DWrapper& other)
    : IMemory2D(), m_pBaseRef(nullptr) {
  // Held by a smart pointer until copied, so that a failing copy frees it.
  std::unique_ptr<CZtArray2DBase<T>> base(new CZtArray2DBase<T>());
  *base = *other.m_pBaseRef;
  m_pBaseRef = base.release();
}

template <class T>
CZtArray2DWrapper<T>& CZtArray2DWrapper<T>::operator=(const CZtArray2DWrapper& other) {
  *m_pBaseRef = *other.m_pBaseRef;
  return *this;
}

template <class T>
CZtArray2DWrapper<T>::~CZtArray2DWrapper() {
  delete m_pBaseRef;
}

template <class T>
unsigned long long CZtArray2DWrapper<T>::GetElementSize() const {
  return Ref("GetElementSize").GetElementSize();
}

template <class T>
void CZtArray2DWrapper<T>::GetSize(unsigned long long& rows, unsigned long long& columns) const {
  Ref("GetSize").GetSize(rows, columns);
}

template <class T>
const void* CZtArray2DWrapper<T>::GetPointer() const {
  return GetDataPtr();
}

template <class T>
void* CZtArray2DWrapper<T>::GetPointer() {
  return GetDataPtr();
}

template <class T>
bool CZtArray2DWrapper<T>::IsValid() const {
  return m_pBaseRef != nullptr && m_pBaseRef->IsValid();
}

template <class T>
void CZtArray2DWrapper<T>::New(unsigned long long rows, unsigned long long columns) {
  Ref("New").New(rows, columns);
}

template <class T>
void CZtArray2DWrapper<T>::Resize(unsigned long long rows, unsigned long long columns) {
  Ref("Resize").Resize(rows, columns);
}

template <class T>
void CZtArray2DWrapper<T>::Delete() {
  Ref("Delete").Delete();
}

template <class T>
void CZtArray2DWrapper<T>::Reset() {
  Ref("Reset").Reset();
}

template <class T>
void CZtArray2DWrapper<T>::CopyFrom(const IMemory2DAccess* source) {
  Ref("CopyFrom").CopyFrom(source);
}

template <class T>
T& CZtArray2DWrapper<T>::operator()(unsigned long long row, unsigned long long column) {
  return Ref("operator ()")(row, column);
}

template <class T>
const T& CZtArray2DWrapper<T>::operator()(unsigned long long row, unsigned long long column) const {
  return static_cast<const CZtArray2DBase<T>&>(Ref("operator ()"))(row, column);
}

template <class T>
T* CZtArray2DWrapper<T>::GetDataPtr() {
  return static_cast<T*>(Ref("GetDataPtr").GetPointer());
}

template <class T>
const T* CZtArray2DWrapper<T>::GetDataPtr() const {
  return static_cast<const T*>(
      static_cast<const CZtArray2DBase<T>&>(Ref("GetDataPtr")).GetPointer());
}

}  // namespace Zt

#endif
