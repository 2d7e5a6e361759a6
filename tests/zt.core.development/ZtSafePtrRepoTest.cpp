#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>

#include "ZtChain.h"
#include "ZtParMap.h"
#include "ZtSafePtrRepo.h"

using Zt::CIException;
using Zt::CZtException;
using Zt::CZtSafePtr;
using Zt::CZtSafePtrRepo;
using Zt::CZtString;
using Zt::EParType;

namespace {

using TEvent = Zt::CZtParEvent<std::string, std::string>;
using TParMap = Zt::CZtParMap<std::string, std::string>;

// Objects as callers hand them over. Their destructors count, so a test can
// tell that releasing an object frees its storage without running any code
// of the object. They own no memory of their own: whatever is released here
// must not leave anything behind.
class ConstraintObject final : public Zt::Constraint::CAny {
public:
  explicit ConstraintObject(int* destroyed) : m_pDestroyed(destroyed) {}
  ~ConstraintObject() { ++*m_pDestroyed; }
  bool Check(const void*, EParType) override { return true; }
  CZtString Describe(const void*, EParType) override { return ""; }

private:
  int* m_pDestroyed;
};

class EventObject final : public TEvent {
public:
  explicit EventObject(int* destroyed) : m_pDestroyed(destroyed) {}
  ~EventObject() { ++*m_pDestroyed; }
  void OnRead(TParMap*, const std::string*) override {}
  void OnWrite(TParMap*, const std::string*) override {}

private:
  int* m_pDestroyed;
};

// The two instantiations, with the class name that their failures carry.
template <class T>
struct Instance;
template <>
struct Instance<Zt::Constraint::CAny> {
  using Object = ConstraintObject;
  static constexpr const char* name = "Constraint";
  static constexpr const char* repository = "Zt::CZtSafePtrRepo<class Zt::Constraint::CAny>";
};
template <>
struct Instance<TEvent> {
  using Object = EventObject;
  static constexpr const char* name = "Event";
  static constexpr const char* repository =
      "Zt::CZtSafePtrRepo<class Zt::CZtParEvent<class std::basic_string<char,struct "
      "std::char_traits<char>,class std::allocator<char> >,class std::basic_string<char,struct "
      "std::char_traits<char>,class std::allocator<char> > > >";
};

template <class T>
class SafePtr : public ::testing::Test {
protected:
  using SafePtrType = CZtSafePtr<T>;
  T* NewObject() { return new typename Instance<T>::Object(&m_Destroyed); }

  // Expects `op` to raise the chain of a failed Register or DeRegister.
  static void ExpectFailure(const std::function<void()>& op, const char* member,
                            const char* inner) {
    const std::string function = std::string(Instance<T>::repository) + "::" + member;
    const char* const file = "source\\zt.core.development\\ZtSafePtrRepo";
    const char* const outer = member[0] == 'R' ? "Error registering" : "Error deregistering";
    ZtTest::ExpectRaise(op, {{outer, function, file}, {inner, function, file}});
  }

