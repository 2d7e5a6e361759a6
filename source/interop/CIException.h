#ifndef ZT_INTEROP_CIEXCEPTION_H
#define ZT_INTEROP_CIEXCEPTION_H

#include "CGuid.h"
#include "ZtInteropExport.h"

namespace Zt {
namespace Interop {
namespace Runtime30 {

// Root of every exception of the Zt family. Failures are always caught by
// reference to this type; the concrete classes live in Zt.Core and above.
class ZT_INTEROP_API CIException {
public:
  CIException() = default;
  // Takes a non-const reference, as the whole family does, so that
  // exceptions can be thrown by value.
  CIException(CIException& other);
  CIException& operator=(const CIException&) = delete;

  virtual ~CIException();
  // One readable text: name, message, function, file and line of this
  // exception and of every inner one.
  virtual const char* ToString() const = 0;
  virtual const char* GetMessageText() const = 0;
  virtual const char* GetFunction() const = 0;
  virtual const char* GetFile() const = 0;
  virtual unsigned int GetLine() const = 0;
  virtual const char* GetName() const = 0;
  virtual const CGuid& GetGUID() const = 0;
  // True when this exception or any along its inner chain has the GUID.
  virtual bool HasException(const CGuid& guid) const = 0;
  // A heap copy of the same class; the caller owns it.
  virtual CIException* Clone() const = 0;
};

}  // namespace Runtime30
}  // namespace Interop
}  // namespace Zt

#endif
