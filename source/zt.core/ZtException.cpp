#include "ZtException.h"

namespace Zt {

CZtException::CZtException(const CZtString& message, const char* file, const char* function,
                           unsigned int line, CIException* inner)
    : CIException(),
      m_Message(message),
      m_File(file),
      m_Function(function),
      m_Line(line),
      m_Name(ClassName),
      m_Guid(ClassGuid),
      m_pInner(inner != nullptr ? inner->Clone() : nullptr) {}

CZtException::CZtException(CZtException& other)
    : CIException(other),
      m_Message(other.m_Message),
      m_File(other.m_File),
      m_Function(other.m_Function),
      m_Line(other.m_Line),
      m_Name(other.m_Name),
      m_Guid(other.m_Guid),
      m_pInner(other.m_pInner != nullptr ? other.m_pInner->Clone() : nullptr) {}

CZtException::~CZtException() { delete m_pInner; }

CZtException CZtException::Create(const CZtString& message, const char* file, const char* function,
                                  unsigned int line) {
  return CZtException(message, file, function, line, nullptr);
}

CZtException CZtException::Create(const CZtString& message, const char* file, const char* function,
                                  unsigned int line, CIException& inner) {
  return CZtException(message, file, function, line, &inner);
}

const char* CZtException::ToString() const {
  // One paragraph per exception, outermost first:
  //   Zt.Exception: Error resizing Array
  //     at Zt::CZtArrayString::Resize (ZtArrayString, line 81)
  m_Text = "";
  const CIException* current = this;
  for (int depth = 0; current != nullptr; ++depth) {
    if (depth > 0) {
      m_Text << "\ninner ";
    }
    m_Text << current->GetName() << ": " << current->GetMessageText() << "\n  at "
           << current->GetFunction() << " (" << current->GetFile() << ", line "
           << static_cast<unsigned long long>(current->GetLine()) << ")";
    const auto* zt = dynamic_cast<const CZtException*>(current);
    current = zt != nullptr ? zt->GetInnerException() : nullptr;
  }
  return m_Text.ToCString();
}

const char* CZtException::GetMessageText() const { return m_Message.ToCString(); }
const char* CZtException::GetFunction() const { return m_Function.ToCString(); }
const char* CZtException::GetFile() const { return m_File.ToCString(); }
unsigned int CZtException::GetLine() const { return m_Line; }
const char* CZtException::GetName() const { return m_Name.ToCString(); }
const CGuid& CZtException::GetGUID() const { return m_Guid; }

bool CZtException::HasException(const CGuid& guid) const {
  return m_Guid == guid || (m_pInner != nullptr && m_pInner->HasException(guid));
}

CIException* CZtException::Clone() const {
  return new CZtException(const_cast<CZtException&>(*this));
}

const CIException* CZtException::GetInnerException() const { return m_pInner; }

void CZtException::SetName(const char* name) { m_Name = name; }
void CZtException::SetGUID(const CGuid& guid) { m_Guid = guid; }

CZtOutOfMemoryException::CZtOutOfMemoryException(const CZtString& message, const char* file,
                                                 const char* function, unsigned int line)
    : CZtException(message, file, function, line, nullptr) {
  SetName(ClassName);
  SetGUID(ClassGuid);
}

CZtOutOfMemoryException::CZtOutOfMemoryException(CZtOutOfMemoryException& other)
    : CZtException(other) {}

CZtOutOfMemoryException::~CZtOutOfMemoryException() = default;

CZtOutOfMemoryException CZtOutOfMemoryException::Create(const CZtString& message, const char* file,
                                                        const char* function, unsigned int line) {
  return CZtOutOfMemoryException(message, file, function, line);
}

CIException* CZtOutOfMemoryException::Clone() const {
  return new CZtOutOfMemoryException(const_cast<CZtOutOfMemoryException&>(*this));
}

}  // namespace Zt
