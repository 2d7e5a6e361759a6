#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "ZtChain.h"
#include "ZtParMap.h"

using Zt::CIException;
using Zt::CZtException;
using Zt::CZtParEntry;
using Zt::CZtSafePtr;
using Zt::CZtSafePtrRepo;
using Zt::CZtString;
using Zt::EParType;

namespace {

using TEvent = Zt::CZtParEvent<std::string, std::string>;
using TParMap = Zt::CZtParMap<std::string, std::string>;
using Zt::Constraint::CAny;

const std::string kMapClass =
    "Zt::CZtParMap<class std::basic_string<char,struct std::char_traits<char>,class "
    "std::allocator<char> >,class std::basic_string<char,struct std::char_traits<char>,class "
    "std::allocator<char> > >::";
constexpr const char* kMapFile = "source\\zt.core.development\\ZtParMap";

// --- Test doubles ------------------------------------------------------------
// The map releases these with a plain operator delete, so they keep their
// state in scripts that the test owns and hold nothing that needs destroying.

struct ConstraintScript {
  bool accept = true;
  const char* why = "too big";
  int checks = 0;
  int describes = 0;
  const void* value = nullptr;
  EParType kind = Zt::ParNone;
};

class ScriptedConstraint final : public CAny {
public:
  explicit ScriptedConstraint(ConstraintScript* script) : m_pScript(script) {}
  bool Check(const void* value, EParType kind) override {
    ++m_pScript->checks;
    m_pScript->value = value;
    m_pScript->kind = kind;
    return m_pScript->accept;
  }
  CZtString Describe(const void* value, EParType kind) override {
    ++m_pScript->describes;
    EXPECT_EQ(value, m_pScript->value);
    EXPECT_EQ(kind, m_pScript->kind);
    return m_pScript->why;
  }

private:
  ConstraintScript* m_pScript;
};

struct EventScript {
  std::vector<std::string> calls;  // "read <key>" and "write <key>", in order
  std::function<void(TParMap*, const std::string&)> onWrite;  // runs before a refusal
  bool refuseRead = false;
  bool refuseWrite = false;
};

class ScriptedEvent final : public TEvent {
public:
  explicit ScriptedEvent(EventScript* script) : m_pScript(script) {}
  void OnRead(TParMap*, const std::string* key) override {
    m_pScript->calls.push_back("read " + *key);
    if (m_pScript->refuseRead) {
      throw CZtException::Create("read refused", "Handler", "Handler::OnRead", 11);
    }
  }
  void OnWrite(TParMap* map, const std::string* key) override {
    m_pScript->calls.push_back("write " + *key);
    if (m_pScript->onWrite) {
      m_pScript->onWrite(map, *key);
    }
    if (m_pScript->refuseWrite) {
      throw CZtException::Create("write refused", "Handler", "Handler::OnWrite", 12);
    }
  }

private:
  EventScript* m_pScript;
};

// --- Chains ------------------------------------------------------------------

using ZtTest::Chain;
using ZtTest::ChainOf;
using ZtTest::Raised;

const std::pair<std::string, std::string> kWriteHead{"Zt.Exception", "Error writing parameter"};
const std::pair<std::string, std::string> kWriteDenied{"Zt.ParAccessWriteException",
                                                       "Parameter write access denied"};
const std::pair<std::string, std::string> kReadDenied{"Zt.ParAccessReadException",
                                                      "Parameter read access denied"};
const std::pair<std::string, std::string> kUnknownName{"Zt.ParInvalidNameException",
                                                       "Unknown parameter name"};

std::pair<std::string, std::string> WrongType(const std::string& expected,
                                              const std::string& given) {
  return {"Zt.ParInvalidTypeException", "Wrong type for parameter; Expected type '" + expected +
                                            "' differs from '" + given + "'"};
}

// --- The six value types ---------------------------------------------------------

// The kind's text, an old and a new value.
template <class T>
struct Sample {
  const char* kind;
  T old, fresh;
};
Sample<unsigned int> SampleOf(unsigned int) { return {"unsigned", 7u, 4000000000u}; }
Sample<double> SampleOf(double) { return {"double", -2.25, 1e300}; }
Sample<CZtString> SampleOf(const CZtString&) { return {"string", "old text", "new"}; }
Sample<std::vector<unsigned int>> SampleOf(const std::vector<unsigned int>&) {
  return {"unsigned[]", {1u, 2u, 3u}, {9u}};
}
Sample<std::vector<double>> SampleOf(const std::vector<double>&) {
  return {"double[]", {0.5, -0.0, 2.5}, {}};
}
Sample<std::vector<CZtString>> SampleOf(const std::vector<CZtString>&) {
  return {"string[]", {"a", "", "c"}, {"z"}};
}

// --- Fixture -------------------------------------------------------------------------

class ParMapFixture : public ::testing::Test {
protected:
  void SetUp() override { m_Map.Init(); }

