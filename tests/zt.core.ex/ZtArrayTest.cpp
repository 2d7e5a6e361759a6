#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "ZtCoreEx.h"

using Zt::CIException;
using Zt::CZtException;
using Zt::IMemory;
using Zt::IMemoryAccess;

namespace {

// The five numeric arrays, with what their failures must name, written out
// here rather than taken from the library.
template <class A, class T, unsigned W>
struct Family {
  using Array = A;
  using Elem = T;
  static constexpr unsigned long long Width = W;
};
struct DoubleFamily : Family<Zt::CZtArrayDouble, double, 8> {
  static constexpr const char* Class = "CZtArrayDouble";
  static constexpr const char* Base = "Zt::CZtArrayBase<double>::";
};
struct IntFamily : Family<Zt::CZtArrayInt, int, 4> {
  static constexpr const char* Class = "CZtArrayInt";
  static constexpr const char* Base = "Zt::CZtArrayBase<int>::";
};
struct UCharFamily : Family<Zt::CZtArrayUChar, unsigned char, 1> {
  static constexpr const char* Class = "CZtArrayUChar";
  static constexpr const char* Base = "Zt::CZtArrayBase<unsigned char>::";
};
struct UIntFamily : Family<Zt::CZtArrayUInt, unsigned int, 4> {
  static constexpr const char* Class = "CZtArrayUInt";
  static constexpr const char* Base = "Zt::CZtArrayBase<unsigned int>::";
};
struct UShortFamily : Family<Zt::CZtArrayUShort, unsigned short, 2> {
  static constexpr const char* Class = "CZtArrayUShort";
  static constexpr const char* Base = "Zt::CZtArrayBase<unsigned short>::";
};

const char* const kBaseFile = "source\\zt.core.ex\\ZtArrayBase";

// What a raised CZtException must carry.
struct Failure {
  std::string message;
  std::string file;
  std::string function;
};

// Runs `op` and checks that it raises exactly `expected`, as a plain CZtException.
void ExpectFailure(const std::function<void()>& op, const Failure& expected) {
  try {
    op();
    ADD_FAILURE() << "no failure, expected: " << expected.message;
  } catch (CZtException& e) {
    EXPECT_EQ(expected.message, e.GetMessageText());
    EXPECT_EQ(expected.file, e.GetFile());
    EXPECT_EQ(expected.function, e.GetFunction());
    EXPECT_STREQ(e.GetName(), "Zt.Exception");
    EXPECT_EQ(e.GetInnerException(), nullptr);
  }
}

template <class A>
std::vector<long long> Contents(const A& array) {
  std::vector<long long> values;
  for (unsigned long long i = 0; i < array.Length(); ++i) {
    values.push_back(static_cast<long long>(array[i]));
  }
  return values;
}

// An array whose elements are 1, 2, ..., n.
template <class F>
typename F::Array Counting(unsigned long long n) {
  typename F::Array array(n);
  for (unsigned long long i = 0; i < n; ++i) {
    array[i] = static_cast<typename F::Elem>(i + 1);
  }
  return array;
}

// An array that has lost its implementation object, as a wrapper must be
// able to report; the object is handed back before destruction.
template <class F>
class Hollow : public F::Array {
public:
  Hollow() : F::Array(3), m_pSaved(this->m_pBaseRef) { this->m_pBaseRef = nullptr; }
  ~Hollow() override { this->m_pBaseRef = m_pSaved; }

private:
  Zt::CZtArrayBase<typename F::Elem>* m_pSaved;
};

template <class F>
class NumericArray : public ::testing::Test {};
using Families = ::testing::Types<DoubleFamily, IntFamily, UCharFamily, UIntFamily, UShortFamily>;
TYPED_TEST_SUITE(NumericArray, Families);

TYPED_TEST(NumericArray, ConstructorsGiveTheToldContents) {
  using A = typename TypeParam::Array;
  using T = typename TypeParam::Elem;
  const A empty;
  EXPECT_EQ(empty.Length(), 0u);
  EXPECT_TRUE(empty.IsValid());
  EXPECT_EQ(empty.GetDataPtr(), nullptr);
  EXPECT_EQ(empty.GetPointer(), nullptr);
  EXPECT_EQ(empty.GetElementSize(), TypeParam::Width);

  struct Case {
    unsigned long long length;
    bool fill;
    std::vector<long long> expected;
  };
  const Case cases[] = {
      {0, false, {}}, {3, false, {0, 0, 0}}, {0, true, {}}, {1, true, {7}}, {4, true, {7, 7, 7, 7}}};
  for (const Case& c : cases) {
    const A array = c.fill ? A(c.length, T(7)) : A(c.length);
    EXPECT_EQ(Contents(array), c.expected) << c.length << (c.fill ? " filled" : "");
    EXPECT_TRUE(array.IsValid());
    EXPECT_EQ(array.GetPointer(), array.GetDataPtr());
  }
}

TYPED_TEST(NumericArray, ChangingOperationsKeepOrDropWhatTheyShould) {
  using A = typename TypeParam::Array;
  struct Case {
    const char* name;
    std::function<void(IMemory&)> op;
    std::vector<long long> expected;
    bool keepsStorage;  // the block's address stays
  };
  const Case cases[] = {
      {"New same length", [](IMemory& m) { m.New(4); }, {0, 0, 0, 0}, true},
      {"New shorter", [](IMemory& m) { m.New(2); }, {0, 0}, true},
      {"New longer", [](IMemory& m) { m.New(6); }, {0, 0, 0, 0, 0, 0}, false},
      {"New zero", [](IMemory& m) { m.New(0); }, {}, true},
      {"Resize longer", [](IMemory& m) { m.Resize(6); }, {1, 2, 3, 4, 0, 0}, false},
      {"Resize shorter", [](IMemory& m) { m.Resize(2); }, {1, 2}, true},
      {"Resize same", [](IMemory& m) { m.Resize(4); }, {1, 2, 3, 4}, true},
      {"Resize zero", [](IMemory& m) { m.Resize(0); }, {}, true},
      {"Reset", [](IMemory& m) { m.Reset(); }, {0, 0, 0, 0}, true},
      {"Delete", [](IMemory& m) { m.Delete(); }, {}, true},
  };
  for (const Case& c : cases) {
    A array = Counting<TypeParam>(4);
    const void* before = array.GetDataPtr();
    c.op(array);  // through the interface, as a caller unaware of the type
    EXPECT_EQ(Contents(array), c.expected) << c.name;
    EXPECT_TRUE(array.IsValid()) << c.name;
    if (c.keepsStorage) {
      EXPECT_EQ(array.GetDataPtr(), before) << c.name;
    }
  }
  // After shrinking, growing again inside the kept storage yields zeros.
  A array = Counting<TypeParam>(4);
  array.Resize(1);
  array.Resize(3);
  EXPECT_EQ(Contents(array), (std::vector<long long>{1, 0, 0}));
}

TYPED_TEST(NumericArray, IndexIsCheckedAgainstTheLengthInBothForms) {
  using A = typename TypeParam::Array;
  const std::string function = std::string(TypeParam::Base) + "operator []";
  const Failure outOfBounds{"Array index out of bounds", kBaseFile, function};
  for (unsigned long long length : {0ull, 1ull, 5ull}) {
    A array(length);
    const A& constant = array;
    for (unsigned long long i = 0; i < length; ++i) {
      EXPECT_EQ(&array[i], array.GetDataPtr() + i);
      EXPECT_EQ(&constant[i], array.GetDataPtr() + i);
    }
    for (unsigned long long bad : {length, length + 1, ~0ull}) {
      ExpectFailure([&] { (void)array[bad]; }, outOfBounds);
      ExpectFailure([&] { (void)constant[bad]; }, outOfBounds);
    }
  }
}

TYPED_TEST(NumericArray, CopiesAreDeepAndSelfAssignmentChangesNothing) {
  using A = typename TypeParam::Array;
  const A source = Counting<TypeParam>(3);
  A copied(source);
  A assigned(5);
  assigned = source;
  for (A* target : {&copied, &assigned}) {
    EXPECT_EQ(Contents(*target), (std::vector<long long>{1, 2, 3}));
    EXPECT_NE(target->GetDataPtr(), source.GetDataPtr());
    (*target)[0] = 9;
  }
  EXPECT_EQ(Contents(source), (std::vector<long long>{1, 2, 3}));

  A self = Counting<TypeParam>(3);
  const void* before = self.GetDataPtr();
  A& alias = self;
  self = alias;
  EXPECT_EQ(Contents(self), (std::vector<long long>{1, 2, 3}));
  EXPECT_EQ(self.GetDataPtr(), before);
}

TYPED_TEST(NumericArray, CopyFromTakesLengthAndContentsOfSourcesOfItsWidth) {
  using A = typename TypeParam::Array;
  const A source = Counting<TypeParam>(5);
  for (unsigned long long start : {0ull, 2ull, 9ull}) {
    A target(start);
    target.CopyFrom(&source);
    EXPECT_EQ(Contents(target), Contents(source)) << start;
  }
  A self = Counting<TypeParam>(4);
  self.CopyFrom(&self);
  EXPECT_EQ(Contents(self), (std::vector<long long>{1, 2, 3, 4}));

  // Refusals leave the target as it was.
  const std::string function = std::string(TypeParam::Base) + "CopyFrom";
  const Zt::CZtArrayDouble wide(2);
  const Zt::CZtArrayUChar narrow(2);
  const IMemoryAccess* other = TypeParam::Width == 1 ? static_cast<const IMemoryAccess*>(&wide)
                                                     : static_cast<const IMemoryAccess*>(&narrow);
  struct Refusal {
    const IMemoryAccess* source;
    const char* message;
  };
  for (const Refusal& r : {Refusal{nullptr, "Invalid memory interface pointer"},
                           Refusal{other, "Element sizes of memory blocks do not agree"}}) {
    A target = Counting<TypeParam>(3);
    ExpectFailure([&] { target.CopyFrom(r.source); }, {r.message, kBaseFile, function});
    EXPECT_EQ(Contents(target), (std::vector<long long>{1, 2, 3}));
  }
}

TYPED_TEST(NumericArray, AMissingImplementationIsReportedUnderTheWrappersNames) {
  using A = typename TypeParam::Array;
  const std::string prefix = std::string("Zt::") + TypeParam::Class + "::";
  const std::string file = std::string(TypeParam::Class).substr(1);  // "ZtArrayDouble"
  Hollow<TypeParam> hollow;
  const A& constant = hollow;
  const A source(1);
  struct Case {
    const char* function;
    std::function<void()> op;
  };
  const Case cases[] = {
      {"GetElementSize", [&] { (void)constant.GetElementSize(); }},
      {"Length", [&] { (void)constant.Length(); }},
      {"New", [&] { hollow.New(1); }},
      {"Resize", [&] { hollow.Resize(1); }},
      {"Delete", [&] { hollow.Delete(); }},
      {"Reset", [&] { hollow.Reset(); }},
      {"CopyFrom", [&] { hollow.CopyFrom(&source); }},
      {"operator []", [&] { (void)hollow[0]; }},
      {"operator []", [&] { (void)constant[0]; }},
      {"GetDataPtr", [&] { (void)hollow.GetDataPtr(); }},
      {"GetDataPtr", [&] { (void)constant.GetDataPtr(); }},
      {"GetDataPtr", [&] { (void)hollow.GetPointer(); }},
      {"GetDataPtr", [&] { (void)constant.GetPointer(); }},
      {TypeParam::Class, [&] { A copy(constant); }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.function);
    ExpectFailure(c.op, {"Nullptr --> Object not initialized", file, prefix + c.function});
  }
  EXPECT_FALSE(hollow.IsValid());
}

TYPED_TEST(NumericArray, LengthsBeyondTheVectorPassThroughAsLengthError) {
  using A = typename TypeParam::Array;
  A array = Counting<TypeParam>(3);
  EXPECT_THROW(array.Resize(~0ull), std::length_error);
  EXPECT_EQ(Contents(array), (std::vector<long long>{1, 2, 3}));
  // New has emptied the array before its resize fails.
  EXPECT_THROW(array.New(~0ull), std::length_error);
  EXPECT_EQ(array.Length(), 0u);
  EXPECT_TRUE(array.IsValid());
  EXPECT_THROW(A(~0ull, 1), std::length_error);
}

TEST(NumericArrays, CopyFromComparesWidthsNotTypes) {
  Zt::CZtArrayUInt unsignedSource(2);
  unsignedSource[0] = 0xFFFFFFFFu;
  unsignedSource[1] = 0x80000000u;
  Zt::CZtArrayInt target;
  target.CopyFrom(&unsignedSource);
  ASSERT_EQ(target.Length(), 2u);
  EXPECT_EQ(target[0], -1);
  EXPECT_EQ(target[1], static_cast<int>(0x80000000u));

  // Any memory of width 1 fills a byte array, a string among them.
  const Zt::CZtString text("abc");
  Zt::CZtArrayUChar bytes(7);
  bytes.CopyFrom(&text);
  ASSERT_EQ(bytes.Length(), 3u);
  EXPECT_EQ(std::memcmp(bytes.GetDataPtr(), "abc", 3), 0);

  // Another width is refused, and the target keeps its contents.
  const Zt::CZtArrayUShort shorts(1);
  EXPECT_THROW(target.CopyFrom(&shorts), CZtException);
  EXPECT_EQ(target.Length(), 2u);
}

}  // namespace
