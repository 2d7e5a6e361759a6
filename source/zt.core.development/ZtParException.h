#ifndef ZT_DEVELOPMENT_ZTPAREXCEPTION_H
#define ZT_DEVELOPMENT_ZTPAREXCEPTION_H

// Why an operation of the parameter map failed. The map raises these, and
// callers of the metadata store meet them one or two links down a chain of
// plain CZtExceptions.
//
// Every parameter exception names the parameter map's file, wherever it is
// raised. The five specific classes put a fixed text of their own in front of
// the detail they are given, and report their own name and GUID. They add no
// field, so a copy is a copy of the CZtException underneath.

#include "ZtException.h"

namespace Zt {

class CZtParameterException : public CZtException {
public:
  // `message` is used as it stands.
  CZtParameterException(const CZtString& message, const char* function, unsigned int line,
                        CIException* inner);
  CZtParameterException(CZtParameterException& other);
  ~CZtParameterException() override;

  CIException* Clone() const override;

  static constexpr const char* ClassName = "Zt.ParameterException";
  static constexpr CGuid ClassGuid{"{3500903C-1B00-4CDB-AFC3-53C91539D6F9}"};

  // The file that every parameter exception names.
  static constexpr const char* File = "source\\zt.core.development\\ZtParMap";

protected:
  // "<fixed>; <detail>", or the fixed text alone when the detail is empty.
  static CZtString Compose(const char* fixed, const CZtString& detail);
};

// The shape shared by the five specific classes. `Derived` supplies ClassName,
// ClassGuid and FixedText; the constructor composes the message and replaces
// the name and GUID that the base wrote.
template <class Derived>
class CZtParDetailException : public CZtParameterException {
public:
  CZtParDetailException(const CZtString& detail, const char* function, unsigned int line,
                        CIException* inner)
      : CZtParameterException(Compose(Derived::FixedText, detail), function, line, inner) {
    SetName(Derived::ClassName);
    SetGUID(Derived::ClassGuid);
  }
  CZtParDetailException(CZtParDetailException& other) : CZtParameterException(other) {}

  CIException* Clone() const override {
    auto& self = const_cast<Derived&>(static_cast<const Derived&>(*this));
    return new Derived(self);
  }
};

class CZtParInvalidNameException : public CZtParDetailException<CZtParInvalidNameException> {
public:
  using CZtParDetailException::CZtParDetailException;
  static constexpr const char* ClassName = "Zt.ParInvalidNameException";
  static constexpr CGuid ClassGuid{"{2952225E-DB39-479E-A4E1-7496D6D531B2}"};
  static constexpr const char* FixedText = "Unknown parameter name";
};

class CZtParAccessReadException : public CZtParDetailException<CZtParAccessReadException> {
public:
  using CZtParDetailException::CZtParDetailException;
  static constexpr const char* ClassName = "Zt.ParAccessReadException";
  static constexpr CGuid ClassGuid{"{2D69D395-4593-48BC-BC70-05C182CEFAE0}"};
  static constexpr const char* FixedText = "Parameter read access denied";
};

class CZtParAccessWriteException : public CZtParDetailException<CZtParAccessWriteException> {
public:
  using CZtParDetailException::CZtParDetailException;
  static constexpr const char* ClassName = "Zt.ParAccessWriteException";
  static constexpr CGuid ClassGuid{"{2C95F24C-6098-4354-A291-A8A3C0D0EFAE}"};
  static constexpr const char* FixedText = "Parameter write access denied";
};

class CZtParInvalidTypeException : public CZtParDetailException<CZtParInvalidTypeException> {
public:
  using CZtParDetailException::CZtParDetailException;
  static constexpr const char* ClassName = "Zt.ParInvalidTypeException";
  static constexpr CGuid ClassGuid{"{944D12C7-608C-4509-9755-66A898B5432C}"};
  static constexpr const char* FixedText = "Wrong type for parameter";
};

class CZtParInvalidValueException : public CZtParDetailException<CZtParInvalidValueException> {
public:
  using CZtParDetailException::CZtParDetailException;
  static constexpr const char* ClassName = "Zt.ParInvalidValueException";
  static constexpr CGuid ClassGuid{"{3044F9AE-0257-4215-B36C-E8EFD6A543ED}"};
  static constexpr const char* FixedText = "Invalid parameter value";
};

}  // namespace Zt

#endif
