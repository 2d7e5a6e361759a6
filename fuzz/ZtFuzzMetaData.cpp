// Random sequences of operations on two CZtMetaData stores against a model of
// each: the names in byte order with the kind each was added as, and the
// values of the three single-value tables. Every read is compared with the
// model, every failure with the chain of exceptions it must raise, and a
// failed read must leave the caller's variable as it was.

#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <type_traits>

#include "ZtCoreEx.h"
#include "ZtFuzzCheck.h"
#include "ZtHollowArray.h"

using Zt::CZtArrayDouble;
using Zt::CZtArrayString;
using Zt::CZtArrayUInt;
using Zt::CZtMetaData;
using Zt::CZtString;
using ZtFuzz::AnyText;
using ZtFuzz::AnyValue;
using ZtFuzz::Chain;
using ZtFuzz::ExpectRaise;
using ZtFuzz::Link;

namespace {

const char* const kFile = "ZtMetaData";
const char* const kMapFile = "source\\zt.core.development\\ZtParMap";
const std::string kMap =
    "Zt::CZtParMap<class std::basic_string<char,struct std::char_traits<char>,class "
    "std::allocator<char> >,class std::basic_string<char,struct std::char_traits<char>,class "
    "std::allocator<char> > >::";

Link Failure(const std::string& message, const char* member) {
  return {message, std::string("Zt::CZtMetaData::") + member, kFile};
}

// The kind SetElement and GetElement demand of each typed form, and the text
// the map reports for it. AddElement records the arrays as kind 2.
template <class V>
constexpr int kKind = std::is_same_v<V, unsigned>         ? 2
                      : std::is_same_v<V, double>         ? 3
                      : std::is_same_v<V, CZtString>      ? 4
                      : std::is_same_v<V, CZtArrayUInt>   ? 6
                      : std::is_same_v<V, CZtArrayDouble> ? 7
                                                          : 8;
template <class V>
constexpr int kRecorded = kKind<V> <= 4 ? kKind<V> : 2;
const char* const kKindText[] = {"unsigned",   "double",   "string",  "",
                                 "unsigned[]", "double[]", "string[]"};

Link WrongType(int recorded, int demanded, const char* function) {
  return {std::string("Wrong type for parameter; Expected type '") + kKindText[recorded - 2] +
              "' differs from '" + kKindText[demanded - 2] + "'",
          kMap + function, kMapFile, false, "Zt.ParInvalidTypeException"};
}

// Random values of each form.
void Make(FuzzedDataProvider& in, unsigned& v) { v = in.ConsumeIntegral<unsigned>(); }
void Make(FuzzedDataProvider& in, double& v) { v = AnyValue<double>(in); }
void Make(FuzzedDataProvider& in, CZtString& v) { v = AnyText(in, 8).c_str(); }
template <class A>
auto Make(FuzzedDataProvider& in, A& array) -> decltype(array.New(0)) {
  array.New(in.ConsumeIntegralInRange<unsigned long long>(0, 4));
  for (unsigned long long i = 0; i < array.Length(); ++i) Make(in, array[i]);
}

// Values as bytes, so that NaNs compare equal to themselves.
template <class T>
std::enable_if_t<std::is_arithmetic_v<T>, std::string> Bytes(T v) {
  return std::string(reinterpret_cast<const char*>(&v), sizeof v);
}
std::string Bytes(const CZtString& v) { return v.ToCString(); }
template <class A>
auto Bytes(const A& array) -> decltype(array.Length(), std::string()) {
  std::string bytes = std::to_string(array.Length()) + ":";
  for (unsigned long long i = 0; i < array.Length(); ++i) {
    const std::string element = Bytes(array[i]);
    bytes += std::to_string(element.size()) + ":" + element;
  }
  return bytes;
}

// The array the store meets now and then instead of a value: a numeric one
// without implementation, which raises from Length of class kHollow, or an
// invalid string array, which counts as empty.
template <class V>
constexpr const char* kHollow = std::is_same_v<V, CZtArrayUInt>     ? "CZtArrayUInt"
                                : std::is_same_v<V, CZtArrayDouble> ? "CZtArrayDouble"
                                                                    : nullptr;
template <class V>
std::unique_ptr<V> Broken() {
  if constexpr (kHollow<V> != nullptr) return std::make_unique<ZtTest::Hollow<V>>();
  auto value = std::make_unique<V>();
  if constexpr (std::is_same_v<V, CZtArrayString>) value->Delete();
  return value;
}
template <class V>
Link Uninitialised() {
  return {"Nullptr --> Object not initialized", std::string("Zt::") + kHollow<V> + "::Length",
          kHollow<V> + 1};
}

// Names in byte order with the kind each was added as, and the single-value
// tables by kind (arrays added can't be read back through any form).
struct Model {
  std::map<std::string, int> kinds;
  std::map<std::string, std::string> values[3];  // kinds 2, 3 and 4

