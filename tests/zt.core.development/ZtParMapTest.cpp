#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "ZtChain.h"
#include "ZtCoreEx.h"
#include "ZtHollowArray.h"
#include "ZtParMap.h"

using namespace Zt;
using namespace ZtTest;

namespace {

using TEvent = CZtParEvent<std::string, std::string>;
using TParMap = CZtParMap<std::string, std::string>;
using Zt::Constraint::CAny;

const std::string kStrings =
    "class std::basic_string<char,struct std::char_traits<char>,class std::allocator<char> >";
const std::string kMapClass = "Zt::CZtParMap<" + kStrings + "," + kStrings + " >::";
constexpr const char *kMapFile = "source\\zt.core.development\\ZtParMap",
                     *kRepoFile = "source\\zt.core.development\\ZtSafePtrRepo";

// Shared objects are released with a plain operator delete: doubles keep state in a script.

struct Script {
  bool accept = true;           // what the constraint answers
  const void* value = nullptr;  // what the constraint last saw
  EParType kind = ParNone;
  std::vector<std::string> calls;  // "check", "describe", "read <key>", "write <key>"
  std::function<void(TParMap*, const std::string&)> onWrite;  // runs before a refusal
  bool refuseRead = false, refuseWrite = false;
  int destroyed = 0;
};

struct ScriptedConstraint final : CAny {
  explicit ScriptedConstraint(Script* s) : script(s) {}
  ~ScriptedConstraint() { ++script->destroyed; }
  bool Check(const void* value, EParType kind) override {
    script->calls.push_back("check");
    script->value = value;
    script->kind = kind;
    return script->accept;
  }
  CZtString Describe(const void* value, EParType kind) override {
    script->calls.push_back("describe");
    EXPECT_TRUE(value == script->value && kind == script->kind) << "what Check saw";
    return "too big";
  }
  Script* script;
};

struct ScriptedEvent final : TEvent {
  explicit ScriptedEvent(Script* s) : script(s) {}
  ~ScriptedEvent() { ++script->destroyed; }
  void OnRead(TParMap*, const std::string* key) override {
    script->calls.push_back("read " + *key);
    if (script->refuseRead) throw CZtException::Create("read refused", "", "OnRead", 11);
  }
  void OnWrite(TParMap* map, const std::string* key) override {
    script->calls.push_back("write " + *key);
    if (script->onWrite) script->onWrite(map, *key);
    if (script->refuseWrite) throw CZtException::Create("write refused", "", "OnWrite", 12);
  }
  Script* script;
};

// Checks a clone, made through the common base, of class, GUID and line; returns name and message.
template <class E>
std::string CloneOf(const char* guid) {
  E raised("detail", "Zt::Somewhere::Raise", 17, nullptr);
  const std::unique_ptr<CIException> clone(static_cast<CZtParameterException&>(raised).Clone());
  EXPECT_NE(dynamic_cast<const E*>(clone.get()), nullptr) << guid;
  EXPECT_TRUE(clone->GetGUID() == CGuid(guid) && clone->GetLine() == 17u) << guid;
  const bool base = std::is_same_v<E, CZtParameterException>;  // else the GUID is replaced
  EXPECT_EQ(clone->HasException(CZtParameterException::ClassGuid), base);
  return std::string(clone->GetName()) + ": " + clone->GetMessageText();
}

TEST(ParameterExceptions, ComposeTheirMessageAndKeepEverythingInAClone) {
  EXPECT_EQ(CloneOf<CZtParameterException>("{3500903C-1B00-4CDB-AFC3-53C91539D6F9}"),
            "Zt.ParameterException: detail");
  EXPECT_EQ(CloneOf<CZtParInvalidNameException>("{2952225E-DB39-479E-A4E1-7496D6D531B2}"),
            "Zt.ParInvalidNameException: Unknown parameter name; detail");
  EXPECT_EQ(CloneOf<CZtParAccessReadException>("{2D69D395-4593-48BC-BC70-05C182CEFAE0}"),
            "Zt.ParAccessReadException: Parameter read access denied; detail");
  EXPECT_EQ(CloneOf<CZtParAccessWriteException>("{2C95F24C-6098-4354-A291-A8A3C0D0EFAE}"),
            "Zt.ParAccessWriteException: Parameter write access denied; detail");
  EXPECT_EQ(CloneOf<CZtParInvalidTypeException>("{944D12C7-608C-4509-9755-66A898B5432C}"),
            "Zt.ParInvalidTypeException: Wrong type for parameter; detail");
  EXPECT_EQ(CloneOf<CZtParInvalidValueException>("{3044F9AE-0257-4215-B36C-E8EFD6A543ED}"),
            "Zt.ParInvalidValueException: Invalid parameter value; detail");
}

// An object of each shared kind, and its repository's class as failures name it.
CAny* NewShared(CAny*, Script* script) { return new ScriptedConstraint(script); }
TEvent* NewShared(TEvent*, Script* script) { return new ScriptedEvent(script); }
std::string RepositoryOf(CAny*) { return "Zt::CZtSafePtrRepo<class Zt::Constraint::CAny>"; }
std::string RepositoryOf(TEvent*) {
  return "Zt::CZtSafePtrRepo<class Zt::CZtParEvent<" + kStrings + "," + kStrings + " > >";
}

template <class T>
class SafePtr : public ::testing::Test {};
using SharedKinds = ::testing::Types<CAny, TEvent>;
TYPED_TEST_SUITE(SafePtr, SharedKinds, );  // empty: default names, no pedantic warning

TYPED_TEST(SafePtr, CountsEveryReferenceAndReleasesOnlyTheStorageWithTheLast) {
  using Ptr = CZtSafePtr<TypeParam>;
  Script script;
  CZtSafePtrRepo<TypeParam> repository;
  TypeParam* const none = nullptr;  // picks the kind's overloads
  // A failed Register or DeRegister wraps its cause, both naming the repository's member.
  const auto expectFailure = [&](const std::function<void()>& op, const char* member,
                                 const char* inner) {
    const std::string function = RepositoryOf(none) + "::" + member, file = kRepoFile;
    const char* outer = member[0] == 'R' ? "Error registering" : "Error deregistering";
    ExpectRaise(op, {{outer, function, file}, {inner, function, file}});
  };
  TypeParam *a = NewShared(none, &script), *b = NewShared(none, &script);
  Ptr onA(a, &repository);
  {
    Ptr onB(b, &repository), copy(onB), assigned;
    assigned = copy;
    EXPECT_TRUE(repository.GetReferenceCount(b) == 3u && assigned.GetRepository() == &repository &&
                repository.GetObjectCount() == 2u);
    // Registered twice, a reference leaves in one call; one not listed leaves nothing.
    repository.Register(&copy);
    EXPECT_EQ(repository.GetReferenceCount(b), 4u);
    repository.DeRegister(&copy);
    EXPECT_EQ(repository.GetReferenceCount(b), 2u);
    repository.DeRegister(&copy);
    EXPECT_EQ(repository.GetReferenceCount(b), 2u);
    repository.Register(&copy);
    // Assignment leaves the old object first, releasing it with its last reference.
    onA = copy;
    EXPECT_TRUE(repository.GetObjectCount() == 1u && repository.GetReferenceCount(b) == 4u);
    assigned = Ptr();
    EXPECT_TRUE(assigned.Get() == nullptr && assigned.GetRepository() == nullptr);
    EXPECT_EQ(repository.GetReferenceCount(b), 3u);
  }
  EXPECT_EQ(repository.GetReferenceCount(b), 1u);

  expectFailure([&] { Ptr invalid(nullptr, &repository); }, "Register", "Argument is invalid");
  Ptr empty;
  expectFailure([&] { repository.DeRegister(&empty); }, "DeRegister",
                "Nullptr --> Object pointer of reference is null");
  // A pointer whose object left behind its back raises from its destructor, run here in a try.
  alignas(Ptr) unsigned char storage[sizeof(Ptr)];
  Ptr* orphan = new (storage) Ptr(NewShared(none, &script), &repository);
  repository.DeRegister(orphan);
  expectFailure([&] { orphan->~Ptr(); }, "DeRegister",
                "Nullptr --> Can not find reference in repository");
  EXPECT_TRUE(repository.GetObjectCount() == 1u && repository.GetReferenceCount(b) == 1u);

  onA = Ptr();
  EXPECT_EQ(repository.GetObjectCount() + repository.GetReferenceCount(b), 0u) << "b unknown now";
  EXPECT_EQ(script.destroyed, 0) << "only the storage goes, no destructor runs";
}

std::string Mismatch(const std::string& expected, const std::string& given) {
  return "Wrong type for parameter; Expected type '" + expected + "' differs from '" + given + "'";
}
const char* const kWrongType = "Zt.ParInvalidTypeException";
const Chain::value_type kWriteHead{"Zt.Exception", "Error writing parameter"};
const Chain::value_type kWriteDenied{"Zt.ParAccessWriteException", "Parameter write access denied"};
const Chain::value_type kReadDenied{"Zt.ParAccessReadException", "Parameter read access denied"};
const Chain::value_type kUnknownName{"Zt.ParInvalidNameException", "Unknown parameter name"};

class ParMapFixture : public ::testing::Test {
protected:
  void SetUp() override { m_Map.Init(); }