  int m_Destroyed = 0;
  CZtSafePtrRepo<T> m_Repository;  // outlives every safe pointer of a test
};

using Instances = ::testing::Types<Zt::Constraint::CAny, TEvent>;
struct InstanceName {
  template <class T>
  static std::string GetName(int) {
    return Instance<T>::name;
  }
};
TYPED_TEST_SUITE(SafePtr, Instances, InstanceName);

TYPED_TEST(SafePtr, CountsEveryCopyAndReleasesWithTheLastOnly) {
  using Ptr = typename TestFixture::SafePtrType;
  TypeParam* object = this->NewObject();
  auto& repository = this->m_Repository;
  {
    Ptr first(object, &repository);
    EXPECT_EQ(repository.GetReferenceCount(object), 1u);
    {
      Ptr second(first);
      Ptr third;
      third = second;
      EXPECT_EQ(repository.GetReferenceCount(object), 3u);
      EXPECT_EQ(third.Get(), object);
      EXPECT_EQ(third.GetRepository(), &repository);
    }
    EXPECT_EQ(repository.GetReferenceCount(object), 1u);
    EXPECT_EQ(repository.GetObjectCount(), 1u);
  }
  EXPECT_EQ(repository.GetObjectCount(), 0u);
  EXPECT_EQ(repository.GetReferenceCount(object), 0u);
  EXPECT_EQ(this->m_Destroyed, 0) << "only the storage goes, no destructor runs";
}

TYPED_TEST(SafePtr, AssigningReleasesTheOldObjectAndTakesTheNewOne) {
  using Ptr = typename TestFixture::SafePtrType;
  auto& repository = this->m_Repository;
  TypeParam* a = this->NewObject();
  TypeParam* b = this->NewObject();
  Ptr onA(a, &repository);
  Ptr onB(b, &repository);
  Ptr alsoOnB(onB);
  EXPECT_EQ(repository.GetObjectCount(), 2u);

  onA = alsoOnB;  // the last reference to a leaves; b's list is untouched meanwhile
  EXPECT_EQ(repository.GetObjectCount(), 1u);
  EXPECT_EQ(repository.GetReferenceCount(a), 0u);
  EXPECT_EQ(repository.GetReferenceCount(b), 3u);

  onA = Ptr();
  alsoOnB = Ptr();
  EXPECT_EQ(repository.GetReferenceCount(b), 1u);
  EXPECT_EQ(onA.Get(), nullptr);
  EXPECT_EQ(onA.GetRepository(), nullptr);
  EXPECT_EQ(this->m_Destroyed, 0);
}

TYPED_TEST(SafePtr, DeRegisterRemovesEveryOccurrenceAndIgnoresStrangers) {
  using Ptr = typename TestFixture::SafePtrType;
  auto& repository = this->m_Repository;
  TypeParam* object = this->NewObject();
  Ptr owner(object, &repository);

  // A reference registered twice stands twice and leaves in one call.
  Ptr twice(owner);
  repository.Register(&twice);
  EXPECT_EQ(repository.GetReferenceCount(object), 3u);
  repository.DeRegister(&twice);
  EXPECT_EQ(repository.GetReferenceCount(object), 1u);

  // A reference to the same object that is not in the list changes nothing.
  Ptr stranger(owner);
  repository.DeRegister(&stranger);
  repository.DeRegister(&stranger);
  EXPECT_EQ(repository.GetReferenceCount(object), 1u);
  repository.Register(&twice);  // both are in the list again for their destructors
  repository.Register(&stranger);
}

TYPED_TEST(SafePtr, FailuresAreWrappedAndLeaveTheRepositoryAsItWas) {
  using Ptr = typename TestFixture::SafePtrType;
  auto& repository = this->m_Repository;
  TypeParam* object = this->NewObject();
  Ptr owner(object, &repository);

  TestFixture::ExpectFailure([&] { Ptr invalid(nullptr, &repository); }, "Register",
                             "Argument is invalid");
  const Ptr empty;
  TestFixture::ExpectFailure([&] { repository.DeRegister(const_cast<Ptr*>(&empty)); }, "DeRegister",
                             "Nullptr --> Object pointer of reference is null");

  // A safe pointer whose object has left the repository behind its back
  // raises from its destructor. It lives in raw storage so that the test can
  // run the destructor inside a try.
  alignas(Ptr) unsigned char storage[sizeof(Ptr)];
  Ptr* orphan = new (storage) Ptr(this->NewObject(), &repository);
  repository.DeRegister(orphan);  // the only reference: its object is released
  EXPECT_EQ(repository.GetObjectCount(), 1u);
  TestFixture::ExpectFailure([&] { orphan->~Ptr(); }, "DeRegister",
                             "Nullptr --> Can not find reference in repository");
  EXPECT_EQ(repository.GetReferenceCount(object), 1u);
  EXPECT_EQ(repository.GetObjectCount(), 1u);
  EXPECT_EQ(this->m_Destroyed, 0);
}

}  // namespace
