#ifndef ZT_CORE_ZTSTRING_H
#define ZT_CORE_ZTSTRING_H

#include <string>

#include "ZtCoreExport.h"
#include "ZtInterop.h"

namespace Zt {

// A text that can also be read as a block of characters. Length counts the
// characters without the terminating NUL; the element size is 1 and the
// block's address is the NUL-terminated text itself.
class ZT_CORE_API CZtString : public IMemoryAccess {
public:
  CZtString();
  CZtString(const char* text);  // NOLINT: converting on purpose, like the texts it stands for
  CZtString(const CZtString& other);
  ~CZtString() override;

  CZtString& operator=(const char* text);
  CZtString& operator=(const CZtString& other);

  // Appends and returns the string itself, so that appends chain.
  CZtString& operator<<(const char* text);
  CZtString& operator<<(const CZtString& other);
  // Appends the number in decimal, a negative one with its sign.
  CZtString& operator<<(int value);
  CZtString& operator<<(unsigned long long value);

  const char* ToCString() const;

  unsigned long long GetElementSize() const override;
  unsigned long long Length() const override;
  const void* GetPointer() const override;
  bool IsValid() const override;

private:
  std::string m_Text;
};

ZT_CORE_API CZtString operator+(const CZtString& a, const CZtString& b);
ZT_CORE_API CZtString operator+(const CZtString& a, const char* b);

// Text equality, for callers that compare messages and names.
ZT_CORE_API bool operator==(const CZtString& a, const CZtString& b);
ZT_CORE_API bool operator==(const CZtString& a, const char* b);
inline bool operator==(const char* a, const CZtString& b) { return b == a; }
inline bool operator!=(const CZtString& a, const CZtString& b) { return !(a == b); }
inline bool operator!=(const CZtString& a, const char* b) { return !(a == b); }
inline bool operator!=(const char* a, const CZtString& b) { return !(b == a); }

}  // namespace Zt

#endif