  // Adds an entry as the map's users do, with the chosen shared objects.
  CZtParEntry& Add(const std::string& key, EParType kind, bool constraint = false,
                   bool event = false, TParMap* map = nullptr) {
    CZtParEntry& entry = (map != nullptr ? *map : m_Map).GetDirectory()[key];
    entry.Assign(key, kind, "description of " + key,
                 {constraint ? new ScriptedConstraint(&m_Script) : nullptr,
                  constraint ? &m_Constraints : nullptr},
                 {event ? new ScriptedEvent(&m_Script) : nullptr, event ? &m_Events : nullptr});
    return entry;
  }

  Script m_Script;
  CZtSafePtrRepo<CAny> m_Constraints;
  CZtSafePtrRepo<TEvent> m_Events;
  TParMap m_Map;  // after the repositories, so that it dies before them
};

// An old and a new value of each value type.
using UInts = std::vector<unsigned int>;
using Doubles = std::vector<double>;
using Texts = std::vector<CZtString>;
std::pair<unsigned int, unsigned int> Samples(unsigned int) { return {7u, 4000000000u}; }
std::pair<double, double> Samples(double) { return {-2.25, 1e300}; }
std::pair<CZtString, CZtString> Samples(const CZtString&) { return {"old text", "new"}; }
std::pair<UInts, UInts> Samples(const UInts&) { return {{1u, 2u, 3u}, {9u}}; }
std::pair<Doubles, Doubles> Samples(const Doubles&) { return {{0.5, -0.0, 2.5}, {}}; }
std::pair<Texts, Texts> Samples(const Texts&) { return {{"a", "", "c"}, {"z"}}; }

template <class T>
class ParMapValue : public ParMapFixture {};
using ValueTypes = ::testing::Types<unsigned int, double, CZtString, UInts, Doubles, Texts>;
TYPED_TEST_SUITE(ParMapValue, ValueTypes, );

TYPED_TEST(ParMapValue, ChecksStoresNotifiesAndUndoesRefusedWrites) {
  const auto samples = Samples(TypeParam{});
  const TypeParam &old = samples.first, &fresh = samples.second;
  constexpr EParType kind = ZtParKind<TypeParam>::value;
  TParMap& map = this->m_Map;
  Script& script = this->m_Script;
  const auto stored = [&](const char* key) -> TypeParam& {
    return map.template GetValue<TypeParam>(key).Value;
  };

  // The handler sees the new value in the map; refusing it brings the old one back.
  this->Add("event", kind, false, true);
  stored("event") = old;
  TypeParam seen{};
  script.onWrite = [&](TParMap* m, auto& key) { seen = m->GetValue<TypeParam>(key).Value; };
  script.refuseWrite = true;
  EXPECT_EQ(Raised([&] { map.WriteParameter("event", fresh); }),
            (Chain{kWriteHead, kWriteDenied, {"Zt.Exception", "write refused"}}));
  EXPECT_TRUE(seen == fresh && stored("event") == old);
  script.refuseWrite = false;
  EXPECT_TRUE(map.WriteParameter("event", fresh) && stored("event") == fresh);

  // A refusing constraint sees the caller's value before anything is stored or told.
  this->Add("checked", kind, true, true);
  stored("checked") = old;
  script.accept = false;
  EXPECT_EQ(
      Raised([&] { map.WriteParameter("checked", fresh); }),
      (Chain{kWriteHead,
             {"Zt.ParInvalidValueException", "Invalid parameter value; 'checked': too big"}}));
  EXPECT_TRUE(script.value == &fresh && script.kind == kind);
  TypeParam value = fresh;
  EXPECT_TRUE(stored("checked") == old && map.ReadParameter("checked", value) && value == old);

  // External parameters only tell their handler, if any.
  this->Add("with", kind, false, true).external = true;
  this->Add("without", kind).external = true;
  for (const char* key : {"with", "without"})
    EXPECT_TRUE(!map.WriteParameter(key, fresh) && !map.ReadParameter(key, value) && value == old &&
                stored(key) == TypeParam{})
        << key;
  // Nothing to restore on the external path, and reads have no wrapper.
  script.refuseWrite = true;
  EXPECT_EQ(Raised([&] { map.WriteParameter("with", fresh); }),
            (Chain{kWriteHead, {"Zt.Exception", "write refused"}}));
  script.refuseRead = true;
  EXPECT_EQ(Raised([&] { map.ReadParameter("event", value); }),
            (Chain{kReadDenied, {"Zt.Exception", "read refused"}}));
  EXPECT_EQ(value, old);
  EXPECT_EQ(script.calls, (std::vector<std::string>{"write event", "write event", "check",
                                                    "describe", "read checked", "write with",
                                                    "read with", "write with", "read event"}));
}

// Access comes before the kind, and both before the constraint, which refuses here.
TEST_F(ParMapFixture, ChecksNameThenAccessThenKindThenConstraint) {
  m_Script.accept = false;
  Add("read only", ParStringArray, true).writable = false;
  Add("write only", ParInt, true).readable = false;
  const struct {
    const char* key;
    Chain write, read;
  } cases[] = {
      {"read only", {kWriteHead, kWriteDenied}, {{kWrongType, Mismatch("string[]", "unsigned")}}},
      {"write only", {kWriteHead, {kWrongType, Mismatch("int", "unsigned")}}, {kReadDenied}},
      {"unknown", {kWriteHead, kUnknownName}, {kUnknownName}}};
  for (const auto& c : cases) {
    unsigned int value = 5u;
    EXPECT_EQ(Raised([&] { m_Map.WriteParameter(c.key, 6u); }), c.write) << c.key;
    EXPECT_EQ(Raised([&] { m_Map.ReadParameter(c.key, value); }), c.read) << c.key;
    EXPECT_EQ(value, 5u) << c.key;
  }
  EXPECT_TRUE(!m_Map.HasParameter("unknown") && m_Script.calls.empty()) << "no entry, no call";
  std::string names;  // of the kinds no failure above names, and of values that are no kind
  for (int kind : {0, 5, 9, -1, 0x7fffffff})
    names += std::string(GetParTypeName(static_cast<EParType>(kind)).ToCString()) + " ";
  EXPECT_EQ(names, "none int[] unknown unknown unknown ");
}

// Copies share the entries' objects; Clear releases them; only Finalize allows a second Init.
TEST_F(ParMapFixture, AssignmentSharesTheObjectsAndClearReleasesThem) {
  CZtParEntry entry;
  entry.external = true;
  entry.Assign("name", ParDoubleArray, "text", {}, {});
  EXPECT_TRUE(entry.readable && entry.writable && !entry.external);

  const CZtParEntry& shared = Add("shared", ParDouble, true, true);
  EXPECT_TRUE(m_Map.WriteParameter("shared", 3.5));
  const CAny* constraint = shared.constraint.Get();
  EXPECT_EQ(m_Constraints.GetReferenceCount(constraint), 1u) << "Assign's argument copies left";
  {
    TParMap copy;
    copy.Init();
    Add("gone", ParDouble, true, false, &copy);
    EXPECT_EQ(m_Constraints.GetObjectCount(), 2u);
    copy = m_Map;
    EXPECT_TRUE(!copy.HasParameter("gone") && m_Constraints.GetObjectCount() == 1u);
    EXPECT_EQ(m_Constraints.GetReferenceCount(constraint), 2u);
    EXPECT_EQ(m_Events.GetReferenceCount(shared.event.Get()), 2u);
    EXPECT_EQ(copy.GetDirectory()["shared"].description, "description of shared");
  }
  EXPECT_EQ(m_Constraints.GetReferenceCount(constraint), 1u);

  m_Map.Clear();
  EXPECT_EQ(m_Constraints.GetObjectCount() + m_Events.GetObjectCount(), 0u);
  Add("shared", ParDouble);
  double value = 1.0;
  EXPECT_TRUE(m_Map.ReadParameter("shared", value) && value == 0.0) << "the value left with it";

  ExpectRaise([&] { m_Map.Init(); },
              {{"parameter map already initialized", kMapClass + "Init", kMapFile}});
  m_Map.Finalize();
  m_Map.Finalize();
  m_Map.Clear();  // no tables: nothing to do
  m_Map.Init();
  EXPECT_FALSE(m_Map.HasParameter("shared"));
}

// Links of failures raised by the store's member `op`, and by the map's.
Link Store(const char* op, const std::string& message) {
  return {message, std::string("Zt::CZtMetaData::") + op, "ZtMetaData"};
}
Link Map(const char* op, const std::string& message, const char* name = "") {
  return {message, kMapClass + op, kMapFile, false, name};
}
const Link kWriting = Map("WriteParameter", "Error writing parameter");

// Contents of a value, comparable whatever its form.
unsigned int Values(unsigned int v) { return v; }
double Values(double v) { return v; }
std::string Values(const CZtString& v) { return v.ToCString(); }
template <class A>
auto Values(const A& array) {
  std::vector<decltype(Values(array[0]))> values;
  for (unsigned long long i = 0; i < array.Length(); ++i) values.push_back(Values(array[i]));
  return values;
}

// Each form's kind as added, its kind as read and written, and two values.
template <class V>
struct Form {
  const char *recorded, *demanded;
  V first, second;
};
template <class F>
void ForEachForm(F&& f) {
  f(Form<unsigned int>{"unsigned", "unsigned", 4000000000u, 3u});
  f(Form<double>{"double", "double", -0.125, 6.5e-300});
  f(Form<CZtString>{"string", "string", "first text", ""});
  f(Form<CZtArrayUInt>{"unsigned", "unsigned[]", {3, 7u}, {1, 9u}});
  f(Form<CZtArrayDouble>{"unsigned", "double[]", {2, -1.0}, {3, 0.5}});
  f(Form<CZtArrayString>{"unsigned", "string[]", {"a,b", ','}, {"z", ','}});
}

// Each form added as "x", then used on "x" and the unknown "y" in every form.
TEST(CZtMetaData, EachFormReachesTheElementsOfItsKindOnly) {
  ForEachForm([](const auto& a) {
    ForEachForm([&](const auto& b) {
      using B = std::decay_t<decltype(b.first)>;
      SCOPED_TRACE(std::string(a.demanded) + " used as " + b.demanded);
      CZtMetaData store;
      store.AddElement("x", "description", a.first);
      ExpectRaise([&] { store.AddElement("x", "new", b.second); },
                  {Store("AddElement", "Element 'x' already exists")});
      B value = b.second;
      ExpectRaise([&] { store.GetElement("y", value); },
                  {Store("GetElement", "Error getting element 'y'"),
                   Store("GetElement", "Element 'y' doesn't exist in meta data")});
      ExpectRaise([&] { store.SetElement("y", b.first); },
                  {Store("SetElement", "Error setting element 'y'"), kWriting,
                   Map("WriteParameter", "Unknown parameter name", "Zt.ParInvalidNameException")});
      if (std::string(a.recorded) != b.demanded) {
        ExpectRaise([&] { store.GetElement("x", value); },
                    {Store("GetElement", "Error getting element 'x'"),
                     Map("ReadParameter", Mismatch(a.recorded, b.demanded), kWrongType)});
        ExpectRaise([&] { store.SetElement("x", b.first); },
                    {Store("SetElement", "Error setting element 'x'"), kWriting,
                     Map("WriteParameter", Mismatch(a.recorded, b.demanded), kWrongType)});
        EXPECT_EQ(Values(value), Values(b.second)) << "out argument changed";
      } else {
        store.GetElement("x", value);
        B expected{};  // an array element meets an empty record
        if constexpr (std::is_same_v<decltype(a.first), B>) expected = a.first;
        EXPECT_EQ(Values(value), Values(expected));
        store.SetElement("x", b.first);
        value = b.second;
        store.GetElement("x", value);
        EXPECT_EQ(Values(value), Values(b.first));
      }
      EXPECT_EQ(store.GetElementCount(), 1u);
    });
  });
}

TEST(CZtMetaData, WalksNamesInUnsignedByteOrderAndCopiesThemAll) {
  CZtMetaData store;
  store.AddElement("b", "", CZtArrayDouble(1, 1.0));
  store.AddElement("a", "", 1.0);
  store.AddElement("\xc3\xa9", "", CZtString("accented"));
  store.AddElement("B", "", 1u);
  store.AddElement("", "", CZtString("empty name"));
  store.AddElement("ab", "", CZtArrayString("a,b", ','));
  std::string walk;
  for (unsigned int i = 0; i < store.GetElementCount(); ++i) {
    CZtString name, type;
    store.GetElementNameType(i, name, type);
    walk += std::string(name.ToCString()) + ":" + type.ToCString() + " ";
  }
  EXPECT_EQ(walk, ":string B:uint a:double ab:uint b:uint \xc3\xa9:string ");
  EXPECT_TRUE(store.HasElement("") && !store.HasElement("A") && store.GetLastError() == "");
  for (unsigned int index : {6u, 7u, 0xffffffffu}) {
    CZtString name("untouched"), type("untouched");
    ExpectRaise([&] { store.GetElementNameType(index, name, type); },
                {Store("GetElementNameType", "Error Getting Element type"),
                 Store("GetElementNameType", "Index parameter out of range")});
    EXPECT_STREQ((name + type).ToCString(), "untoucheduntouched");
  }

  // Copies, also a store assigned to itself, keep every element and share none.
  CZtMetaData& self = store;
  store = self;
  CZtMetaData copy(store), assigned;
  assigned.AddElement("gone", "", 2u);
  assigned = store;
  store.Clear();
  double copied = 0, reassigned = 0;
  copy.GetElement("a", copied);
  assigned.GetElement("a", reassigned);
  EXPECT_EQ(std::make_tuple(store.GetElementCount(), assigned.HasElement("gone"),
                            copy.GetElementCount(), assigned.GetElementCount(), copied, reassigned),
            std::make_tuple(0u, false, 6u, 6u, 1.0, 1.0));
}

TEST(CZtMetaData, ArraysWithoutImplementationDifferByFamily) {
  CZtMetaData store;
  // Numeric: Length raises, unwrapped in AddElement, after the element exists.
  const Hollow<CZtArrayUInt> hollow;
  const Chain::value_type notInitialized{"Zt.Exception", "Nullptr --> Object not initialized"};
  EXPECT_EQ(Raised([&] { store.AddElement("u", "", hollow); }), Chain{notInitialized});
  EXPECT_EQ(Raised([&] { store.SetElement("u", hollow); }),
            (Chain{{"Zt.Exception", "Error setting element 'u'"}, notInitialized}));

  // Strings: an invalid array counts as empty.
  CZtArrayString invalid;
  invalid.Delete();
  store.AddElement("s", "", invalid);
  EXPECT_TRUE(store.HasElement("u") && store.HasElement("s"));
}

// The records start from their defaults (their copies are the members', tested with them).
TEST(CalibrationRecords, StartFromTheirDefaults) {
  const CZtMetricCalibResult r;
  EXPECT_EQ((std::vector<double>{r.m_Value1, r.m_Value2, r.m_Value3, r.m_Value4, r.m_Value5}),
            std::vector<double>(5, 0.0));
  const CZtMetricCalibAddImageResult a;
  EXPECT_EQ(std::make_tuple(a.m_iValue1, a.m_iValue2, a.m_iValue3, a.m_bValue4,
                            std::string(a.m_sMessage.ToCString())),
            std::make_tuple(-1, 0, 0, false, std::string("No object added to metric calibration")));
  EXPECT_TRUE(a.m_aValues1.IsValid() && a.m_aValues2.IsValid() && a.m_aTexts.IsValid());
  EXPECT_EQ(a.m_aValues1.Length() + a.m_aValues2.Length() + a.m_aTexts.Length(), 0u);
}

}  // namespace
