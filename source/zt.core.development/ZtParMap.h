#ifndef ZT_DEVELOPMENT_ZTPARMAP_H
#define ZT_DEVELOPMENT_ZTPARMAP_H

// A private table of typed parameters.
//
// A parameter has a name, a kind, access flags, an optional constraint that
// may refuse a new value and an optional event handler that hears of reads and
// writes and may hold the value outside the map (an "external" parameter).
// The directory of entries and the six value tables are separate sorted maps,
// joined by the key alone.
//
// Reads and writes check in a fixed order: the name, the access flag, the
// kind, then (for writes) the constraint, all before anything is stored. A
// write that an event handler refuses by raising is undone.

#include <cstring>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "ZtParException.h"
#include "ZtRaise.h"
#include "ZtSafePtrRepo.h"
#include "ZtString.h"

namespace Zt {

// The kind of a parameter. Kinds 0, 1 and 5 have a name but no value table.
enum EParType : int {
  ParNone = 0,
  ParInt = 1,
  ParUnsigned = 2,
  ParDouble = 3,
  ParString = 4,
  ParIntArray = 5,
  ParUnsignedArray = 6,
  ParDoubleArray = 7,
  ParStringArray = 8
};

// "none", "int", "unsigned", "double", "string", "int[]", "unsigned[]",
// "double[]", "string[]", and "unknown" for any other value.
CZtString GetParTypeName(EParType kind);

// The kind that each of the six value types stands for.
template <class T>
struct ZtParKind;
template <>
struct ZtParKind<unsigned int> : std::integral_constant<EParType, ParUnsigned> {};
template <>
struct ZtParKind<double> : std::integral_constant<EParType, ParDouble> {};
template <>
struct ZtParKind<CZtString> : std::integral_constant<EParType, ParString> {};
template <>
struct ZtParKind<std::vector<unsigned int>> : std::integral_constant<EParType, ParUnsignedArray> {};
template <>
struct ZtParKind<std::vector<double>> : std::integral_constant<EParType, ParDoubleArray> {};
template <>
struct ZtParKind<std::vector<CZtString>> : std::integral_constant<EParType, ParStringArray> {};

template <class TKey, class TText>
class CZtParMap;

namespace Constraint {

// What a constraint offers the map. `value` points at the caller's new value,
// of the type that `kind` names.
//
// Objects behind these interfaces are shared through safe pointers, whose
// last departure releases only their storage: nobody destroys them through
// the interface, so the destructor is not public.
class CAny {
public:
  // True if the value is acceptable.
  virtual bool Check(const void* value, EParType kind) = 0;
  // Why the value isn't.
  virtual CZtString Describe(const void* value, EParType kind) = 0;

protected:
  CAny() = default;
  CAny(const CAny&) = default;
  CAny& operator=(const CAny&) = default;
  ~CAny() = default;
};

}  // namespace Constraint

// An event handler of a parameter. It runs on the caller's thread inside the
// map operation and may call back into the map.
template <class TKey, class TText>
class CZtParEvent {
public:
  // Before a read, so that the handler can bring the value up to date.
  virtual void OnRead(CZtParMap<TKey, TText>* map, const TKey* key) = 0;
  // After a write, or instead of it for an external parameter. Raising a
  // CIException refuses the value.
  virtual void OnWrite(CZtParMap<TKey, TText>* map, const TKey* key) = 0;

protected:
  CZtParEvent() = default;
  CZtParEvent(const CZtParEvent&) = default;
  CZtParEvent& operator=(const CZtParEvent&) = default;
  ~CZtParEvent() = default;
};

// Orders keys by their bytes taken as unsigned values; on equal bytes the
// shorter key comes first.
struct CZtByteLess {
  bool operator()(const std::string& a, const std::string& b) const {
    const std::size_t common = a.size() < b.size() ? a.size() : b.size();
    const int order = common == 0 ? 0 : std::memcmp(a.data(), b.data(), common);
    return order != 0 ? order < 0 : a.size() < b.size();
  }
};

// One parameter's description in the directory.
class CZtParEntry {
public:
  using TConstraintPtr = CZtSafePtr<Constraint::CAny>;
  using TEventPtr = CZtSafePtr<CZtParEvent<std::string, std::string>>;

