#include "ZtParMap.h"

#include <new>
#include <utility>

namespace Zt {

CZtString GetParTypeName(EParType kind) {
  switch (kind) {
    case ParNone: return "none";
    case ParInt: return "int";
    case ParUnsigned: return "unsigned";
    case ParDouble: return "double";
    case ParString: return "string";
    case ParIntArray: return "int[]";
    case ParUnsignedArray: return "unsigned[]";
    case ParDoubleArray: return "double[]";
    case ParStringArray: return "string[]";
  }
  return "unknown";
}

void CZtParEntry::Assign(std::string entryName, EParType entryKind, std::string entryDescription,
                         TConstraintPtr entryConstraint, TEventPtr entryEvent) {
  readable = true;
  writable = true;
  external = false;
  kind = entryKind;
  description = std::move(entryDescription);
  constraint = entryConstraint;
  event = entryEvent;
  name = std::move(entryName);
}

using CZtStringParMap = CZtParMap<std::string, std::string>;

CZtStringParMap::CZtParMap()
    : m_pDirectory(nullptr),
      m_pUnsigned(nullptr),
      m_pDouble(nullptr),
      m_pString(nullptr),
      m_pUnsignedArray(nullptr),
      m_pDoubleArray(nullptr),
      m_pStringArray(nullptr) {}

CZtStringParMap::~CZtParMap() { Finalize(); }

template <class F>
void CZtStringParMap::ForEachTable(CZtParMap& a, const CZtParMap& b, F&& f) {
  f(a.m_pDirectory, b.m_pDirectory);
  f(a.m_pUnsigned, b.m_pUnsigned);
  f(a.m_pDouble, b.m_pDouble);
  f(a.m_pString, b.m_pString);
  f(a.m_pUnsignedArray, b.m_pUnsignedArray);
  f(a.m_pDoubleArray, b.m_pDoubleArray);
  f(a.m_pStringArray, b.m_pStringArray);
}

std::string CZtStringParMap::FunctionName(const char* member) {
  return std::string(
             "Zt::CZtParMap<class std::basic_string<char,struct std::char_traits<char>,class "
             "std::allocator<char> >,class std::basic_string<char,struct "
             "std::char_traits<char>,class std::allocator<char> > >::") +
         member;
}

CZtString CZtStringParMap::TypeMismatch(EParType expected, EParType given) {
  return CZtString("Expected type '") + GetParTypeName(expected) + "' differs from '" +
         GetParTypeName(given) + "'";
}

CZtStringParMap& CZtStringParMap::operator=(const CZtParMap& other) {
  ForEachTable(*this, other, [](auto* mine, const auto* theirs) {
    if (mine != theirs) {
      mine->clear();
      *mine = *theirs;
    }
  });
  return *this;
}

void CZtStringParMap::Init() {
  if (m_pDirectory != nullptr) {
    ZT_RAISE(FunctionName("Init"), "parameter map already initialized");
  }
  try {
    ForEachTable(*this, *this, [](auto*& table, const auto*) {
      table = new std::remove_reference_t<decltype(*table)>();
    });
  } catch (std::bad_alloc& e) {
    Finalize();
    ZT_RAISE_OUT_OF_MEMORY(FunctionName("Init"), e);
  } catch (CIException& e) {
    ZT_WRAP(FunctionName("Init"), "Error initializing parameter Map", e);
  }
}

void CZtStringParMap::Finalize() {
  ForEachTable(*this, *this, [](auto*& table, const auto*) {
    delete table;
    table = nullptr;
  });
}

void CZtStringParMap::Clear() {
  ForEachTable(*this, *this, [](auto* table, const auto*) {
    if (table != nullptr) {
      table->clear();
    }
  });
}

bool CZtStringParMap::HasParameter(std::string key) const {
  return m_pDirectory->find(key) != m_pDirectory->end();
}

}  // namespace Zt
