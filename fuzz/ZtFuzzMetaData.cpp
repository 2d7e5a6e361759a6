// Random sequences of operations on two CZtMetaData stores against a model of
// each: the names in byte order with the kind each was added as, and the
// values of the three single-value tables. Every read is compared with the
// model, every failure with the chain of exceptions it must raise, and a
// failed read must leave the caller's variable as it was.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <string>

#include "ZtCoreEx.h"
#include "ZtFuzzCheck.h"
#include "ZtHollowArray.h"

using Zt::CZtArrayDouble;
using Zt::CZtArrayString;
using Zt::CZtArrayUInt;
using Zt::CZtMetaData;
using Zt::CZtString;
using ZtFuzz::Chain;
using ZtFuzz::ExpectRaise;
using ZtFuzz::Link;
using ZtTest::Hollow;

namespace {

constexpr int kMaxOperations = 64;
const char* const kFile = "ZtMetaData";
const char* const kMapFile = "source\\zt.core.development\\ZtParMap";
const std::string kMap =
    "Zt::CZtParMap<class std::basic_string<char,struct std::char_traits<char>,class "
    "std::allocator<char> >,class std::basic_string<char,struct std::char_traits<char>,class "
    "std::allocator<char> > >::";

std::string Member(const char* name) { return std::string("Zt::CZtMetaData::") + name; }

// Kinds of parameter: the text the map reports for each.
std::string KindText(int kind) {
  switch (kind) {
    case 2: return "unsigned";
    case 3: return "double";
    case 4: return "string";
    case 6: return "unsigned[]";
    case 7: return "double[]";
    default: return "string[]";
  }
}

// A text as a CZtString holds it: up to the first NUL.
std::string AnyText(FuzzedDataProvider& in, std::size_t maxLength) {
  const std::string text = in.ConsumeRandomLengthString(maxLength);
  return text.substr(0, text.find('\0'));
}

// --- Values as bytes, so that NaNs compare equal to themselves -------------------

std::string Bytes(unsigned int v) {
  return std::string(reinterpret_cast<const char*>(&v), sizeof v);
}
std::string Bytes(double v) { return std::string(reinterpret_cast<const char*>(&v), sizeof v); }
std::string Bytes(const CZtString& v) { return v.ToCString(); }
template <class A>
std::string ArrayBytes(const A& array) {
  std::string bytes = std::to_string(array.Length()) + ":";
  for (unsigned long long i = 0; i < array.Length(); ++i) {
    const std::string element = Bytes(array[i]);
    bytes += std::to_string(element.size()) + ":" + element;
  }
  return bytes;
}
std::string Bytes(const CZtArrayUInt& v) { return ArrayBytes(v); }
std::string Bytes(const CZtArrayDouble& v) { return ArrayBytes(v); }
std::string Bytes(const CZtArrayString& v) { return ArrayBytes(v); }

// --- The six typed forms ----------------------------------------------------------
// The kind AddElement records, the kind SetElement and GetElement demand, and
// a random value.

template <class V>
struct Form;
template <>
struct Form<unsigned int> {
  static constexpr int kRecorded = 2, kDemanded = 2;
  static unsigned int Make(FuzzedDataProvider& in) { return in.ConsumeIntegral<unsigned int>(); }
};
template <>
struct Form<double> {
  static constexpr int kRecorded = 3, kDemanded = 3;
  static double Make(FuzzedDataProvider& in) {
    const std::uint64_t bits = in.ConsumeIntegral<std::uint64_t>();
    double v;
    std::memcpy(&v, &bits, sizeof v);
    return v;
  }
};
template <>
struct Form<CZtString> {
  static constexpr int kRecorded = 4, kDemanded = 4;
  static CZtString Make(FuzzedDataProvider& in) { return AnyText(in, 8).c_str(); }
};
template <class A, class E, int Demanded>
struct ArrayForm {
  static constexpr int kRecorded = 2, kDemanded = Demanded;
  static A Make(FuzzedDataProvider& in) {
    A array(in.ConsumeIntegralInRange<unsigned long long>(0, 4));
    for (unsigned long long i = 0; i < array.Length(); ++i) array[i] = Form<E>::Make(in);
    return array;
  }
};
template <>
struct Form<CZtArrayUInt> : ArrayForm<CZtArrayUInt, unsigned int, 6> {};
template <>
struct Form<CZtArrayDouble> : ArrayForm<CZtArrayDouble, double, 7> {};
template <>
struct Form<CZtArrayString> : ArrayForm<CZtArrayString, CZtString, 8> {};

// The array the store meets now and then instead of a value: a numeric one
// without implementation, which raises from Length, or an invalid string
// array, which counts as empty.
template <class V>
struct Broken {
  static constexpr bool kRaises = false;
  V value{};
};
template <>
struct Broken<CZtArrayUInt> {
  static constexpr bool kRaises = true;
  static constexpr const char* kClass = "CZtArrayUInt";
  Hollow<CZtArrayUInt> value;
};
template <>
struct Broken<CZtArrayDouble> {
  static constexpr bool kRaises = true;
  static constexpr const char* kClass = "CZtArrayDouble";
  Hollow<CZtArrayDouble> value;
};
template <>
struct Broken<CZtArrayString> {
  static constexpr bool kRaises = false;
  Broken() { value.Delete(); }
  CZtArrayString value;
};

// --- The model ----------------------------------------------------------------------

// Names in the order of their bytes as unsigned values (std::string's own
// order) with the kind each was added as, and the single-value tables by
// kind. Arrays added to the store can't be read back through any form, so
// their tables are left out.
struct Model {
  std::map<std::string, int> kinds;
  std::map<std::string, std::string> values[3];  // kinds 2, 3 and 4

