#ifndef ZT_DEVELOPMENT_ZTSAFEPTRREPO_H
#define ZT_DEVELOPMENT_ZTSAFEPTRREPO_H

// Shared pointers whose reference count is a list in a repository.
//
// A repository knows, for each object, the address of every safe pointer that
// points at it. A safe pointer enters itself when it takes an object and
// leaves when it lets go; the departure of the last one releases the object's
// storage. Because the lists hold the safe pointers' own addresses, a safe
// pointer moves only through its copy operations, and the repository must
// outlive every safe pointer registered in it.
//
// The templates are instantiated for the two kinds of object that parameter
// entries share: constraints and event handlers.

#include <cstddef>
#include <list>
#include <map>
#include <string>

namespace Zt {

namespace Constraint {
class CAny;
}
template <class TKey, class TText>
class CZtParEvent;

template <class T>
class CZtSafePtrRepo;

template <class T>
class CZtSafePtr {
public:
  // Empty: no object, no repository. An empty safe pointer never touches a
  // repository when it is copied, assigned or destroyed.
  CZtSafePtr() : m_pObject(nullptr), m_pRepository(nullptr) {}

  // Points at `object` and, if `repository` is given, registers there. This
  // is how an object gets its first safe pointer; the object must come from
  // plain `new`, since the last departure releases it with operator delete.
  CZtSafePtr(T* object, CZtSafePtrRepo<T>* repository)
      : m_pObject(object), m_pRepository(repository) {
    if (m_pRepository != nullptr) {
      m_pRepository->Register(this);
    }
  }

  CZtSafePtr(const CZtSafePtr& other)
      : m_pObject(other.m_pObject), m_pRepository(other.m_pRepository) {
    if (m_pRepository != nullptr) {
      m_pRepository->Register(this);
    }
  }

  // Leaves the old repository first, so assigning the last safe pointer of an
  // object to itself releases the object; callers don't do that.
  CZtSafePtr& operator=(const CZtSafePtr& other) {
    if (m_pRepository != nullptr) {
      m_pRepository->DeRegister(this);
    }
    m_pObject = other.m_pObject;
    m_pRepository = other.m_pRepository;
    if (m_pRepository != nullptr) {
      m_pRepository->Register(this);
    }
    return *this;
  }

  // Leaving the repository can raise for a safe pointer that has a
  // repository but no object known to it; nothing in the library makes one.
  virtual ~CZtSafePtr() noexcept(false) {
    if (m_pRepository != nullptr) {
      m_pRepository->DeRegister(this);
    }
  }

  T* Get() const { return m_pObject; }
  T* operator->() const { return m_pObject; }
  CZtSafePtrRepo<T>* GetRepository() const { return m_pRepository; }

private:
  T* m_pObject;                      // not owned by the pointer itself
  CZtSafePtrRepo<T>* m_pRepository;  // not owned
};

template <class T>
class CZtSafePtrRepo {
public:
  static constexpr const char* ZtSourceFile = "source\\zt.core.development\\ZtSafePtrRepo";

  CZtSafePtrRepo() = default;
  CZtSafePtrRepo(const CZtSafePtrRepo&) = delete;
  CZtSafePtrRepo& operator=(const CZtSafePtrRepo&) = delete;
  // Releases nothing: objects that still have safe pointers stay, and those
  // safe pointers must not outlive the repository.
  ~CZtSafePtrRepo() = default;

  // Appends the reference to its object's list. A reference registered twice
  // stands in the list twice.
  void Register(CZtSafePtr<T>* reference);

  // Removes every occurrence of the reference from its object's list. When
  // the list becomes empty, the object's storage is released with a plain
  // operator delete (no destructor of T runs) and the entry goes.
  void DeRegister(CZtSafePtr<T>* reference);

  // How many references the object has here; 0 for an unknown object.
  std::size_t GetReferenceCount(const T* object) const;
  // How many objects have references here.
  std::size_t GetObjectCount() const { return m_References.size(); }

private:
  std::map<T*, std::list<CZtSafePtr<T>*>> m_References;
};

extern template class CZtSafePtrRepo<Constraint::CAny>;
extern template class CZtSafePtrRepo<CZtParEvent<std::string, std::string>>;

}  // namespace Zt

#endif
