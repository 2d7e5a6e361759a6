// Random operations on two CZtMetaData stores beside models (names with kinds, single values):
// reads must match, and refusals come where the model says and keep the caller's variable.

#include <map>
#include <memory>
#include <type_traits>

#include "ZtCoreEx.h"
#include "ZtFuzzCheck.h"

using namespace Zt;
using namespace ZtFuzz;

namespace {

// The kind SetElement and GetElement demand of each form; AddElement records arrays as kind 2.
template <class V>
constexpr int kKind = std::is_same_v<V, unsigned>         ? 2
                      : std::is_same_v<V, double>         ? 3
                      : std::is_same_v<V, CZtString>      ? 4
                      : std::is_same_v<V, CZtArrayUInt>   ? 6
                      : std::is_same_v<V, CZtArrayDouble> ? 7
                                                          : 8;
template <class V>
constexpr int kRecorded = kKind<V> <= 4 ? kKind<V> : 2;

// Random values of each form.
void Make(FuzzedDataProvider& in, unsigned& v) { v = in.ConsumeIntegral<unsigned>(); }
void Make(FuzzedDataProvider& in, double& v) { v = ZtFuzz::AnyValue<double>(in); }
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

// Names with the kind each was added as, and single values by kind (arrays are never read back).
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
    const unsigned operation = in.ConsumeIntegralInRange(0u, 6u);
    if (operation < 3) {
      const int form = in.ConsumeIntegralInRange(0, 5);
      const std::string name = AnyText(in, 3);
      using Form = void (Store::*)(unsigned, FuzzedDataProvider&, const std::string&);
      const Form forms[] = {&Store::Typed<unsigned>,       &Store::Typed<double>,
                            &Store::Typed<CZtString>,      &Store::Typed<CZtArrayUInt>,
                            &Store::Typed<CZtArrayDouble>, &Store::Typed<CZtArrayString>};
      (this->*forms[form])(operation, in, name);
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
      default:  // copies share no element; a store assigned to itself stays
        if (in.ConsumeBool()) {
          *store = *other.store;
        } else {
          store = std::make_unique<CZtMetaData>(*other.store);
        }
        model = Model(other.model);
        break;
    }
  }

  void Verify() const {
    ZT_FUZZ_CHECK(store->GetElementCount() == model.kinds.size(), "GetElementCount");
  }

  // AddElement refuses a name in use; Set and GetElement an unknown name or another kind.
  template <class V>
  void Typed(unsigned operation, FuzzedDataProvider& in, const std::string& name) {
    const char* const verbs[] = {"AddElement '", "SetElement '", "GetElement '"};
    const std::string context = verbs[operation] + name + "' as kind " + std::to_string(kKind<V>);
    const auto entry = model.kinds.find(name);
    const CZtString description = AnyText(in, 4).c_str();
    V value{};
    Make(in, value);
    const std::string before = Bytes(value);
    auto call = [&] {
      if (operation == 0) store->AddElement(name.c_str(), description, value);
      if (operation == 1) store->SetElement(name.c_str(), value);
      if (operation == 2) store->GetElement(name.c_str(), value);
    };
    if (operation == 0 ? entry != model.kinds.end()
                       : entry == model.kinds.end() || entry->second != kKind<V>) {
      ExpectRaise(call, context);
      ZT_FUZZ_CHECK(Bytes(value) == before, context + ": the failed call changed the variable");
      return;
    }
    call();
    if (operation == 0) model.kinds[name] = kRecorded<V>;
    if constexpr (kKind<V> <= 4) {
      std::string& stored = model.Value(kKind<V>, name);
      if (operation < 2) stored = Bytes(value);
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
