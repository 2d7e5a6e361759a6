#ifndef ZT_CORE_EX_ZTARRAYWRAPPERIMPL_H
#define ZT_CORE_EX_ZTARRAYWRAPPERIMPL_H

// Internal: the members of CZtArrayWrapper<T>. Included only by the source
// file of each exported array, which gives ZtArrayNames<T> and then
// instantiates the wrapper for its element type.

#include <memory>

#include "ZtArrayBase.h"
#include "ZtArrayNames.h"
#include "ZtArrayWrapper.h"
#include "ZtRaise.h"

namespace Zt {

template <class T>
CZtArrayBase<T>& CZtArrayWrapper<T>::Ref(const char* member) const {
  if (m_pBaseRef == nullptr) {
    using Names = Detail::ZtArrayNames<T>;
    constexpr const char* ZtSourceFile = Names::File;
    ZT_RAISE(Detail::ZtQualifiedName(Names::Class, member), "Nullptr --> Object not initialized");
  }
  return *m_pBaseRef;
}

template <class T>
CZtArrayWrapper<T>::CZtArrayWrapper() : IMemory(), m_pBaseRef(new CZtArrayBase<T>()) {}

template <class T>
CZtArrayWrapper<T>::CZtArrayWrapper(unsigned long long length) : IMemory(), m_pBaseRef(nullptr) {
  // Held by a smart pointer until built, so that a failing New frees it.
  std::unique_ptr<CZtArrayBase<T>> base(new CZtArrayBase<T>());
  base->New(length);
  m_pBaseRef = base.release();
}

template <class T>
CZtArrayWrapper<T>::CZtArrayWrapper(unsigned long long length, const T& value)
    : CZtArrayWrapper(length) {
  T* data = static_cast<T*>(m_pBaseRef->GetPointer());
  for (unsigned long long i = 0; i < length; ++i) {
    data[i] = value;
  }
}

template <class T>
CZtArrayWrapper<T>::CZtArrayWrapper(const CZtArrayWrapper& other) : IMemory(), m_pBaseRef(nullptr) {
  // The source is checked before anything is allocated: a new-expression
  // allocates before it evaluates its arguments.
  const CZtArrayBase<T>& source = other.Ref(Detail::ZtArrayNames<T>::Class);
  m_pBaseRef = new CZtArrayBase<T>(source);
}

template <class T>
CZtArrayWrapper<T>& CZtArrayWrapper<T>::operator=(const CZtArrayWrapper& other) {
  *m_pBaseRef = *other.m_pBaseRef;
  return *this;
}

template <class T>
CZtArrayWrapper<T>::~CZtArrayWrapper() {
  delete m_pBaseRef;
}

template <class T>
unsigned long long CZtArrayWrapper<T>::GetElementSize() const {
  return Ref("GetElementSize").GetElementSize();
}

template <class T>
unsigned long long CZtArrayWrapper<T>::Length() const {
  return Ref("Length").Length();
}

template <class T>
const void* CZtArrayWrapper<T>::GetPointer() const {
  return GetDataPtr();
}

template <class T>
void* CZtArrayWrapper<T>::GetPointer() {
  return GetDataPtr();
}

template <class T>
bool CZtArrayWrapper<T>::IsValid() const {
  return m_pBaseRef != nullptr && m_pBaseRef->IsValid();
}

template <class T>
void CZtArrayWrapper<T>::New(unsigned long long length) {
  Ref("New").New(length);
}

template <class T>
void CZtArrayWrapper<T>::Resize(unsigned long long length) {
  Ref("Resize").Resize(length);
}

template <class T>
void CZtArrayWrapper<T>::Delete() {
  Ref("Delete").Delete();
}

template <class T>
void CZtArrayWrapper<T>::Reset() {
  Ref("Reset").Reset();
}

template <class T>
void CZtArrayWrapper<T>::CopyFrom(const IMemoryAccess* source) {
  Ref("CopyFrom").CopyFrom(source);
}

template <class T>
T& CZtArrayWrapper<T>::operator[](unsigned long long index) {
  return Ref("operator []")[index];
}

template <class T>
const T& CZtArrayWrapper<T>::operator[](unsigned long long index) const {
  return static_cast<const CZtArrayBase<T>&>(Ref("operator []"))[index];
}

template <class T>
T* CZtArrayWrapper<T>::GetDataPtr() {
  return static_cast<T*>(Ref("GetDataPtr").GetPointer());
}

template <class T>
const T* CZtArrayWrapper<T>::GetDataPtr() const {
  return static_cast<const T*>(static_cast<const CZtArrayBase<T>&>(Ref("GetDataPtr")).GetPointer());
}

}  // namespace Zt

#endif
