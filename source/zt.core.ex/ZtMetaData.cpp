#include "ZtMetaData.h"

#include <new>
#include <type_traits>
#include <vector>

#include "ZtParMap.h"
#include "ZtRaise.h"

namespace Zt {

namespace {

constexpr const char* ZtSourceFile = "ZtMetaData";

using TParMap = CZtParMap<std::string, std::string>;

// How each typed form lives in the map: the type of its stored value, and the
// kind that AddElement records. The array forms record 'unsigned' and not
// their own array kind; reads and writes through them demand the array kind,
// so they refuse elements added through them. Callers rely on this.
template <class V>
struct Form {
  using Stored = V;
  static constexpr EParType recorded = ZtParKind<V>::value;
};
template <>
struct Form<CZtArrayUInt> {
  using Stored = std::vector<unsigned int>;
  static constexpr EParType recorded = ParUnsigned;
};
template <>
struct Form<CZtArrayDouble> {
  using Stored = std::vector<double>;
  static constexpr EParType recorded = ParUnsigned;
};
template <>
struct Form<CZtArrayString> {
  using Stored = std::vector<CZtString>;
  static constexpr EParType recorded = ParUnsigned;
};

template <class V>
constexpr bool kIsArray = !std::is_same_v<typename Form<V>::Stored, V>;

// The key ends at the name's first NUL.
std::string Key(const CZtString& name) { return std::string(name.ToCString()); }

// Empties the list, then appends the array's elements in index order. A
// numeric array without implementation raises from Length, after the list
// was emptied; a string array without one counts as empty.
template <class TArray, class TList>
void CopyToList(const TArray& array, TList& list) {
  list.clear();
  const unsigned long long length = array.Length();
  for (unsigned long long i = 0; i < length; ++i) {
    list.push_back(array[i]);
  }
}

// The value as the map keeps it: a scalar or text as it is, an array as a
// new list.
template <class V>
decltype(auto) ToStored(const V& value) {
  if constexpr (kIsArray<V>) {
    typename Form<V>::Stored list;
    CopyToList(value, list);
    return list;
  } else {
    return (value);
  }
}

[[noreturn]] void RaiseExternal(const char* function, const CZtString& name) {
  ZT_RAISE(function, CZtString() << "Element '" << name << "' is external");
}

template <class V>
void AddTo(TParMap& map, const CZtString& name, const CZtString& description, const V& value) {
  const std::string key = Key(name);
  if (map.HasParameter(key)) {
    ZT_RAISE("Zt::CZtMetaData::AddElement", CZtString()
                                                << "Element '" << name << "' already exists");
  }
  map.GetDirectory()[key].Assign(key, Form<V>::recorded, description.ToCString(), {}, {});
  auto& slot = map.GetValue<typename Form<V>::Stored>(key).Value;
  if constexpr (kIsArray<V>) {
    CopyToList(value, slot);
  } else {
    slot = value;
  }
}

template <class V>
void SetIn(TParMap& map, const CZtString& name, const V& value) {
  constexpr const char* function = "Zt::CZtMetaData::SetElement";
  try {
    if (!map.WriteParameter(Key(name), ToStored(value))) {
      RaiseExternal(function, name);
    }
  } catch (CIException& e) {
    ZT_WRAP(function, CZtString() << "Error setting element '" << name << "'", e);
  }
}

// An array is read into a list first, so that it stays untouched unless the
// read succeeds.
template <class V>
void GetFrom(TParMap& map, const CZtString& name, V& value) {
  constexpr const char* function = "Zt::CZtMetaData::GetElement";
  try {
    if (!map.HasParameter(Key(name))) {
      ZT_RAISE(function, CZtString() << "Element '" << name << "' doesn't exist in meta data");
    }
    if constexpr (kIsArray<V>) {
      typename Form<V>::Stored list;
      if (!map.ReadParameter(Key(name), list)) {
        RaiseExternal(function, name);
      }
      value.Resize(list.size());
      for (std::size_t i = 0; i < list.size(); ++i) {
        value[i] = list[i];
      }
    } else if (!map.ReadParameter(Key(name), value)) {
      RaiseExternal(function, name);
    }
  } catch (CIException& e) {
    ZT_WRAP(function, CZtString() << "Error getting element '" << name << "'", e);
  }
}

// This store's own words for the kinds, not the parameter map's.
const char* TypeWord(EParType kind) {
  switch (kind) {
    case ParUnsigned: return "uint";
    case ParDouble: return "double";
    case ParString: return "string";
    default: return "unknown";
  }
}

}  // namespace

CZtMetaData::CZtMetaData() : m_pData(nullptr), m_LastError() { Init(); }

CZtMetaData::CZtMetaData(const CZtMetaData& other) : CZtMetaData() { *m_pData = *other.m_pData; }

CZtMetaData::~CZtMetaData() { Finalize(); }

CZtMetaData& CZtMetaData::operator=(const CZtMetaData& other) {
  *m_pData = *other.m_pData;
  return *this;
}

// If the map's own Init fails, the map object stays allocated: nothing holds
// it any more once the constructor has raised.
void CZtMetaData::Init() {
  constexpr const char* function = "Zt::CZtMetaData::Init";
  try {
    if (m_pData != nullptr) {
      ZT_RAISE(function, "meta-data already intitialized");
    }
    m_pData = new TParMap();
    m_pData->Init();
  } catch (std::bad_alloc& e) {
    ZT_RAISE_OUT_OF_MEMORY(function, e);
  } catch (CIException& e) {
    ZT_WRAP(function, "Error initializing meta-data", e);
  }
}

void CZtMetaData::Finalize() {
  constexpr const char* function = "Zt::CZtMetaData::Finalize";
  try {
    if (m_pData == nullptr) {
      ZT_RAISE(function, "Data pointer is null");
    }
    delete m_pData;
    m_pData = nullptr;
  } catch (CIException& e) {
    ZT_WRAP(function, "Error finalizing meta-data", e);
  }
}

void CZtMetaData::Clear() { m_pData->Clear(); }

CZtString CZtMetaData::GetLastError() {
  CZtString text(m_LastError);
  m_LastError = "";
  return text;
}

unsigned int CZtMetaData::GetElementCount() {
  return static_cast<unsigned int>(m_pData->GetDirectory().size());
}

void CZtMetaData::GetElementNameType(unsigned int index, CZtString& name, CZtString& type) {
  constexpr const char* function = "Zt::CZtMetaData::GetElementNameType";
  try {
    TParMap::TDirectory& directory = m_pData->GetDirectory();
    if (index >= directory.size()) {
      ZT_RAISE(function, "Index parameter out of range");
    }
    // The end is tested before every step and after the last, although the
    // test above leaves this nothing to find.
    auto entry = directory.begin();
    for (unsigned int step = 0; step < index; ++step) {
      if (entry == directory.end()) {
        ZT_RAISE(function, "Iterator index out of range");
      }
      ++entry;
    }
    if (entry == directory.end()) {
      ZT_RAISE(function, "Iterator index out of range");
    }
    name = entry->first.c_str();
    type = TypeWord(entry->second.kind);
  } catch (CIException& e) {
    ZT_WRAP(function, "Error Getting Element type", e);
  }
}

bool CZtMetaData::HasElement(const CZtString& name) { return m_pData->HasParameter(Key(name)); }

// --- The six typed forms, each one of the templates above ----------------------

void CZtMetaData::AddElement(const CZtString& name, const CZtString& description,
                             unsigned int value) {
  AddTo(*m_pData, name, description, value);
}
void CZtMetaData::AddElement(const CZtString& name, const CZtString& description, double value) {
  AddTo(*m_pData, name, description, value);
}
void CZtMetaData::AddElement(const CZtString& name, const CZtString& description,
                             const CZtString& value) {
  AddTo(*m_pData, name, description, value);
}
void CZtMetaData::AddElement(const CZtString& name, const CZtString& description,
                             const CZtArrayUInt& value) {
  AddTo(*m_pData, name, description, value);
}
void CZtMetaData::AddElement(const CZtString& name, const CZtString& description,
                             const CZtArrayDouble& value) {
  AddTo(*m_pData, name, description, value);
}
void CZtMetaData::AddElement(const CZtString& name, const CZtString& description,
                             const CZtArrayString& value) {
  AddTo(*m_pData, name, description, value);
}

void CZtMetaData::SetElement(const CZtString& name, unsigned int value) {
  SetIn(*m_pData, name, value);
}
void CZtMetaData::SetElement(const CZtString& name, double value) { SetIn(*m_pData, name, value); }
void CZtMetaData::SetElement(const CZtString& name, const CZtString& value) {
  SetIn(*m_pData, name, value);
}
void CZtMetaData::SetElement(const CZtString& name, const CZtArrayUInt& value) {
  SetIn(*m_pData, name, value);
}
void CZtMetaData::SetElement(const CZtString& name, const CZtArrayDouble& value) {
  SetIn(*m_pData, name, value);
}
void CZtMetaData::SetElement(const CZtString& name, const CZtArrayString& value) {
  SetIn(*m_pData, name, value);
}

void CZtMetaData::GetElement(const CZtString& name, unsigned int& value) {
  GetFrom(*m_pData, name, value);
}
void CZtMetaData::GetElement(const CZtString& name, double& value) {
  GetFrom(*m_pData, name, value);
}
void CZtMetaData::GetElement(const CZtString& name, CZtString& value) {
  GetFrom(*m_pData, name, value);
}
void CZtMetaData::GetElement(const CZtString& name, CZtArrayUInt& value) {
  GetFrom(*m_pData, name, value);
}
void CZtMetaData::GetElement(const CZtString& name, CZtArrayDouble& value) {
  GetFrom(*m_pData, name, value);
}
void CZtMetaData::GetElement(const CZtString& name, CZtArrayString& value) {
  GetFrom(*m_pData, name, value);
}

}  // namespace Zt
