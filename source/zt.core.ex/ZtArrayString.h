#ifndef ZT_CORE_EX_ZTARRAYSTRING_H
#define ZT_CORE_EX_ZTARRAYSTRING_H

#include "ZtCoreExExport.h"
#include "ZtString.h"

namespace Zt {

template <class T>
class CZtMemObj;

// An array of CZtString. Each string is a heap object of its own, so a
// reference to an element survives a Resize that keeps the element.
//
// Unlike the numeric arrays, the array can be invalid: Delete destroys its
// element block, and so does assigning an array to itself. Length then
// answers 0, and New makes the array valid again.
class ZT_CORE_EX_API CZtArrayString {
public:
  // Valid and empty.
  CZtArrayString();
  // `length` empty strings.
  CZtArrayString(unsigned long long length);  // NOLINT: converting on purpose
  // The fields of `text` between single `delimiter` characters, as
  // std::getline reads them: a trailing delimiter adds no empty field, and
  // an empty text gives a valid array of length 0. No field is trimmed.
  CZtArrayString(const CZtString& text, char delimiter);
  // A copy; a copy of an invalid array is invalid, with no failure.
  CZtArrayString(const CZtArrayString& other);
  virtual ~CZtArrayString();

  // Destroys this array's block first, with no test for self-assignment,
  // then copies a valid other: `a = a` leaves `a` invalid.
  CZtArrayString& operator=(const CZtArrayString& other);

  bool IsValid() const;
  // Destroys the element block; the array is invalid afterwards. Raises
  // nothing, also on an invalid array.
  void Delete();
  // Replaces the block by one of `length` empty strings; valid afterwards,
  // or invalid if that fails.
  void New(unsigned long long length);
  // Kept elements keep their text and address, new ones are empty.
  void Resize(unsigned long long length);
  // Every element becomes empty; the length stays.
  void Reset();
  CZtString& operator[](unsigned long long index);
  const CZtString& operator[](unsigned long long index) const;
  // 0 for an invalid array; raises nothing.
  unsigned long long Length() const;

private:
  CZtMemObj<CZtString>* m_pElements;
};

}  // namespace Zt

#endif
