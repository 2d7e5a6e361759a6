#ifndef ZT_CORE_ZTEXCEPTION_H
#define ZT_CORE_ZTEXCEPTION_H

#include "ZtCoreExport.h"
#include "ZtInterop.h"
#include "ZtString.h"

namespace Zt {

// The concrete exception of the family. Every failure carries its message,
// source file, fully qualified function and line. A layer that adds context
// throws a new CZtException holding the caught one as inner exception, so a
// chain reads from the outermost context down to the first cause.
class ZT_CORE_API CZtException : public CIException {
public:
  static CZtException Create(const CZtString& message, const char* file, const char* function,
                             unsigned int line);
  // The inner exception is copied; the copy stays reachable after the caught
  // exception is gone.
  static CZtException Create(const CZtString& message, const char* file, const char* function,
                             unsigned int line, CIException& inner);

  CZtException(CZtException& other);
  CZtException& operator=(const CZtException&) = delete;
  ~CZtException() override;

  const char* ToString() const override;
  const char* GetMessageText() const override;
  const char* GetFunction() const override;
  const char* GetFile() const override;
  unsigned int GetLine() const override;
  const char* GetName() const override;
  const CGuid& GetGUID() const override;
  bool HasException(const CGuid& guid) const override;
  CIException* Clone() const override;

  // The inner exception given at creation (a copy owned by this one), or null.
  const CIException* GetInnerException() const;

  // Name and GUID that this class reports.
  static constexpr const char* ClassName = "Zt.Exception";
  static constexpr CGuid ClassGuid{"{2419922F-0AF5-490B-99A8-923BD199AA4F}"};

protected:
  // For derived classes; a non-null inner exception is copied.
  CZtException(const CZtString& message, const char* file, const char* function, unsigned int line,
               CIException* inner);

  // Derived classes replace the name and GUID after the base is built.
  void SetName(const char* name);
  void SetGUID(const CGuid& guid);

private:
  CZtString m_Message;
  CZtString m_File;
  CZtString m_Function;
  unsigned int m_Line;
  CZtString m_Name;
  CGuid m_Guid;
  CIException* m_pInner;
  mutable CZtString m_Text;  // built by ToString
};

// Raised where an allocation that the library guards has failed.
class ZT_CORE_API CZtOutOfMemoryException : public CZtException {
public:
  static CZtOutOfMemoryException Create(const CZtString& message, const char* file,
                                        const char* function, unsigned int line);

  CZtOutOfMemoryException(CZtOutOfMemoryException& other);
  ~CZtOutOfMemoryException() override;

  CIException* Clone() const override;

  static constexpr const char* ClassName = "Zt.OutOfMemoryException";
  static constexpr CGuid ClassGuid{"{C7EF1927-917C-4A3F-8199-49BE72F40CB4}"};

protected:
  CZtOutOfMemoryException(const CZtString& message, const char* file, const char* function,
                          unsigned int line);
};

}  // namespace Zt

#endif
