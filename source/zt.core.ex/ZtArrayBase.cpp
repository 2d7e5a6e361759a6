#include "ZtArrayBase.h"

#include <cstring>
#include <new>

#include "ZtRaise.h"

namespace Zt {

namespace {
template <class T>
std::string Name(const char* member) {
  return Detail::ZtMemberName<T>("CZtArrayBase", member);
}
}  // namespace

template <class T>
CZtArrayBase<T>::~CZtArrayBase() = default;

template <class T>
unsigned long long CZtArrayBase<T>::GetElementSize() const {
  return sizeof(T);
}

template <class T>
unsigned long long CZtArrayBase<T>::Length() const {
  return m_Data.size();
}

template <class T>
const void* CZtArrayBase<T>::GetPointer() const {
  return m_Data.data();
}

template <class T>
void* CZtArrayBase<T>::GetPointer() {
  return m_Data.data();
}

template <class T>
bool CZtArrayBase<T>::IsValid() const {
  return true;
}

template <class T>
void CZtArrayBase<T>::New(unsigned long long length) {
  try {
    Delete();
    m_Data.resize(length);
  } catch (std::bad_alloc& e) {
    ZT_RAISE_OUT_OF_MEMORY(Name<T>("New"), e);
  }
}

template <class T>
void CZtArrayBase<T>::Resize(unsigned long long length) {
  try {
    m_Data.resize(length);
  } catch (std::bad_alloc& e) {
    ZT_RAISE_OUT_OF_MEMORY(Name<T>("Resize"), e);
  }
}

template <class T>
void CZtArrayBase<T>::Delete() {
  m_Data.clear();
}

template <class T>
void CZtArrayBase<T>::Reset() {
  if (!m_Data.empty()) {
    std::memset(m_Data.data(), 0, m_Data.size() * sizeof(T));
  }
}

template <class T>
void CZtArrayBase<T>::CopyFrom(const IMemoryAccess* source) {
  if (source == nullptr) {
    ZT_RAISE(Name<T>("CopyFrom"), "Invalid memory interface pointer");
  }
  if (source->GetElementSize() != GetElementSize()) {
    ZT_RAISE(Name<T>("CopyFrom"), "Element sizes of memory blocks do not agree");
  }
  Resize(source->Length());
  // Asked for only after the resize, which may move a source that is this
  // array. The source's element type is unknown, so each element travels as
  // its bytes: bit patterns of another type of the same width stay intact.
  // memmove, because the source may be this very array.
  const auto* from = static_cast<const unsigned char*>(source->GetPointer());
  const std::size_t count = m_Data.size();
  for (std::size_t i = 0; i < count; ++i) {
    std::memmove(&m_Data[i], from + i * sizeof(T), sizeof(T));
  }
}

template <class T>
const T& CZtArrayBase<T>::operator[](unsigned long long index) const {
  if (index >= Length()) {
    ZT_RAISE(Name<T>("operator []"), "Array index out of bounds");
  }
  return m_Data[index];
}

template <class T>
T& CZtArrayBase<T>::operator[](unsigned long long index) {
  return const_cast<T&>(static_cast<const CZtArrayBase&>(*this)[index]);
}

template class CZtArrayBase<double>;
template class CZtArrayBase<int>;
template class CZtArrayBase<unsigned char>;
template class CZtArrayBase<unsigned int>;
template class CZtArrayBase<unsigned short>;

}  // namespace Zt