  // A single value's record, created holding zero or the empty text.
  std::string& Value(int kind, const std::string& name) {
    const std::string zero = kind == 2 ? Bytes(0u) : kind == 3 ? Bytes(0.0) : std::string();
    return values[kind - 2].emplace(name, zero).first->second;
  }
};

// A store beside its model.
struct Store {
  std::unique_ptr<CZtMetaData> store = std::make_unique<CZtMetaData>();
  Model model;

  void Step(FuzzedDataProvider& in, Store& other) {
    const unsigned operation = in.ConsumeIntegralInRange(0u, 7u);
    if (operation < 3) {
      const int form = in.ConsumeIntegralInRange(0, 5);
      const std::string name = AnyText(in, 3);
      switch (form) {
        case 0: Typed<unsigned>(operation, in, name); break;
        case 1: Typed<double>(operation, in, name); break;
        case 2: Typed<CZtString>(operation, in, name); break;
        case 3: Typed<CZtArrayUInt>(operation, in, name); break;
        case 4: Typed<CZtArrayDouble>(operation, in, name); break;
        default: Typed<CZtArrayString>(operation, in, name); break;
      }
      return;
    }
    switch (operation) {
      case 3: {  // every name and type by index, and an index past the end
        const char* const words[] = {"uint", "double", "string"};
        unsigned int index = 0;
        for (const auto& entry : model.kinds) {
          CZtString name, type;
          store->GetElementNameType(index, name, type);
          ZT_FUZZ_CHECK(entry.first == name.ToCString() &&
                            std::string(words[entry.second - 2]) == type.ToCString(),
                        "GetElementNameType " + std::to_string(index));
          ++index;
        }
        const unsigned int beyond = in.ConsumeBool() ? index : in.ConsumeIntegral<unsigned>();
        if (beyond < index) break;
        CZtString name("name before"), type("type before");
        ExpectRaise([&] { store->GetElementNameType(beyond, name, type); },
                    {Failure("Error Getting Element type", "GetElementNameType"),
                     Failure("Index parameter out of range", "GetElementNameType")},
                    "GetElementNameType " + std::to_string(beyond));
        ZT_FUZZ_CHECK(std::string(name.ToCString()) == "name before" &&
                          std::string(type.ToCString()) == "type before",
                      "a failed GetElementNameType changed its arguments");
        break;
      }
      case 4: {
        const std::string name = AnyText(in, 3);
        ZT_FUZZ_CHECK(store->HasElement(name.c_str()) == (model.kinds.count(name) != 0),
                      "HasElement '" + name + "'");
        break;
      }
      case 5:
        store->Clear();
        model = Model();
        break;
      case 6:  // copies share no element; a store assigned to itself stays
        if (in.ConsumeBool()) {
          *store = *other.store;
        } else {
          store = std::make_unique<CZtMetaData>(*other.store);
        }
        model = Model(other.model);
        break;
      default:
        ZT_FUZZ_CHECK(*store->GetLastError().ToCString() == '\0', "GetLastError is not empty");
        break;
    }
  }

