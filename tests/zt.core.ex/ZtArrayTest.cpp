#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "ZtAllocFail.h"
#include "ZtChain.h"
#include "ZtCoreEx.h"
#include "ZtHollowArray.h"

using namespace Zt;
using ZtTest::ExpectRaise;
using Values = std::vector<long long>;
using Calls = std::vector<std::pair<const char*, std::function<void()>>>;

namespace {

// The array types with the names their failures give, written out here; Rank 2: matrices.
#define ZT_FAMILY(F, A, T, R, N)                       \
  struct F {                                           \
    using Array = A;                                   \
    using Elem = T;                                    \
    static constexpr int Rank = R;                     \
    static constexpr const char *Name = N, *Type = #T; \
  }
ZT_FAMILY(DoubleFamily, CZtArrayDouble, double, 1, "Double");
ZT_FAMILY(IntFamily, CZtArrayInt, int, 1, "Int");
ZT_FAMILY(UCharFamily, CZtArrayUChar, unsigned char, 1, "UChar");
ZT_FAMILY(UIntFamily, CZtArrayUInt, unsigned int, 1, "UInt");
ZT_FAMILY(UShortFamily, CZtArrayUShort, unsigned short, 1, "UShort");
ZT_FAMILY(Double2DFamily, CZtArray2DDouble, double, 2, "2DDouble");
ZT_FAMILY(Int2DFamily, CZtArray2DInt, int, 2, "2DInt");
#undef ZT_FAMILY

// The elements through the index operator, after rows and columns for a matrix.
template <class A>
Values Dump(const A& array) {
  Values values;
  if constexpr (std::is_base_of_v<IMemory2DAccess, A>) {
    unsigned long long rows = 0, columns = 0;
    array.GetSize(rows, columns);
    values = {static_cast<long long>(rows), static_cast<long long>(columns)};
    for (unsigned long long i = 0; i < rows * columns; ++i)
      values.push_back(static_cast<long long>(array(i / columns, i % columns)));
  } else {
    for (unsigned long long i = 0; i < array.Length(); ++i)
      values.push_back(static_cast<long long>(array[i]));
  }
  return values;
}

// An array of rows x columns elements (a plain one of their product) holding 1, 2, 3, ...
template <class F>
typename F::Array Counting(unsigned long long rows, unsigned long long columns) {
  using A = typename F::Array;
  A array = [&] {  // no copy: a matrix's copy keeps the replaced one allocated
    if constexpr (F::Rank == 2) return A(rows, columns);
    if constexpr (F::Rank == 1) return A(rows * columns);
  }();
  for (unsigned long long i = 0; i < rows * columns; ++i)
    array.GetDataPtr()[i] = static_cast<typename F::Elem>(i + 1);
  return array;
}

template <class F>
class AnyArray : public ::testing::Test {};
using AllFamilies = ::testing::Types<DoubleFamily, IntFamily, UCharFamily, UIntFamily, UShortFamily,
                                     Double2DFamily, Int2DFamily>;
TYPED_TEST_SUITE(AnyArray, AllFamilies);

// A new array is empty (a matrix invalid); copies are deep; a self-copy keeps a plain array.
TYPED_TEST(AnyArray, StartEmptyAndCopiesAreDeepAndSelfCopiesKeepOrEmpty) {
  using A = typename TypeParam::Array;
  const A empty;
  EXPECT_EQ(
      std::make_tuple(Dump(empty), empty.IsValid(), empty.GetDataPtr(), empty.GetElementSize()),
      std::make_tuple(TypeParam::Rank == 1 ? Values{} : Values{0, 0}, TypeParam::Rank == 1,
                      static_cast<const typename TypeParam::Elem*>(nullptr),
                      sizeof(typename TypeParam::Elem)));
  std::optional<ZtTest::ZtExpectedLeak> leaks;  // a matrix's assignment keeps the replaced one
  if (TypeParam::Rank == 2) leaks.emplace();
  Values expected{1, 2, 3, 4, 5, 6};
  if (TypeParam::Rank == 2) expected.insert(expected.begin(), {2, 3});
  const A source = Counting<TypeParam>(2, 3);
  A copied(source), assigned = Counting<TypeParam>(4, 4), filled = Counting<TypeParam>(1, 1);
  A self = Counting<TypeParam>(2, 3);
  assigned = source;
  filled.CopyFrom(&source);
  for (A* target : {&copied, &assigned, &filled})
    EXPECT_TRUE(Dump(*target) == expected && target->GetDataPtr() != source.GetDataPtr());
  A& alias = self;
  if constexpr (TypeParam::Rank == 1) self.CopyFrom(&self);
  self = alias;
  EXPECT_EQ(Dump(self), (TypeParam::Rank == 1 ? expected : Values{0, 0}));
  EXPECT_EQ(self.IsValid(), TypeParam::Rank == 1);
}

// Both forms of the index operator raise `link` at `index`.
template <class A>
void ExpectIndexRaises(A& array, unsigned long long index, const ZtTest::Link& link) {
  ExpectRaise([&] { (void)array[index]; }, {link});
  ExpectRaise([&] { (void)std::as_const(array)[index]; }, {link});
}

TYPED_TEST(AnyArray, AMissingImplementationIsReportedUnderTheWrappersNames) {
  using A = typename TypeParam::Array;
  ZtTest::Hollow<A> hollow;
  const A& constant = hollow;
  const A source = Counting<TypeParam>(1, 1);
  unsigned long long rows = 0, columns = 0;
  Calls calls{{"GetElementSize", [&] { (void)constant.GetElementSize(); }},
              {"Delete", [&] { hollow.Delete(); }},
              {"Reset", [&] { hollow.Reset(); }},
              {"CopyFrom", [&] { hollow.CopyFrom(&source); }},
              {"GetDataPtr", [&] { (void)hollow.GetDataPtr(); }},
              {"GetDataPtr", [&] { (void)constant.GetPointer(); }},
              {"GetDataPtr", [&] { (void)hollow.GetPointer(); }}};
  const char* message = "Nullptr --> Object not initialized";
  if constexpr (TypeParam::Rank == 1) {
    calls.insert(calls.end(), {{"Length", [&] { (void)constant.Length(); }},
                               {"New", [&] { hollow.New(1); }},
                               {"Resize", [&] { hollow.Resize(1); }},
                               {"operator []", [&] { (void)hollow[0]; }},
                               {"operator []", [&] { (void)constant[0]; }},
                               {"", [&] { A copy(constant); }}});  // the copy constructor
  } else {
    message = "BaseRef is nullptr";
    calls.insert(calls.end(), {{"GetSize", [&] { constant.GetSize(rows, columns); }},
                               {"New", [&] { hollow.New(1, 1); }},
                               {"Resize", [&] { hollow.Resize(1, 1); }},
                               {"operator ()", [&] { (void)hollow(0, 0); }},
                               {"operator ()", [&] { (void)constant(0, 0); }}});
  }
  const std::string cls = std::string("CZtArray") + TypeParam::Name;
  for (const auto& c : calls) {
    ExpectRaise(c.second, {{message, "Zt::" + cls + "::" + (*c.first ? c.first : cls.c_str()),
                            cls.substr(1)}});
  }
  EXPECT_FALSE(hollow.IsValid());
}

// A failure of the implementation, CZtArrayBase<T> or CZtArray2DBase<T>.
template <class F>
ZtTest::Link BaseFailure(const char* message, const char* member) {
  const std::string base = F::Rank == 1 ? "ZtArrayBase" : "ZtArray2DBase";
  return {message, "Zt::C" + base + "<" + F::Type + ">::" + member, "source\\zt.core.ex\\" + base};
}
template <class F>
class NumericArray : public ::testing::Test {};
using Families = ::testing::Types<DoubleFamily, IntFamily, UCharFamily, UIntFamily, UShortFamily>;
TYPED_TEST_SUITE(NumericArray, Families);

TYPED_TEST(NumericArray, ConstructorsAndChangesLeaveTheToldContents) {
  using A = typename TypeParam::Array;
  using T = typename TypeParam::Elem;
  EXPECT_EQ(Dump(A(3)), (Values{0, 0, 0}));
  EXPECT_EQ(Dump(A(2, T(7))), (Values{7, 7}));
  EXPECT_EQ(Dump(A(0, T(7))), Values{});
  // A change through the interface, unaware of the type; the contents; whether the block stays.
  const std::tuple<std::function<void(IMemory&)>, Values, bool> cases[] = {
      {[](IMemory& m) { m.New(4); }, {0, 0, 0, 0}, true},
      {[](IMemory& m) { m.New(2); }, {0, 0}, true},
      {[](IMemory& m) { m.New(5); }, {0, 0, 0, 0, 0}, false},
      {[](IMemory& m) { m.Resize(6); }, {1, 2, 3, 4, 0, 0}, false},
      {[](IMemory& m) { m.Resize(2); }, {1, 2}, true},
      {[](IMemory& m) { m.Resize(1), m.Resize(3); }, {1, 0, 0}, true},
      {[](IMemory& m) { m.Reset(); }, {0, 0, 0, 0}, true},
      {[](IMemory& m) { m.Delete(); }, {}, true},
  };
  for (const auto& [change, expected, keepsStorage] : cases) {
    SCOPED_TRACE(testing::PrintToString(expected));
    A array = Counting<TypeParam>(1, 4);
    const void* before = array.GetPointer();
    change(array);
    EXPECT_EQ(Dump(array), expected);
    EXPECT_TRUE(array.IsValid() && array.GetPointer() == array.GetDataPtr());
    EXPECT_TRUE(!keepsStorage || array.GetPointer() == before);
  }
  // Lengths beyond the vector's pass through as length_error; New empties first.
  A array = Counting<TypeParam>(1, 3);
  EXPECT_THROW(array.Resize(~0ull), std::length_error);
  EXPECT_EQ(Dump(array), (Values{1, 2, 3}));
  EXPECT_THROW(array.New(~0ull), std::length_error);
  EXPECT_EQ(array.Length(), 0u);
}

// The index is checked in both forms; CopyFrom refuses null and other widths, unchanged.
TYPED_TEST(NumericArray, RefusalsOfIndexAndCopyFrom) {
  const auto outside = BaseFailure<TypeParam>("Array index out of bounds", "operator []");
  for (unsigned long long length : {0ull, 5ull}) {
    typename TypeParam::Array array(length);
    const auto& constant = array;
    EXPECT_TRUE(length == 0 || (&array[length - 1] == &array.GetDataPtr()[length - 1] &&
                                &constant[length - 1] == &array.GetDataPtr()[length - 1]));
    for (unsigned long long bad : {length, ~0ull}) ExpectIndexRaises(array, bad, outside);
  }
  auto self = Counting<TypeParam>(1, 3);
  const std::conditional_t<sizeof(typename TypeParam::Elem) == 1, CZtArrayDouble, CZtArrayUChar>
      other(2);
  ExpectRaise([&] { self.CopyFrom(nullptr); },
              {BaseFailure<TypeParam>("Invalid memory interface pointer", "CopyFrom")});
  ExpectRaise([&] { self.CopyFrom(&other); },
              {BaseFailure<TypeParam>("Element sizes of memory blocks do not agree", "CopyFrom")});
  EXPECT_EQ(Dump(self), (Values{1, 2, 3}));
}

TEST(Arrays, CopyFromComparesElementWidthsNotTypes) {
  CZtArrayUInt source(2, 0xFFFFFFFFu);
  CZtArrayInt target;
  target.CopyFrom(&source);
  EXPECT_EQ(Dump(target), (Values{-1, -1}));
  CZtArrayUChar bytes(7);  // any memory of width 1 fills a byte array, a string among them
  bytes.CopyFrom(&static_cast<const IMemoryAccess&>(CZtString("abc")));
  EXPECT_EQ(Dump(bytes), (Values{'a', 'b', 'c'}));
  CZtArray2DDouble matrix(1, 2);  // a matrix refuses another element width, unchanged
  const CZtArray2DInt narrow(3, 3);
  ExpectRaise([&] { matrix.CopyFrom(&narrow); },
              {{"cannot copy Memory2D, elementSize is different", "Zt::CZtMatrix<double>::CopyFrom",
                "source\\zt.core.math\\ZtMatrix"}});
  EXPECT_EQ(Dump(matrix), (Values{1, 2, 0, 0}));
}

template <class F>
class TwoDimensionalArray : public ::testing::Test {};
using Families2D = ::testing::Types<Double2DFamily, Int2DFamily>;
TYPED_TEST_SUITE(TwoDimensionalArray, Families2D);

TYPED_TEST(TwoDimensionalArray, ElementAccessAndValidityFollowStorageAndExtents) {
  using A = typename TypeParam::Array;
  const auto invalid = BaseFailure<TypeParam>("Nullptr --> Array Data Invalid", "operator ()");
  const auto outside = BaseFailure<TypeParam>("Array index out of bounds", "operator ()");
  A empty, array;
  ExpectRaise([&] { (void)empty(0, 0); }, {invalid});
  array.Reset();  // 0 by 0: nothing to clear
  array.New(0, 3);
  EXPECT_FALSE(array.IsValid());
  array.New(2, 3);
  for (int i = 0; i < 6; ++i) array.GetDataPtr()[i] = static_cast<typename TypeParam::Elem>(i + 1);
  EXPECT_EQ(&array(1, 2), array.GetDataPtr() + 5);
  ExpectRaise([&] { (void)array(2, 0); }, {outside});
  ExpectRaise([&] { (void)array(0, 3); }, {outside});
  const void* storage = array.GetPointer();
  array.CopyFrom(&array);
  EXPECT_EQ(Dump(array), (Values{2, 3, 1, 2, 3, 4, 5, 6}));
  array.Reset();
  EXPECT_EQ(Dump(array), (Values{2, 3, 0, 0, 0, 0, 0, 0}));
  // Delete keeps the storage: still valid, but nothing lies inside 0 by 0.
  array.Delete();
  EXPECT_TRUE(Dump(array) == (Values{0, 0}) && array.IsValid() && array.GetPointer() == storage);
  ExpectRaise([&] { (void)array(0, 0); }, {outside});
  A copied = Counting<TypeParam>(2, 3);
  copied.CopyFrom(&empty);
  EXPECT_EQ(Dump(copied), (Values{0, 0}));
  // Lengths beyond the vector's pass through as length_error.
  A resized = Counting<TypeParam>(2, 2), renewed = Counting<TypeParam>(2, 2);
  EXPECT_THROW(resized.Resize(~0ull, 2), std::length_error);
  EXPECT_THROW(renewed.New(~0ull / 2, 1), std::length_error);
}

TEST(TwoDimensionalArrays, NewKeepsLinearPlacesResizeKeepsRowAndColumn) {
  // From rows and columns, Resize (else New) to rows and columns: the dump.
  using ULL = unsigned long long;
  const std::tuple<ULL, ULL, bool, ULL, ULL, Values> cases[] = {
      {2, 2, true, 3, 3, {3, 3, 1, 2, 0, 3, 4, 0, 0, 0, 0}},
      {2, 2, false, 3, 3, {3, 3, 1, 2, 3, 4, 0, 0, 0, 0, 0}},
      {3, 4, true, 2, 2, {2, 2, 1, 2, 5, 6}},
      {3, 4, false, 2, 2, {2, 2, 1, 2, 3, 4}},
      {2, 3, true, 3, 1, {3, 1, 1, 4, 0}},
      {2, 3, true, 2, 3, {2, 3, 1, 2, 3, 4, 5, 6}},
      {2, 2, true, 0, 5, {0, 0}},  // Resize makes both extents 0 ...
      {2, 2, true, 3, 0, {0, 0}},
      {2, 2, false, 0, 5, {0, 5}},  // ... where New keeps them
      {0, 5, true, 2, 3, {2, 3, 0, 0, 0, 0, 0, 0}},
  };
  for (const auto& [fromRows, fromColumns, resize, rows, columns, expected] : cases) {
    CZtArray2DInt m = Counting<Int2DFamily>(fromRows, fromColumns);
    resize ? m.Resize(rows, columns) : m.New(rows, columns);
    EXPECT_EQ(Dump(m), expected) << fromRows << "x" << fromColumns << " to " << rows << "x"
                                 << columns;
  }
  CZtArray2DInt emptied = Counting<Int2DFamily>(2, 2);  // keeps no element for a later growth
  emptied.Resize(0, 5);
  emptied.Resize(1, 2);
  EXPECT_EQ(Dump(emptied), (Values{1, 2, 0, 0}));
}

// The elements, each in brackets: "" has none, "[]" one empty element.
std::string TextsOf(const CZtArrayString& array) {
  std::string texts;
  for (unsigned long long i = 0; i < array.Length(); ++i)
    texts += std::string("[") + array[i].ToCString() + "]";
  return texts;
}

ZtTest::Link StringFailure(const char* member,
                           const char* message = "Nullptr --> Array Data Invalid") {
  return {message, std::string("Zt::CZtArrayString::") + member, "ZtArrayString"};
}

TEST(CZtArrayString, SplitsFieldsAsGetlineReadsThem) {
  // A trailing delimiter adds no empty field; spaces stay.
  const std::pair<const char*, const char*> cases[] = {
      {"", ""},    {"a,,b", "[a][][b]"}, {",a", "[][a]"},           {"a,", "[a]"},
      {",", "[]"}, {",,", "[][]"},       {" a , b ", "[ a ][ b ]"}, {"a b", "[a b]"}};
  for (const auto& c : cases) {
    const CZtArrayString array(c.first, ',');
    EXPECT_TRUE(array.IsValid() && TextsOf(array) == c.second) << "'" << c.first << "'";
  }
  EXPECT_EQ(TextsOf(CZtArrayString("x\xE9y", '\xE9')), "[x][y]");
}

TEST(CZtArrayString, ChangesKeepElementsAndTheirAddressesAndCopiesAreDeep) {
  CZtArrayString array("a,b,c", ',');
  CZtString& first = array[0];
  array.Resize(5);
  EXPECT_EQ(TextsOf(array), "[a][b][c][][]");
  array.Resize(2);
  EXPECT_TRUE(TextsOf(array) == "[a][b]" && &array[0] == &first);
  array.Reset();
  EXPECT_EQ(TextsOf(array), "[][]");
  array.New(3);
  EXPECT_EQ(TextsOf(array), "[][][]");
  for (unsigned long long bad : {3ull, ~0ull})
    ExpectIndexRaises(array, bad, StringFailure("operator []", "Array index out of bounds"));
  const CZtArrayString source("one,two", ',');
  CZtArrayString copied(source), assigned("x,y,z", ','), invalid;
  assigned = source;
  for (CZtArrayString* target : {&copied, &assigned})
    EXPECT_TRUE(TextsOf(*target) == "[one][two]" && &(*target)[0] != &source[0]);
  invalid.Delete();  // copies of an invalid array are invalid
  EXPECT_FALSE(CZtArrayString(invalid).IsValid() || (assigned = invalid).IsValid());
}

TEST(CZtArrayString, AnInvalidArrayRefusesAccessUntilNew) {
  const std::function<void(CZtArrayString&)> invalidations[] = {
      [](CZtArrayString& a) { a.Delete(); }, [](CZtArrayString& a) { a.Delete(), a.Delete(); },
      [](CZtArrayString& a) { a = *&a; }};  // assignment to itself destroys the contents first
  for (const auto& invalidate : invalidations) {
    CZtArrayString array("a,b", ',');
    invalidate(array);
    EXPECT_TRUE(!array.IsValid() && array.Length() == 0u);
    ExpectRaise([&] { array.Reset(); }, {StringFailure("Reset")});
    ExpectIndexRaises(array, 0, StringFailure("operator []"));
    // Resize wraps its own refusal at once.
    ExpectRaise([&] { array.Resize(1); },
                {StringFailure("Resize", "Error resizing Array"), StringFailure("Resize")});
    array.New(2);
    EXPECT_EQ(TextsOf(array), "[][]");
  }
}

}  // namespace
