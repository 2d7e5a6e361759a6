#include "ZtSafePtrRepo.h"

#include <utility>

#include "ZtRaise.h"

namespace Zt {

namespace {

// The repository's class as failures spell it, one per instantiation.
template <class T>
struct RepositoryName;
template <>
struct RepositoryName<Constraint::CAny> {
  static constexpr const char* value = "Zt::CZtSafePtrRepo<class Zt::Constraint::CAny>";
};
template <>
struct RepositoryName<CZtParEvent<std::string, std::string>> {
  static constexpr const char* value =
      "Zt::CZtSafePtrRepo<class Zt::CZtParEvent<class std::basic_string<char,struct "
      "std::char_traits<char>,class std::allocator<char> >,class std::basic_string<char,struct "
      "std::char_traits<char>,class std::allocator<char> > > >";
};

template <class T>
std::string FunctionName(const char* member) {
  return std::string(RepositoryName<T>::value) + "::" + member;
}

}  // namespace

template <class T>
void CZtSafePtrRepo<T>::Register(CZtSafePtr<T>* reference) {
  try {
    T* object = reference != nullptr ? reference->Get() : nullptr;
    if (object == nullptr) {
      ZT_RAISE(FunctionName<T>("Register"), "Argument is invalid");
    }
    auto found = m_References.find(object);
    if (found != m_References.end()) {
      found->second.push_back(reference);
    } else {
      // The list is complete before the key goes in, so a failed insertion
      // leaves no key with an empty list behind.
      std::list<CZtSafePtr<T>*> references(1, reference);
      m_References.emplace(object, std::move(references));
    }
  } catch (CIException& e) {
    ZT_WRAP(FunctionName<T>("Register"), "Error registering", e);
  }
}

template <class T>
void CZtSafePtrRepo<T>::DeRegister(CZtSafePtr<T>* reference) {
  try {
    T* object = reference != nullptr ? reference->Get() : nullptr;
    if (object == nullptr) {
      ZT_RAISE(FunctionName<T>("DeRegister"), "Nullptr --> Object pointer of reference is null");
    }
    auto found = m_References.find(object);
    if (found == m_References.end()) {
      ZT_RAISE(FunctionName<T>("DeRegister"), "Nullptr --> Can not find reference in repository");
    }
    found->second.remove(reference);  // every occurrence, not just the first
    if (found->second.empty()) {
      // Only the storage goes: the objects shared here are released without
      // running any of their code.
      ::operator delete(static_cast<void*>(object));
      m_References.erase(found);
    }
  } catch (CIException& e) {
    ZT_WRAP(FunctionName<T>("DeRegister"), "Error deregistering", e);
  }
}

template <class T>
std::size_t CZtSafePtrRepo<T>::GetReferenceCount(const T* object) const {
  auto found = m_References.find(const_cast<T*>(object));
  return found != m_References.end() ? found->second.size() : 0;
}

template class CZtSafePtrRepo<Constraint::CAny>;
template class CZtSafePtrRepo<CZtParEvent<std::string, std::string>>;

}  // namespace Zt
