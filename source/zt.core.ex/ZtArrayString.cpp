#include "ZtArrayString.h"

#include <sstream>
#include <string>
#include <vector>

#include "ZtMemObj.h"
#include "ZtRaise.h"

namespace Zt {

namespace {
constexpr const char* ZtSourceFile = "ZtArrayString";
constexpr const char* kInvalid = "Nullptr --> Array Data Invalid";

// A constructor that raises runs no destructor of its own class, so the
// block it has made would be lost: this releases it unless the construction
// completes. The exception itself passes on untouched.
class CReleaseUnlessBuilt {
public:
  explicit CReleaseUnlessBuilt(CZtArrayString& array) : m_Array(array) {}
  ~CReleaseUnlessBuilt() {
    if (!m_Built) {
      m_Array.Delete();
    }
  }
  CReleaseUnlessBuilt(const CReleaseUnlessBuilt&) = delete;
  CReleaseUnlessBuilt& operator=(const CReleaseUnlessBuilt&) = delete;
  void Built() { m_Built = true; }

private:
  CZtArrayString& m_Array;
  bool m_Built = false;
};
}  // namespace

CZtArrayString::CZtArrayString() : m_pElements(nullptr) { New(0); }

CZtArrayString::CZtArrayString(unsigned long long length) : m_pElements(nullptr) { New(length); }

CZtArrayString::CZtArrayString(const CZtString& text, char delimiter) : m_pElements(nullptr) {
  std::stringstream stream(std::string(text.ToCString()));
  std::vector<std::string> fields;
  std::string field;
  while (std::getline(stream, field, delimiter)) {
    fields.push_back(field);
  }
  CReleaseUnlessBuilt guard(*this);
  New(fields.size());
  CZtString** elements = m_pElements->Elements();
  for (std::size_t i = 0; i < fields.size(); ++i) {
    *elements[i] = fields[i].c_str();
  }
  guard.Built();
}

CZtArrayString::CZtArrayString(const CZtArrayString& other) : m_pElements(nullptr) {
  CReleaseUnlessBuilt guard(*this);
  *this = other;
  guard.Built();
}

CZtArrayString::~CZtArrayString() { Delete(); }

CZtArrayString& CZtArrayString::operator=(const CZtArrayString& other) {
  try {
    // First, and with no test for self-assignment: `a = a` ends here.
    Delete();
    if (other.m_pElements == nullptr) {
      return *this;
    }
    const unsigned long long length = other.Length();
    New(length);
    CZtString** to = m_pElements->Elements();
    CZtString** from = other.m_pElements->Elements();
    for (unsigned long long i = 0; i < length; ++i) {
      *to[i] = *from[i];
    }
  } catch (CIException& e) {
    ZT_WRAP("Zt::CZtArrayString::operator =", "Error Copying Array", e);
  }
  return *this;
}

bool CZtArrayString::IsValid() const { return m_pElements != nullptr; }

void CZtArrayString::Delete() {
  delete m_pElements;
  m_pElements = nullptr;
}

void CZtArrayString::New(unsigned long long length) {
  Delete();
  try {
    m_pElements = new CZtMemObj<CZtString>(length);
  } catch (std::bad_alloc& e) {
    ZT_RAISE_OUT_OF_MEMORY("Zt::CZtArrayString::New", e);
  }
}

void CZtArrayString::Resize(unsigned long long length) {
  try {
    // Inside the guarded block: an invalid array arrives wrapped, too.
    if (m_pElements == nullptr) {
      ZT_RAISE("Zt::CZtArrayString::Resize", kInvalid);
    }
    m_pElements->Resize(length);
  } catch (CIException& e) {
    ZT_WRAP("Zt::CZtArrayString::Resize", "Error resizing Array", e);
  }
}

void CZtArrayString::Reset() {
  if (m_pElements == nullptr) {
    ZT_RAISE("Zt::CZtArrayString::Reset", kInvalid);
  }
  CZtString** elements = m_pElements->Elements();
  for (unsigned long long i = 0; i < m_pElements->Length(); ++i) {
    *elements[i] = CZtString("");
  }
}

const CZtString& CZtArrayString::operator[](unsigned long long index) const {
  if (m_pElements == nullptr) {
    ZT_RAISE("Zt::CZtArrayString::operator []", kInvalid);
  }
  if (index >= m_pElements->Length()) {
    ZT_RAISE("Zt::CZtArrayString::operator []", "Array index out of bounds");
  }
  return *m_pElements->Elements()[index];
}

CZtString& CZtArrayString::operator[](unsigned long long index) {
  return const_cast<CZtString&>(static_cast<const CZtArrayString&>(*this)[index]);
}

unsigned long long CZtArrayString::Length() const {
  return m_pElements == nullptr ? 0 : m_pElements->Length();
}

}  // namespace Zt
