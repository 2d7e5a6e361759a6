#include "ZtString.h"

#include <cstring>

namespace Zt {

CZtString::CZtString() = default;

CZtString::CZtString(const char* text) : m_Text(text != nullptr ? text : "") {}

CZtString::CZtString(const CZtString& other) : IMemoryAccess(), m_Text(other.m_Text) {}

CZtString::~CZtString() = default;

CZtString& CZtString::operator=(const char* text) {
  // Assigning from a pointer into this very text must work, so build first.
  std::string copy(text != nullptr ? text : "");
  m_Text.swap(copy);
  return *this;
}

CZtString& CZtString::operator=(const CZtString& other) {
  m_Text = other.m_Text;
  return *this;
}

CZtString& CZtString::operator<<(const char* text) {
  if (text != nullptr) {
    m_Text.append(std::string(text));
  }
  return *this;
}

CZtString& CZtString::operator<<(const CZtString& other) {
  m_Text.append(other.m_Text);
  return *this;
}

CZtString& CZtString::operator<<(int value) {
  m_Text.append(std::to_string(value));
  return *this;
}

CZtString& CZtString::operator<<(unsigned long long value) {
  m_Text.append(std::to_string(value));
  return *this;
}

const char* CZtString::ToCString() const { return m_Text.c_str(); }

unsigned long long CZtString::GetElementSize() const { return 1; }

unsigned long long CZtString::Length() const { return m_Text.size(); }

const void* CZtString::GetPointer() const { return m_Text.c_str(); }

bool CZtString::IsValid() const { return true; }

CZtString operator+(const CZtString& a, const CZtString& b) {
  CZtString result(a);
  result << b;
  return result;
}

CZtString operator+(const CZtString& a, const char* b) {
  CZtString result(a);
  result << b;
  return result;
}

bool operator==(const CZtString& a, const CZtString& b) {
  return std::strcmp(a.ToCString(), b.ToCString()) == 0 && a.Length() == b.Length();
}

bool operator==(const CZtString& a, const char* b) {
  return std::strcmp(a.ToCString(), b != nullptr ? b : "") == 0;
}

}  // namespace Zt