  // Adds an entry as the map's users do, with the chosen shared objects.
  CZtParEntry& Add(TParMap& map, const std::string& key, EParType kind, bool withConstraint,
                   bool withEvent) {
    CZtParEntry& entry = map.GetDirectory()[key];
    entry.Assign(key, kind, "description of " + key,
                 withConstraint
                     ? CZtSafePtr<CAny>(new ScriptedConstraint(&m_Constraint), &m_Constraints)
                     : CZtSafePtr<CAny>(),
                 withEvent ? CZtSafePtr<TEvent>(new ScriptedEvent(&m_Event), &m_Events)
                           : CZtSafePtr<TEvent>());
    return entry;
  }
  CZtParEntry& Add(const std::string& key, EParType kind, bool withConstraint = false,
                   bool withEvent = false) {
    return Add(m_Map, key, kind, withConstraint, withEvent);
  }

  ConstraintScript m_Constraint;
  EventScript m_Event;
  CZtSafePtrRepo<CAny> m_Constraints;
  CZtSafePtrRepo<TEvent> m_Events;
  TParMap m_Map;  // after the repositories, so that it dies before them
};

template <class T>
class ParMapValue : public ParMapFixture {
protected:
  static constexpr EParType kKind = Zt::ZtParKind<T>::value;
  static T Old() { return SampleOf(T{}).old; }
  static T New() { return SampleOf(T{}).fresh; }
};

struct SampleName {
  template <class T>
  static std::string GetName(int index) {
    return std::to_string(index) + "_" + SampleOf(T{}).kind;
  }
};
using ValueTypes = ::testing::Types<unsigned int, double, CZtString, std::vector<unsigned int>,
                                    std::vector<double>, std::vector<CZtString>>;
TYPED_TEST_SUITE(ParMapValue, ValueTypes, SampleName);

TYPED_TEST(ParMapValue, StoresAndDeliversTheFirstSlotOnly) {
  using S = TestFixture;
  this->Add("p", TestFixture::kKind);
  TypeParam value = S::Old();
  EXPECT_TRUE(this->m_Map.ReadParameter("p", value)) << "an entry without a record";
  EXPECT_EQ(value, TypeParam{});
  EXPECT_TRUE(this->m_Map.WriteParameter("p", S::New()));
  EXPECT_TRUE(this->m_Map.ReadParameter("p", value));
  EXPECT_EQ(value, S::New());
  const auto& record = this->m_Map.template GetValue<TypeParam>("p");
  EXPECT_EQ(record.Extra1, TypeParam{});
  EXPECT_EQ(record.Extra2, TypeParam{});
}

TYPED_TEST(ParMapValue, ARefusingEventGetsTheOldValueBack) {
  using S = TestFixture;
  this->Add("p", TestFixture::kKind, false, true);
  this->m_Map.template GetValue<TypeParam>("p").Value = S::Old();
  TypeParam seen{};
  this->m_Event.onWrite = [&](TParMap* map, const std::string& key) {
    seen = map->GetValue<TypeParam>(key).Value;
  };
  this->m_Event.refuseWrite = true;

  EXPECT_EQ(Raised([&] { this->m_Map.WriteParameter("p", S::New()); }),
            (Chain{kWriteHead, kWriteDenied, {"Zt.Exception", "write refused"}}));
  EXPECT_EQ(seen, S::New()) << "the handler sees the new value in the map";
  EXPECT_EQ(this->m_Map.template GetValue<TypeParam>("p").Value, S::Old());

  this->m_Event.refuseWrite = false;
  EXPECT_TRUE(this->m_Map.WriteParameter("p", S::New()));
  EXPECT_EQ(this->m_Map.template GetValue<TypeParam>("p").Value, S::New());
  EXPECT_EQ(this->m_Event.calls, (std::vector<std::string>{"write p", "write p"}));
}

TYPED_TEST(ParMapValue, ARefusingConstraintLeavesNoTrace) {
  using S = TestFixture;
  this->Add("p", TestFixture::kKind, true, true);
  this->m_Map.template GetValue<TypeParam>("p").Value = S::Old();
  this->m_Constraint.accept = false;
  const TypeParam candidate = S::New();

  EXPECT_EQ(Raised([&] { this->m_Map.WriteParameter("p", candidate); }),
            (Chain{kWriteHead,
                   {"Zt.ParInvalidValueException", "Invalid parameter value; 'p': too big"}}));
  EXPECT_EQ(this->m_Constraint.value, &candidate) << "the constraint sees the caller's value";
  EXPECT_EQ(this->m_Constraint.kind, TestFixture::kKind);
  EXPECT_EQ(this->m_Constraint.describes, 1);
  EXPECT_EQ(this->m_Map.template GetValue<TypeParam>("p").Value, S::Old());
  EXPECT_TRUE(this->m_Event.calls.empty());

  // Reading asks no constraint.
  TypeParam value{};
  EXPECT_TRUE(this->m_Map.ReadParameter("p", value));
  EXPECT_EQ(this->m_Constraint.checks, 1);
}

TYPED_TEST(ParMapValue, ExternalParametersOnlyTellTheirHandler) {
  using S = TestFixture;
  this->Add("with", TestFixture::kKind, false, true).external = true;
  this->Add("without", TestFixture::kKind).external = true;

  for (const char* key : {"with", "without"}) {
    EXPECT_FALSE(this->m_Map.WriteParameter(key, S::New())) << key;
    TypeParam value = S::Old();
    EXPECT_FALSE(this->m_Map.ReadParameter(key, value)) << key;
    EXPECT_EQ(value, S::Old()) << key;
    EXPECT_EQ(this->m_Map.template GetValue<TypeParam>(key).Value, TypeParam{}) << key;
  }
  EXPECT_EQ(this->m_Event.calls, (std::vector<std::string>{"write with", "read with"}));

  // A refusal on this path has no handler of its own: nothing was stored, so
  // nothing is restored and no access failure stands in the chain.
  this->m_Event.refuseWrite = true;
  EXPECT_EQ(Raised([&] { this->m_Map.WriteParameter("with", S::New()); }),
            (Chain{kWriteHead, {"Zt.Exception", "write refused"}}));
}

TYPED_TEST(ParMapValue, ARefusingReadHandlerRaisesAnAccessFailureUnwrapped) {
  using S = TestFixture;
  this->Add("p", TestFixture::kKind, false, true);
  this->m_Map.template GetValue<TypeParam>("p").Value = S::New();
  this->m_Event.refuseRead = true;
  TypeParam value = S::Old();
  EXPECT_EQ(Raised([&] { this->m_Map.ReadParameter("p", value); }),
            (Chain{kReadDenied, {"Zt.Exception", "read refused"}}));
  EXPECT_EQ(value, S::Old());
}

// --- Checks and their order --------------------------------------------------

TEST_F(ParMapFixture, ChecksNameThenAccessThenKindThenConstraint) {
  const struct {
    const char* what;
    bool readable, writable;
    EParType kind;
    Chain write, read;  // the read chain is the write chain without its head
  } cases[] = {
      {"all granted",
       true,
       true,
       Zt::ParUnsigned,
       {kWriteHead, {"Zt.ParInvalidValueException", "Invalid parameter value; 'p': too big"}},
       {}},
      {"wrong kind",
       true,
       true,
       Zt::ParDouble,
       {kWriteHead, WrongType("double", "unsigned")},
       {WrongType("double", "unsigned")}},
      {"no access, wrong kind",
       false,
       false,
       Zt::ParString,
       {kWriteHead, kWriteDenied},
       {kReadDenied}},
      {"read only, wrong kind",
       true,
       false,
       Zt::ParStringArray,
       {kWriteHead, kWriteDenied},
       {WrongType("string[]", "unsigned")}},
      {"write only, no table",
       false,
       true,
       Zt::ParInt,
       {kWriteHead, WrongType("int", "unsigned")},
       {kReadDenied}},
  };
  m_Constraint.accept = false;
  for (const auto& c : cases) {
    m_Map.Clear();
    CZtParEntry& entry = Add("p", c.kind, true);
    entry.readable = c.readable;
    entry.writable = c.writable;
    unsigned int value = 5u;
    EXPECT_EQ(Raised([&] { m_Map.WriteParameter("p", 6u); }), c.write) << c.what;
    EXPECT_EQ(Raised([&] { m_Map.ReadParameter("p", value); }), c.read) << c.what;
    EXPECT_EQ(value, c.read.empty() ? 0u : 5u) << c.what;
  }
  unsigned int value = 5u;
  EXPECT_EQ(Raised([&] { m_Map.WriteParameter("q", 6u); }), (Chain{kWriteHead, kUnknownName}));
  EXPECT_EQ(Raised([&] { m_Map.ReadParameter("q", value); }), (Chain{kUnknownName}));
  EXPECT_FALSE(m_Map.HasParameter("q")) << "a failed look-up adds no entry";
}

TEST(ParMapKinds, HaveTheirTextsAndEveryOtherValueIsUnknown) {
  const std::pair<int, const char*> names[] = {
      {0, "none"},     {1, "int"},     {2, "unsigned"},   {3, "double"},
      {4, "string"},   {5, "int[]"},   {6, "unsigned[]"}, {7, "double[]"},
      {8, "string[]"}, {9, "unknown"}, {-1, "unknown"},   {0x7fffffff, "unknown"}};
  for (const auto& [kind, name] : names) {
    EXPECT_STREQ(Zt::GetParTypeName(static_cast<EParType>(kind)).ToCString(), name) << kind;
  }
}

TEST_F(ParMapFixture, OrdersKeysByUnsignedBytesShorterFirst) {
  for (const char* key : {"b", "\xff", "ab", "a", "B", "", "a\x80", "a\x7f"}) {
    Add(key, Zt::ParUnsigned);
  }
  std::vector<std::string> order;
  for (const auto& entry : m_Map.GetDirectory()) {
    order.push_back(entry.first);
  }
  EXPECT_EQ(order, (std::vector<std::string>{"", "B", "a", "ab", "a\x7f", "a\x80", "b", "\xff"}));
}

// --- Entries, copies, clearing --------------------------------------------------

TEST_F(ParMapFixture, AssignFixesTheFlagsAndTakesItsArguments) {
  CZtParEntry entry;
  entry.readable = false;
  entry.external = true;
  CZtSafePtr<CAny> constraint(new ScriptedConstraint(&m_Constraint), &m_Constraints);
  entry.Assign("name", Zt::ParDoubleArray, "text", constraint, CZtSafePtr<TEvent>());
  EXPECT_TRUE(entry.readable);
  EXPECT_TRUE(entry.writable);
  EXPECT_FALSE(entry.external);
  EXPECT_EQ(entry.name, "name");
  EXPECT_EQ(entry.kind, Zt::ParDoubleArray);
  EXPECT_EQ(entry.description, "text");
  EXPECT_EQ(entry.constraint.Get(), constraint.Get());
  EXPECT_EQ(entry.event.Get(), nullptr);
  // The argument copies are gone again: the caller's and the entry's remain.
  EXPECT_EQ(m_Constraints.GetReferenceCount(constraint.Get()), 2u);
}

TEST_F(ParMapFixture, AssignmentCopiesValuesDeeplyAndSharesTheObjects) {
  Add("shared", Zt::ParUnsigned, true, true);
  EXPECT_TRUE(m_Map.WriteParameter("shared", 1u));
  Add("list", Zt::ParStringArray);
  EXPECT_TRUE(m_Map.WriteParameter("list", std::vector<CZtString>{"x", "y"}));
  const CAny* constraint = m_Map.GetDirectory()["shared"].constraint.Get();
  const TEvent* event = m_Map.GetDirectory()["shared"].event.Get();

  {
    TParMap copy;
    copy.Init();
    Add(copy, "gone", Zt::ParDouble, true, false);
    EXPECT_EQ(m_Constraints.GetObjectCount(), 2u);
    copy = m_Map;

    EXPECT_FALSE(copy.HasParameter("gone"));
    EXPECT_EQ(m_Constraints.GetObjectCount(), 1u) << "the replaced entry's object went with it";
    EXPECT_EQ(m_Constraints.GetReferenceCount(constraint), 2u);
    EXPECT_EQ(m_Events.GetReferenceCount(event), 2u);
    EXPECT_EQ(copy.GetDirectory()["shared"].description, "description of shared");

    // Values are the copy's own; the handler is shared.
    EXPECT_TRUE(copy.WriteParameter("shared", 2u));
    EXPECT_TRUE(copy.WriteParameter("list", std::vector<CZtString>{"z"}));
    unsigned int number = 0;
    std::vector<CZtString> list;
    EXPECT_TRUE(m_Map.ReadParameter("shared", number));
    EXPECT_TRUE(m_Map.ReadParameter("list", list));
    EXPECT_EQ(number, 1u);
    EXPECT_EQ(list, (std::vector<CZtString>{"x", "y"}));
    EXPECT_EQ(m_Event.calls,
              (std::vector<std::string>{"write shared", "write shared", "read shared"}));
  }
  EXPECT_EQ(m_Constraints.GetReferenceCount(constraint), 1u);

  // A map assigned to itself keeps everything.
  TParMap& self = m_Map;
  m_Map = self;
  EXPECT_EQ(m_Map.GetDirectory().size(), 2u);
  EXPECT_EQ(m_Constraints.GetReferenceCount(constraint), 1u);
  unsigned int number = 0;
  EXPECT_TRUE(m_Map.ReadParameter("shared", number));
  EXPECT_EQ(number, 1u);
}

TEST_F(ParMapFixture, ClearKeepsTheTablesAndOnlyFinalizeAllowsASecondInit) {
  Add("a", Zt::ParDouble, true, true);
  EXPECT_TRUE(m_Map.WriteParameter("a", 3.5));
  m_Map.Clear();
  EXPECT_TRUE(m_Map.GetDirectory().empty());
  EXPECT_EQ(m_Constraints.GetObjectCount(), 0u);
  EXPECT_EQ(m_Events.GetObjectCount(), 0u);

  Add("a", Zt::ParDouble);
  double value = 1.0;
  EXPECT_TRUE(m_Map.ReadParameter("a", value));
  EXPECT_EQ(value, 0.0) << "the value went with the entry";

  ZtTest::ExpectRaise([&] { m_Map.Init(); },
                      {{"parameter map already initialized", kMapClass + "Init", kMapFile}});
  m_Map.Finalize();
  m_Map.Finalize();
  m_Map.Clear();  // no tables: nothing to do
  m_Map.Init();
  EXPECT_FALSE(m_Map.HasParameter("a"));
}

}  // namespace