  // Fills the entry completely: readable and writable, not external, and the
  // given kind, texts and shared objects.
  void Assign(std::string entryName, EParType entryKind, std::string entryDescription,
              TConstraintPtr entryConstraint, TEventPtr entryEvent);

  bool readable = false;
  bool writable = false;
  bool external = false;  // the value lives with the event handler only
  std::string name;       // a copy of the key, for constraint messages
  EParType kind = ParNone;
  std::string description;  // stored and copied, never read
  TConstraintPtr constraint;
  TEventPtr event;
};

static_assert(sizeof(bool) == 1, "the access flags are single bytes");

// A parameter's value record. Only the first slot is read and written; the
// other two are created zero or empty and travel with the record.
template <class T>
struct CZtParValue {
  T Value{};
  T Extra1{};
  T Extra2{};
};

// The one instantiation there is: std::string keys and description texts.
template <>
class CZtParMap<std::string, std::string> {
public:
  static constexpr const char* ZtSourceFile = CZtParameterException::File;

  using TEvent = CZtParEvent<std::string, std::string>;
  using TDirectory = std::map<std::string, CZtParEntry, CZtByteLess>;
  template <class T>
  using TTable = std::map<std::string, CZtParValue<T>, CZtByteLess>;

  // No tables until Init.
  CZtParMap();
  CZtParMap(const CZtParMap&) = delete;
  // Finalize.
  virtual ~CZtParMap();

  // Replaces each table with a deep copy of the other's. Entries copied this
  // way share their constraint and event objects with the source.
  CZtParMap& operator=(const CZtParMap& other);

  // Creates the seven tables; raises if they exist already.
  void Init();
  // Deletes the tables that exist, with their contents.
  void Finalize();
  // Empties the tables that exist; they remain.
  void Clear();

  bool HasParameter(std::string key) const;

  // T is one of the six value types. True if the value was stored or
  // delivered; false for an external parameter.
  template <class T>
  bool WriteParameter(std::string key, const T& value);
  template <class T>
  bool ReadParameter(std::string key, T& value);

  // The directory, for those who add entries and walk them in key order.
  TDirectory& GetDirectory() { return *m_pDirectory; }
  // The value record of `key` in the table of T, created zero if missing.
  template <class T>
  CZtParValue<T>& GetValue(const std::string& key) {
    return (*Table<T>())[key];
  }

private:
  template <class T>
  TTable<T>* Table() const {
    if constexpr (std::is_same_v<T, unsigned int>) {
      return m_pUnsigned;
    } else if constexpr (std::is_same_v<T, double>) {
      return m_pDouble;
    } else if constexpr (std::is_same_v<T, CZtString>) {
      return m_pString;
    } else if constexpr (std::is_same_v<T, std::vector<unsigned int>>) {
      return m_pUnsignedArray;
    } else if constexpr (std::is_same_v<T, std::vector<double>>) {
      return m_pDoubleArray;
    } else {
      static_assert(std::is_same_v<T, std::vector<CZtString>>, "not a parameter value type");
      return m_pStringArray;
    }
  }

  // Calls f(mine, theirs) for the seven table pointers of `a` and `b`, in the
  // order of the fields.
  template <class F>
  static void ForEachTable(CZtParMap& a, const CZtParMap& b, F&& f);

  // "Zt::CZtParMap<...>::" followed by `member`, as failures name it.
  static std::string FunctionName(const char* member);
  static CZtString TypeMismatch(EParType expected, EParType given);