  // A read or write of a single value finds its record, or creates one
  // holding zero or the empty text.
  std::string& Value(int kind, const std::string& name) {
    auto& table = values[kind - 2];
    auto record = table.find(name);
    if (record == table.end()) {
      const std::string zero = kind == 2 ? Bytes(0u) : kind == 3 ? Bytes(0.0) : std::string();
      record = table.emplace(name, zero).first;
    }
    return record->second;
  }
};

class Run {
  struct Slot {
    std::unique_ptr<CZtMetaData> store = std::make_unique<CZtMetaData>();
    Model model;
  };

public:
  explicit Run(FuzzedDataProvider& in) : m_In(in) {}

  void Go() {
    for (int n = 0; n < kMaxOperations && m_In.remaining_bytes() > 0; ++n) {
      Slot& s = m_Slots[m_In.ConsumeIntegralInRange(0, 1)];
      const unsigned operation = m_In.ConsumeIntegralInRange(0, 7);
      if (operation < 3) {
        WithForm(m_In.ConsumeIntegralInRange(0, 5), [&](auto form) {
          using V = typename decltype(form)::type;
          const std::string name = AnyText(m_In, 3);
          if (operation == 0) Add<V>(s, name);
          if (operation == 1) Set<V>(s, name);
          if (operation == 2) Get<V>(s, name);
        });
      } else {
        Other(operation, s);
      }
      for (Slot& slot : m_Slots) {
        ZT_FUZZ_CHECK(slot.store->GetElementCount() == slot.model.kinds.size(),
                      "count " + std::to_string(slot.store->GetElementCount()) + ", expected " +
                          std::to_string(slot.model.kinds.size()));
      }
    }
  }

private:
  template <class V>
  struct Tag {
    using type = V;
  };
  template <class F>
  static void WithForm(int form, F&& f) {
    switch (form) {
      case 0: f(Tag<unsigned int>{}); break;
      case 1: f(Tag<double>{}); break;
      case 2: f(Tag<CZtString>{}); break;
      case 3: f(Tag<CZtArrayUInt>{}); break;
      case 4: f(Tag<CZtArrayDouble>{}); break;
      default: f(Tag<CZtArrayString>{}); break;
    }
  }