  void Verify() const {
    ZT_FUZZ_CHECK(store->GetElementCount() == model.kinds.size(), "GetElementCount");
  }

  template <class V>
  void Typed(unsigned operation, FuzzedDataProvider& in, const std::string& name) {
    const char* const verbs[] = {"AddElement '", "SetElement '", "GetElement '"};
    const std::string context = verbs[operation] + name + "' as kind " + std::to_string(kKind<V>);
    if (operation == 0) {
      Add<V>(in, name, context);
    } else {
      Access<V>(operation == 1, in, name, context);
    }
  }

  template <class V>
  void Add(FuzzedDataProvider& in, const std::string& name, const std::string& context) {
    const bool exists = model.kinds.count(name) != 0;
    const CZtString description = AnyText(in, 4).c_str();
    const std::unique_ptr<V> broken = Broken<V>();
    V value{};
    const bool isBroken = in.ConsumeBool();
    if (!isBroken) Make(in, value);
    const V& added = isBroken ? *broken : value;
    auto add = [&] { store->AddElement(name.c_str(), description, added); };
    if (exists) {
      ExpectRaise(add, {Failure("Element '" + name + "' already exists", "AddElement")}, context);
      return;
    }
    model.kinds[name] = kRecorded<V>;
    if constexpr (kHollow<V> != nullptr) {
      if (isBroken) {  // the element stands before the array is asked for its length
        ExpectRaise(add, {Uninitialised<V>()}, context + " without implementation");
        return;
      }
    }
    add();
    if constexpr (kKind<V> <= 4) model.Value(kRecorded<V>, name) = Bytes(added);
  }

  // SetElement or GetElement: an unknown name or another kind fails and
  // leaves the caller's variable as it was.
  template <class V>
  void Access(bool set, FuzzedDataProvider& in, const std::string& name,
              const std::string& context) {
    Chain chain{set ? Failure("Error setting element '" + name + "'", "SetElement")
                    : Failure("Error getting element '" + name + "'", "GetElement")};
    if constexpr (kHollow<V> != nullptr) {
      if (set && in.ConsumeBool()) {  // copying the array fails before the map is asked
        ExpectRaise([&] { store->SetElement(name.c_str(), *Broken<V>()); },
                    {chain[0], Uninitialised<V>()}, context + " without implementation");
        return;
      }
    }
    V value{};
    Make(in, value);
    const std::string before = Bytes(value);
    auto call = [&] {
      set ? store->SetElement(name.c_str(), value) : store->GetElement(name.c_str(), value);
    };
    const Link writing{"Error writing parameter", kMap + "WriteParameter", kMapFile};
    const auto entry = model.kinds.find(name);
    if (entry == model.kinds.end()) {
      if (set) chain.push_back(writing);
      chain.push_back(
          set ? Link{"Unknown parameter name", kMap + "WriteParameter", kMapFile, false,
                     "Zt.ParInvalidNameException"}
              : Failure("Element '" + name + "' doesn't exist in meta data", "GetElement"));
    } else if (entry->second != kKind<V>) {
      if (set) chain.push_back(writing);
      chain.push_back(WrongType(entry->second, kKind<V>, set ? "WriteParameter" : "ReadParameter"));
    }
    if (chain.size() > 1) {
      ExpectRaise(call, chain, context);
      ZT_FUZZ_CHECK(Bytes(value) == before, context + ": the failed call changed the variable");
      return;
    }
    call();
    if constexpr (kKind<V> <= 4) {
      std::string& stored = model.Value(kKind<V>, name);
      if (set) stored = Bytes(value);
      ZT_FUZZ_CHECK(Bytes(value) == stored, context + ": another value");
    }
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  ZtFuzz::Run<Store, 2>(in);
  return 0;
}