  // The entry of `key` if it exists, grants the access flag and has `kind`;
  // otherwise raises the matching parameter exception.
  template <class TDenied>
  CZtParEntry& CheckedEntry(const std::string& key, bool CZtParEntry::*access, EParType kind,
                            const char* member);

  TDirectory* m_pDirectory;
  TTable<unsigned int>* m_pUnsigned;
  TTable<double>* m_pDouble;
  TTable<CZtString>* m_pString;
  TTable<std::vector<unsigned int>>* m_pUnsignedArray;
  TTable<std::vector<double>>* m_pDoubleArray;
  TTable<std::vector<CZtString>>* m_pStringArray;
};

template <class TDenied>
CZtParEntry& CZtParMap<std::string, std::string>::CheckedEntry(const std::string& key,
                                                               bool CZtParEntry::*access,
                                                               EParType kind, const char* member) {
  auto found = m_pDirectory->find(key);
  if (found == m_pDirectory->end()) {
    throw CZtParInvalidNameException("", FunctionName(member).c_str(), __LINE__, nullptr);
  }
  CZtParEntry& entry = found->second;
  if (!(entry.*access)) {
    throw TDenied("", FunctionName(member).c_str(), __LINE__, nullptr);
  }
  if (entry.kind != kind) {
    throw CZtParInvalidTypeException(TypeMismatch(entry.kind, kind), FunctionName(member).c_str(),
                                     __LINE__, nullptr);
  }
  return entry;
}

template <class T>
bool CZtParMap<std::string, std::string>::WriteParameter(std::string key, const T& value) {
  constexpr EParType kind = ZtParKind<T>::value;
  try {
    CZtParEntry& entry = CheckedEntry<CZtParAccessWriteException>(key, &CZtParEntry::writable, kind,
                                                                  "WriteParameter");

    // The constraint sees the value before anything is stored.
    Constraint::CAny* constraint = entry.constraint.Get();
    if (constraint != nullptr && !constraint->Check(&value, kind)) {
      const CZtString detail =
          CZtString("'") + entry.name.c_str() + "': " + constraint->Describe(&value, kind);
      throw CZtParInvalidValueException(detail, FunctionName("WriteParameter").c_str(), __LINE__,
                                        nullptr);
    }

    TEvent* event = entry.event.Get();
    if (entry.external) {
      if (event != nullptr) {
        event->OnWrite(this, &key);
      }
      return false;
    }
    T& slot = GetValue<T>(key).Value;
    if (event == nullptr) {
      slot = value;
      return true;
    }
    // The handler sees the new value in the map and refuses it by raising.
    T old = slot;
    slot = value;
    try {
      event->OnWrite(this, &key);
    } catch (CIException& e) {
      // Looked up again: the handler may have rebuilt the table meanwhile.
      GetValue<T>(key).Value = old;
      throw CZtParAccessWriteException("", FunctionName("WriteParameter").c_str(), __LINE__, &e);
    }
    return true;
  } catch (CIException& e) {
    ZT_WRAP(FunctionName("WriteParameter"), "Error writing parameter", e);
  }
}

// Unlike writes, reads have no handler of their own: the specific exception
// reaches the caller as it is.
template <class T>
bool CZtParMap<std::string, std::string>::ReadParameter(std::string key, T& value) {
  constexpr EParType kind = ZtParKind<T>::value;
  CZtParEntry& entry =
      CheckedEntry<CZtParAccessReadException>(key, &CZtParEntry::readable, kind, "ReadParameter");
  const bool external = entry.external;
  if (TEvent* event = entry.event.Get(); event != nullptr) {
    try {
      event->OnRead(this, &key);
    } catch (CIException& e) {
      throw CZtParAccessReadException("", FunctionName("ReadParameter").c_str(), __LINE__, &e);
    }
  }
  if (external) {
    return false;
  }
  value = GetValue<T>(key).Value;
  return true;
}

}  // namespace Zt

#endif