  static Link WrongType(int recorded, int demanded, const char* function) {
    return {"Wrong type for parameter; Expected type '" + KindText(recorded) + "' differs from '" +
                KindText(demanded) + "'",
            kMap + function, kMapFile, "Zt.ParInvalidTypeException"};
  }

  template <class V>
  void Add(Slot& s, const std::string& name) {
    const std::string context =
        "AddElement '" + name + "' as kind " + std::to_string(Form<V>::kDemanded);
    const bool exists = s.model.kinds.count(name) != 0;
    const CZtString description = AnyText(m_In, 4).c_str();
    if (m_In.ConsumeBool()) {
      const Broken<V> broken{};
      if (exists) {
        ExpectRaise([&] { s.store->AddElement(name.c_str(), description, broken.value); },
                    {{"Element '" + name + "' already exists", Member("AddElement"), kFile}},
                    context);
        return;
      }
      s.model.kinds[name] = Form<V>::kRecorded;
      if constexpr (Broken<V>::kRaises) {
        // The element stands before the array is asked for its length.
        ExpectRaise([&] { s.store->AddElement(name.c_str(), description, broken.value); },
                    {{"Nullptr --> Object not initialized",
                      std::string("Zt::") + Broken<V>::kClass + "::Length",
                      std::string(Broken<V>::kClass).substr(1)}},
                    context + " without implementation");
      } else {
        s.store->AddElement(name.c_str(), description, broken.value);
        if constexpr (Form<V>::kDemanded <= 4) {
          s.model.Value(Form<V>::kRecorded, name) = Bytes(broken.value);
        }
      }
      return;
    }
    const V value = Form<V>::Make(m_In);
    if (exists) {
      ExpectRaise([&] { s.store->AddElement(name.c_str(), description, value); },
                  {{"Element '" + name + "' already exists", Member("AddElement"), kFile}},
                  context);
      return;
    }
    s.store->AddElement(name.c_str(), description, value);
    s.model.kinds[name] = Form<V>::kRecorded;
    if constexpr (Form<V>::kDemanded <= 4) {
      s.model.Value(Form<V>::kRecorded, name) = Bytes(value);
    }
  }

  template <class V>
  void Set(Slot& s, const std::string& name) {
    const std::string context =
        "SetElement '" + name + "' as kind " + std::to_string(Form<V>::kDemanded);
    const Link outer{"Error setting element '" + name + "'", Member("SetElement"), kFile};
    if constexpr (Broken<V>::kRaises) {
      if (m_In.ConsumeBool()) {
        // Copying the array fails before the map is asked.
        const Broken<V> broken{};
        ExpectRaise([&] { s.store->SetElement(name.c_str(), broken.value); },
                    {outer,
                     {"Nullptr --> Object not initialized",
                      std::string("Zt::") + Broken<V>::kClass + "::Length",
                      std::string(Broken<V>::kClass).substr(1)}},
                    context + " without implementation");
        return;
      }
    }
    const V value = Form<V>::Make(m_In);
    const Link writing{"Error writing parameter", kMap + "WriteParameter", kMapFile};
    const auto entry = s.model.kinds.find(name);
    if (entry == s.model.kinds.end()) {
      ExpectRaise([&] { s.store->SetElement(name.c_str(), value); },
                  {outer,
                   writing,
                   {"Unknown parameter name", kMap + "WriteParameter", kMapFile,
                    "Zt.ParInvalidNameException"}},
                  context);
      return;
    }
    if (entry->second != Form<V>::kDemanded) {
      ExpectRaise([&] { s.store->SetElement(name.c_str(), value); },
                  {outer, writing, WrongType(entry->second, Form<V>::kDemanded, "WriteParameter")},
                  context);
      return;
    }
    s.store->SetElement(name.c_str(), value);
    if constexpr (Form<V>::kDemanded <= 4) {
      s.model.Value(Form<V>::kDemanded, name) = Bytes(value);
    }
  }

