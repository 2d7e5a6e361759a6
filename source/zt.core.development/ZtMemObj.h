#ifndef ZT_DEVELOPMENT_ZTMEMOBJ_H
#define ZT_DEVELOPMENT_ZTMEMOBJ_H

// Internal: a growable block of individually constructed objects.

#include <new>

#include "ZtMemBase.h"
#include "ZtRaise.h"

namespace Zt {

// A block of T objects, each a heap object of its own behind a T* in a
// memory block, so that an element's address survives any reallocation of
// the block. The pointer block is reserved from the start: it never shrinks,
// and its capacity rises in steps of one block and stays.
//
// T must be default-constructible and have a virtual destructor or be final.
template <class T>
class CZtMemObj {
public:
  static constexpr const char* ZtSourceFile = "source\\zt.core.development\\ZtMemObj";

  // `length` default-constructed objects.
  explicit CZtMemObj(unsigned long long length);
  CZtMemObj(const CZtMemObj&) = delete;
  CZtMemObj& operator=(const CZtMemObj&) = delete;
  virtual ~CZtMemObj();

  // Brings the length to `count`, keeping the pointer entry of every live
  // object: a shrink destroys the surplus objects first, a growth makes room
  // first and then constructs the new ones.
  void Resize(unsigned long long count);
  // Brings the number of constructed objects to `count`; creates upward and
  // destroys downward, from the highest index.
  void InitElements(unsigned long long count);
  // Reserves the pointer block for `count` objects.
  void Reserve(unsigned long long count);
  // Trims a reserved block to its length. The pointer block is reserved and
  // can only grow, so this releases nothing.
  void Prune();

  unsigned long long Length() const { return m_Mem.Length(); }
  unsigned long long ElementCount() const { return m_ElementCount; }
  bool IsUnreserved() const { return m_bUnreserved; }
  // One pointer per element, good until the next change of length.
  T** Elements() const { return m_Mem.Elements(); }
  const CZtMem<T*>& Memory() const { return m_Mem; }

private:
  static std::string Name(const char* member) {
    return Detail::ZtMemberName<T>("CZtMemObj", member);
  }

  bool m_bUnreserved;
  unsigned long long m_ElementCount;
  CZtMem<T*> m_Mem;
};

template <class T>
CZtMemObj<T>::CZtMemObj(unsigned long long length)
    : m_bUnreserved(true), m_ElementCount(0), m_Mem(0) {
  m_Mem.m_bUnreserved = false;
  Resize(length);
}

template <class T>
CZtMemObj<T>::~CZtMemObj() {
  Resize(0);
  Prune();
}

template <class T>
void CZtMemObj<T>::InitElements(unsigned long long count) {
  try {
    T** elements = m_Mem.Elements();
    if (m_ElementCount < count) {
      for (unsigned long long i = m_ElementCount; i < count; ++i) {
        elements[i] = new T();
      }
    } else if (m_ElementCount > count) {
      // Stored pointers are left as they are; only the count says what lives.
      for (unsigned long long i = m_ElementCount; i-- > count;) {
        if (elements[i] != nullptr) {
          delete elements[i];
        }
      }
    }
    m_ElementCount = count;
  } catch (std::bad_alloc& e) {
    // Unlike the arrays, a plain CZtException carrying the text of what().
    ZT_RAISE(Name("InitElements"), CZtString(e.what()));
  } catch (CIException& e) {
    ZT_WRAP(Name("InitElements"), "Error reserving memory for object ", e);
  }
}

template <class T>
void CZtMemObj<T>::Resize(unsigned long long count) {
  if (count == m_Mem.Length()) {
    return;
  }
  try {
    if (m_ElementCount > count) {
      InitElements(count);
      m_Mem.Resize(count);
    } else if (m_ElementCount < count) {
      m_Mem.Resize(count);
      InitElements(count);
    }
  } catch (CIException& e) {
    ZT_WRAP(Name("Resize"), CZtString("Error setting memory size to ") << count << " elements", e);
  }
}

template <class T>
void CZtMemObj<T>::Reserve(unsigned long long count) {
  try {
    m_Mem.Reserve(count);
    m_bUnreserved = false;
  } catch (CIException& e) {
    ZT_WRAP(Name("Reserve"), "Error reserving memory for object ", e);
  }
}

template <class T>
void CZtMemObj<T>::Prune() {
  try {
    if (!m_bUnreserved && m_Mem.Capacity() != m_Mem.Length()) {
      Reserve(m_Mem.Length());
    }
  } catch (CIException& e) {
    ZT_WRAP(Name("Prune"), "Error pruning memory", e);
  }
}

}  // namespace Zt

#endif
