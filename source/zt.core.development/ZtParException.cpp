#include "ZtParException.h"

namespace Zt {

CZtParameterException::CZtParameterException(const CZtString& message, const char* function,
                                             unsigned int line, CIException* inner)
    : CZtException(message, File, function, line, inner) {
  SetName(ClassName);
  SetGUID(ClassGuid);
}

CZtParameterException::CZtParameterException(CZtParameterException& other) : CZtException(other) {}

CZtParameterException::~CZtParameterException() = default;

CIException* CZtParameterException::Clone() const {
  return new CZtParameterException(const_cast<CZtParameterException&>(*this));
}

CZtString CZtParameterException::Compose(const char* fixed, const CZtString& detail) {
  return CZtString(fixed) + (detail.Length() != 0 ? "; " : "") + detail;
}

}  // namespace Zt
