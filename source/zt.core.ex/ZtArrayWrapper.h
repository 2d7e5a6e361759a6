#ifndef ZT_CORE_EX_ZTARRAYWRAPPER_H
#define ZT_CORE_EX_ZTARRAYWRAPPER_H

#include "ZtCoreExExport.h"
#include "ZtInterop.h"

namespace Zt {

template <class T>
class CZtArrayBase;

// What the five exported numeric arrays (CZtArrayDouble, CZtArrayInt,
// CZtArrayUChar, CZtArrayUInt, CZtArrayUShort) have in common: each owns one
// implementation object and forwards every operation to it. An operation on
// a missing implementation raises "Nullptr --> Object not initialized" under
// the exported class's own name and source file; IsValid answers false.
//
// Memory from GetPointer and GetDataPtr stays the array's and is good until
// the next operation that changes the length.
template <class T>
class ZT_CORE_EX_API CZtArrayWrapper : public IMemory {
public:
  // Empty; the implementation has no storage yet, so GetDataPtr is null.
  CZtArrayWrapper();
  // `length` zero elements.
  CZtArrayWrapper(unsigned long long length);  // NOLINT: converting on purpose
  // `length` copies of `value`.
  CZtArrayWrapper(unsigned long long length, const T& value);
  // A deep copy; raises if other has no implementation.
  CZtArrayWrapper(const CZtArrayWrapper& other);
  // A deep copy, with no check of either side. Self-assignment changes nothing.
  CZtArrayWrapper& operator=(const CZtArrayWrapper& other);

  unsigned long long GetElementSize() const override;
  unsigned long long Length() const override;
  // Is GetDataPtr.
  const void* GetPointer() const override;
  bool IsValid() const override;
  // Drops the contents; `length` zero elements.
  void New(unsigned long long length) override;
  // Keeps the leading elements; new ones are zero. Shrinking keeps storage.
  void Resize(unsigned long long length) override;
  // Length 0; the array stays valid and keeps its storage.
  void Delete() override;
  // Zero bytes over every element.
  void Reset() override;
  // Takes length and contents of a source of the same element width.
  void CopyFrom(const IMemoryAccess* source) override;
  // Is GetDataPtr.
  void* GetPointer() override;

  // Raise "Array index out of bounds" at or beyond Length().
  T& operator[](unsigned long long index);
  const T& operator[](unsigned long long index) const;
  // The first element; null while the array has never had storage.
  T* GetDataPtr();
  const T* GetDataPtr() const;

protected:
  // Exported arrays are destroyed as themselves, never as this base.
  ~CZtArrayWrapper() override;

  // Owned; set by every constructor.
  CZtArrayBase<T>* m_pBaseRef;

private:
  // The implementation, or the failure for a missing one, reported as a
  // failure of `member`.
  CZtArrayBase<T>& Ref(const char* member) const;
};

}  // namespace Zt

#endif