  template <class V>
  void Get(Slot& s, const std::string& name) {
    const std::string context =
        "GetElement '" + name + "' as kind " + std::to_string(Form<V>::kDemanded);
    V value = Form<V>::Make(m_In);
    const std::string before = Bytes(value);
    const Link outer{"Error getting element '" + name + "'", Member("GetElement"), kFile};
    const auto entry = s.model.kinds.find(name);
    if (entry == s.model.kinds.end()) {
      ExpectRaise(
          [&] { s.store->GetElement(name.c_str(), value); },
          {outer,
           {"Element '" + name + "' doesn't exist in meta data", Member("GetElement"), kFile}},
          context);
    } else if (entry->second != Form<V>::kDemanded) {
      ExpectRaise([&] { s.store->GetElement(name.c_str(), value); },
                  {outer, WrongType(entry->second, Form<V>::kDemanded, "ReadParameter")}, context);
    } else {
      s.store->GetElement(name.c_str(), value);
      if constexpr (Form<V>::kDemanded <= 4) {
        const std::string& expected = s.model.Value(Form<V>::kDemanded, name);
        ZT_FUZZ_CHECK(Bytes(value) == expected, context + ": another value");
      }
      return;
    }
    ZT_FUZZ_CHECK(Bytes(value) == before, context + ": the failed read changed the variable");
  }

  void Other(unsigned operation, Slot& s) {
    Slot& other = m_Slots[m_In.ConsumeIntegralInRange(0, 1)];
    switch (operation) {
      case 3: {  // every name and type by index, and an index past the end
        const char* const words[] = {"uint", "double", "string"};
        unsigned int index = 0;
        for (const auto& entry : s.model.kinds) {
          CZtString name, type;
          s.store->GetElementNameType(index, name, type);
          ZT_FUZZ_CHECK(entry.first == name.ToCString() &&
                            std::string(words[entry.second - 2]) == type.ToCString(),
                        "element " + std::to_string(index) + " is '" + name.ToCString() + "' " +
                            type.ToCString() + ", expected '" + entry.first + "'");
          ++index;
        }
        const unsigned int beyond = m_In.ConsumeBool() ? index : m_In.ConsumeIntegral<unsigned>();
        if (beyond < index) break;
        CZtString name("name before"), type("type before");
        ExpectRaise([&] { s.store->GetElementNameType(beyond, name, type); },
                    {{"Error Getting Element type", Member("GetElementNameType"), kFile},
                     {"Index parameter out of range", Member("GetElementNameType"), kFile}},
                    "GetElementNameType " + std::to_string(beyond));
        ZT_FUZZ_CHECK(std::string(name.ToCString()) == "name before" &&
                          std::string(type.ToCString()) == "type before",
                      "a failed GetElementNameType changed its arguments");
        break;
      }
      case 4: {
        const std::string name = AnyText(m_In, 3);
        ZT_FUZZ_CHECK(s.store->HasElement(name.c_str()) == (s.model.kinds.count(name) != 0),
                      "HasElement '" + name + "'");
        break;
      }
      case 5:
        s.store->Clear();
        s.model = Model();
        break;
      case 6:  // copies share no element; a store assigned to itself stays
        if (m_In.ConsumeBool()) {
          *s.store = *other.store;
        } else {
          s.store = std::make_unique<CZtMetaData>(*other.store);
        }
        s.model = Model(other.model);
        break;
      default:
        ZT_FUZZ_CHECK(*s.store->GetLastError().ToCString() == '\0', "GetLastError is not empty");
        break;
    }
  }

  FuzzedDataProvider& m_In;
  Slot m_Slots[2];
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  Run(in).Go();
  return 0;
}
