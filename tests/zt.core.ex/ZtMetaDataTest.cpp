#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "ZtChain.h"
#include "ZtCoreEx.h"
#include "ZtHollowArray.h"

using Zt::CGuid;
using Zt::CIException;
using Zt::CZtArrayDouble;
using Zt::CZtArrayString;
using Zt::CZtArrayUInt;
using Zt::CZtException;
using Zt::CZtMetaData;
using Zt::CZtString;

namespace {

// --- Chains as a caller sees them ---------------------------------------------

using ZtTest::Chain;
using ZtTest::ChainOf;
using ZtTest::Hollow;
using ZtTest::Raised;

using Link = std::pair<std::string, std::string>;
Link Plain(const std::string& message) { return {"Zt.Exception", message}; }
Link WrongType(const std::string& expected, const std::string& given) {
  return {"Zt.ParInvalidTypeException", "Wrong type for parameter; Expected type '" + expected +
                                            "' differs from '" + given + "'"};
}
const Link kWriting = Plain("Error writing parameter");

const std::string kMapClass =
    "Zt::CZtParMap<class std::basic_string<char,struct std::char_traits<char>,class "
    "std::allocator<char> >,class std::basic_string<char,struct std::char_traits<char>,class "
    "std::allocator<char> > >::";
const char* const kMapFile = "source\\zt.core.development\\ZtParMap";

// --- The six typed forms ------------------------------------------------------------

// Contents of a value, comparable whatever its form.
unsigned int Values(unsigned int v) { return v; }
double Values(double v) { return v; }
std::string Values(const CZtString& v) { return v.ToCString(); }
template <class A>
auto Values(const A& array) {
  std::vector<decltype(Values(array[0]))> values;
  for (unsigned long long i = 0; i < array.Length(); ++i) {
    values.push_back(Values(array[i]));
  }
  return values;
}

template <class A, class T>
A ArrayOf(std::initializer_list<T> elements) {
  A array;
  array.Resize(elements.size());
  unsigned long long i = 0;
  for (const T& element : elements) {
    array[i++] = element;
  }
  return array;
}

// For each form: the word GetElementNameType reports, the kind that adding
// records and the kind that reading and writing demand, and two values.
template <class V>
struct FormOf {
  const char *word, *recorded, *demanded;
  V first, second;
};
template <class V>
FormOf<V> Form();
template <>
FormOf<unsigned int> Form() {
  return {"uint", "unsigned", "unsigned", 4000000000u, 3u};
}
template <>
FormOf<double> Form() {
  return {"double", "double", "double", -0.125, 6.5e-300};
}
template <>
FormOf<CZtString> Form() {
  return {"string", "string", "string", "first text", ""};
}
template <>
FormOf<CZtArrayUInt> Form() {
  return {"uint", "unsigned", "unsigned[]", ArrayOf<CZtArrayUInt>({1u, 2u, 3u}),
          ArrayOf<CZtArrayUInt>({9u})};
}
template <>
FormOf<CZtArrayDouble> Form() {
  return {"uint", "unsigned", "double[]", ArrayOf<CZtArrayDouble>({0.5, -1.0}),
          ArrayOf<CZtArrayDouble>({2.0, 3.0, 4.0})};
}
template <>
FormOf<CZtArrayString> Form() {
  return {"uint", "unsigned", "string[]", ArrayOf<CZtArrayString, CZtString>({"a", "b"}),
          ArrayOf<CZtArrayString, CZtString>({"z"})};
}

template <class V>
struct Tag {
  using type = V;
};
template <class F>
void ForEachForm(F&& f) {
  f(Tag<unsigned int>{});
  f(Tag<double>{});
  f(Tag<CZtString>{});
  f(Tag<CZtArrayUInt>{});
  f(Tag<CZtArrayDouble>{});
  f(Tag<CZtArrayString>{});
}

// --- Tests ----------------------------------------------------------------------------

TEST(CZtMetaData, EachFormReachesExactlyTheElementsOfItsKind) {
  ForEachForm([](auto added) {
    using A = typename decltype(added)::type;
    ForEachForm([](auto used) {
      using B = typename decltype(used)::type;
      const std::string pair = std::string(Form<A>().demanded) + " read as " + Form<B>().demanded;
      const bool reachable = std::string(Form<A>().recorded) == Form<B>().demanded;
      CZtMetaData store;
      store.AddElement("x", "description", Form<A>().first);

      B value = Form<B>().second;
      const Chain read = Raised([&] { store.GetElement("x", value); });
      const Chain write = Raised([&] { store.SetElement("x", Form<B>().first); });
      if (!reachable) {
        const Link mismatch = WrongType(Form<A>().recorded, Form<B>().demanded);
        EXPECT_EQ(read, (Chain{Plain("Error getting element 'x'"), mismatch})) << pair;
        EXPECT_EQ(write, (Chain{Plain("Error setting element 'x'"), kWriting, mismatch})) << pair;
        EXPECT_EQ(Values(value), Values(Form<B>().second)) << pair << ": out argument changed";
        return;
      }
      EXPECT_TRUE(read.empty()) << pair;
      EXPECT_TRUE(write.empty()) << pair;
      if constexpr (std::is_same_v<A, B>) {
        EXPECT_EQ(Values(value), Values(Form<A>().first)) << pair;
      } else {
        // An array element read as a single value meets an empty record.
        EXPECT_EQ(Values(value), Values(B{})) << pair;
      }
      B after = Form<B>().second;
      store.GetElement("x", after);
      EXPECT_EQ(Values(after), Values(Form<B>().first)) << pair;
    });
  });
}

TEST(CZtMetaData, AddingANameInUseIsRefusedBareWhateverTheType) {
  ForEachForm([](auto first) {
    using A = typename decltype(first)::type;
    ForEachForm([](auto second) {
      using B = typename decltype(second)::type;
      CZtMetaData store;
      store.AddElement("x", "old", Form<A>().first);
      ZtTest::ExpectRaise(
          [&] { store.AddElement("x", "new", Form<B>().second); },
          {{"Element 'x' already exists", "Zt::CZtMetaData::AddElement", "ZtMetaData"}});
      EXPECT_EQ(store.GetElementCount(), 1u);
      CZtString name, type;
      store.GetElementNameType(0, name, type);
      EXPECT_STREQ(type.ToCString(), Form<A>().word);
      if constexpr (!std::is_class_v<A> || std::is_same_v<A, CZtString>) {
        A value{};
        store.GetElement("x", value);
        EXPECT_EQ(Values(value), Values(Form<A>().first));
      }
    });
  });
}

TEST(CZtMetaData, UnknownNamesFailInTwoLayersForReadsAndThreeForWrites) {
  CZtMetaData store;
  store.AddElement("known", "", 1u);
  ForEachForm([&](auto form) {
    using V = typename decltype(form)::type;
    V value = Form<V>().second;
    EXPECT_EQ(Raised([&] { store.GetElement("x", value); }),
              (Chain{Plain("Error getting element 'x'"),
                     Plain("Element 'x' doesn't exist in meta data")}));
    EXPECT_EQ(Values(value), Values(Form<V>().second));
    EXPECT_EQ(Raised([&] { store.SetElement("x", Form<V>().first); }),
              (Chain{Plain("Error setting element 'x'"),
                     kWriting,
                     {"Zt.ParInvalidNameException", "Unknown parameter name"}}));
  });
  EXPECT_EQ(store.GetElementCount(), 1u);
  EXPECT_FALSE(store.HasElement("x"));
  EXPECT_STREQ(store.GetLastError().ToCString(), "");
}

TEST(CZtMetaData, EveryLinkNamesItsFileFunctionAndClass) {
  CZtMetaData store;
  store.AddElement("n", "", 2u);
  try {
    store.SetElement("n", 2.0);
    ADD_FAILURE();
  } catch (CZtException& e) {
    EXPECT_STREQ(e.GetFile(), "ZtMetaData");
    EXPECT_STREQ(e.GetFunction(), "Zt::CZtMetaData::SetElement");
    const auto* middle = dynamic_cast<const CZtException*>(e.GetInnerException());
    ASSERT_NE(middle, nullptr);
    EXPECT_STREQ(middle->GetFile(), kMapFile);
    EXPECT_EQ(middle->GetFunction(), kMapClass + "WriteParameter");
    const CIException* first = middle->GetInnerException();
    ASSERT_NE(first, nullptr);
    EXPECT_STREQ(first->GetFile(), kMapFile);
    EXPECT_EQ(first->GetFunction(), kMapClass + "WriteParameter");
    EXPECT_EQ(first->GetGUID(), CGuid("{944D12C7-608C-4509-9755-66A898B5432C}"));
    EXPECT_TRUE(e.HasException(CGuid("{944D12C7-608C-4509-9755-66A898B5432C}")));
    EXPECT_FALSE(e.HasException(CGuid("{3500903C-1B00-4CDB-AFC3-53C91539D6F9}")))
        << "the specific class replaces the parameter base's GUID";
  }
  double value = 0;
  ZtTest::ExpectRaise([&] { store.GetElement("n", value); },
                      {{"Error getting element 'n'", "Zt::CZtMetaData::GetElement", "ZtMetaData"},
                       {WrongType("unsigned", "double").second, kMapClass + "ReadParameter",
                        kMapFile, false, "Zt.ParInvalidTypeException"}});
  CZtString name, type;
  ZtTest::ExpectRaise(
      [&] { store.GetElementNameType(1, name, type); },
      {{"Error Getting Element type", "Zt::CZtMetaData::GetElementNameType", "ZtMetaData"},
       {"Index parameter out of range", "Zt::CZtMetaData::GetElementNameType", "ZtMetaData"}});
}

TEST(CZtMetaData, WalksNamesInUnsignedByteOrderAndReportsItsOwnTypeWords) {
  CZtMetaData store;
  EXPECT_EQ(store.GetElementCount(), 0u);
  store.AddElement("b", "", Form<CZtArrayDouble>().first);
  store.AddElement("a", "", 1.0);
  store.AddElement("\xc3\xa9", "", CZtString("accented"));
  store.AddElement("B", "", 1u);
  store.AddElement("", "", CZtString("empty name"));
  store.AddElement("ab", "", Form<CZtArrayString>().first);
  const std::pair<const char*, const char*> expected[] = {{"", "string"},  {"B", "uint"},
                                                          {"a", "double"}, {"ab", "uint"},
                                                          {"b", "uint"},   {"\xc3\xa9", "string"}};
  ASSERT_EQ(store.GetElementCount(), 6u);
  for (unsigned int i = 0; i < 6; ++i) {
    CZtString name, type;
    store.GetElementNameType(i, name, type);
    EXPECT_STREQ(name.ToCString(), expected[i].first) << i;
    EXPECT_STREQ(type.ToCString(), expected[i].second) << i;
  }
  EXPECT_TRUE(store.HasElement(""));
  EXPECT_FALSE(store.HasElement("A"));

  for (unsigned int index : {6u, 7u, 0xffffffffu}) {
    CZtString name("untouched"), type("untouched");
    EXPECT_EQ(Raised([&] { store.GetElementNameType(index, name, type); }),
              (Chain{Plain("Error Getting Element type"), Plain("Index parameter out of range")}));
    EXPECT_STREQ(name.ToCString(), "untouched");
    EXPECT_STREQ(type.ToCString(), "untouched");
  }
  EXPECT_STREQ(store.GetLastError().ToCString(), "");
}

TEST(CZtMetaData, ClearFreesEveryNameAndKeepsTheStoreUsable) {
  CZtMetaData store;
  ForEachForm([&](auto form) {
    using V = typename decltype(form)::type;
    store.AddElement(Form<V>().demanded, "", Form<V>().first);
  });
  EXPECT_EQ(store.GetElementCount(), 6u);
  store.Clear();
  EXPECT_EQ(store.GetElementCount(), 0u);
  EXPECT_FALSE(store.HasElement("unsigned"));
  store.AddElement("unsigned", "", 5.0);
  double value = 0;
  store.GetElement("unsigned", value);
  EXPECT_EQ(value, 5.0);
}

TEST(CZtMetaData, CopiesShareNoElement) {
  CZtMetaData a;
  a.AddElement("n", "", 1u);
  a.AddElement("s", "", CZtString("text"));

  CZtMetaData b;
  b.AddElement("only in b", "", 2.0);
  b = a;
  EXPECT_FALSE(b.HasElement("only in b"));
  b.SetElement("n", 10u);
  b.SetElement("s", CZtString("changed"));
  b.AddElement("new", "", 3u);

  CZtMetaData c(b);
  c.SetElement("n", 20u);

  unsigned int n = 0;
  CZtString s;
  a.GetElement("n", n);
  a.GetElement("s", s);
  EXPECT_EQ(n, 1u);
  EXPECT_STREQ(s.ToCString(), "text");
  EXPECT_FALSE(a.HasElement("new"));
  b.GetElement("n", n);
  EXPECT_EQ(n, 10u);
  c.GetElement("n", n);
  EXPECT_EQ(n, 20u);
  EXPECT_EQ(c.GetElementCount(), 3u);

  CZtMetaData& self = a;
  a = self;
  EXPECT_EQ(a.GetElementCount(), 2u);
  a.GetElement("s", s);
  EXPECT_STREQ(s.ToCString(), "text");
}

TEST(CZtMetaData, ArraysWithoutImplementationDifferByFamily) {
  CZtMetaData store;
  // Numeric: Length raises, unwrapped in AddElement, after the element exists.
  const Hollow<CZtArrayUInt> hollowUInt;
  const Hollow<CZtArrayDouble> hollowDouble;
  EXPECT_EQ(Raised([&] { store.AddElement("u", "", hollowUInt); }),
            (Chain{Plain("Nullptr --> Object not initialized")}));
  EXPECT_EQ(Raised([&] { store.AddElement("d", "", hollowDouble); }),
            (Chain{Plain("Nullptr --> Object not initialized")}));
  EXPECT_TRUE(store.HasElement("u"));
  EXPECT_TRUE(store.HasElement("d"));
  EXPECT_EQ(
      Raised([&] { store.SetElement("u", hollowUInt); }),
      (Chain{Plain("Error setting element 'u'"), Plain("Nullptr --> Object not initialized")}));

  // Strings: an invalid array counts as empty.
  CZtArrayString invalid;
  invalid.Delete();
  EXPECT_TRUE(Raised([&] { store.AddElement("s", "", invalid); }).empty());
  EXPECT_EQ(
      Raised([&] { store.SetElement("s", invalid); }),
      (Chain{Plain("Error setting element 's'"), kWriting, WrongType("unsigned", "string[]")}));
  unsigned int value = 1;
  store.GetElement("s", value);
  EXPECT_EQ(value, 0u);
}

}  // namespace
