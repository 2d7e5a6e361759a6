#ifndef ZT_CORE_EX_ZTARRAYBASE_H
#define ZT_CORE_EX_ZTARRAYBASE_H

// Internal: the implementation behind the exported numeric arrays. Never
// included by a public header.

#include <vector>

#include "ZtInterop.h"

namespace Zt {

// A one-dimensional array of T kept in a std::vector. The exported wrappers
// (CZtArrayDouble and its sisters) own one of these and forward to it.
//
// Storage only grows: Delete and shrinking Resize keep it, so the object stays
// valid and GetPointer keeps its address until a growth reallocates.
template <class T>
class CZtArrayBase : public IMemory {
public:
  static constexpr const char* ZtSourceFile = "source\\zt.core.ex\\ZtArrayBase";

  CZtArrayBase() = default;
  CZtArrayBase(const CZtArrayBase& other) = default;
  CZtArrayBase& operator=(const CZtArrayBase& other) = default;
  ~CZtArrayBase() override;

  unsigned long long GetElementSize() const override;
  unsigned long long Length() const override;
  // The first element; null while the vector has never had storage.
  const void* GetPointer() const override;
  // Always true.
  bool IsValid() const override;

  // Delete, then `length` zero elements.
  void New(unsigned long long length) override;
  // Keeps the leading elements; new ones are zero.
  void Resize(unsigned long long length) override;
  // Length 0, storage kept.
  void Delete() override;
  // Zero bytes over every element; length unchanged.
  void Reset() override;
  // Takes length and contents of any source of the same element width; the
  // types are not compared, so bit patterns pass unconverted.
  void CopyFrom(const IMemoryAccess* source) override;
  void* GetPointer() override;

  // Bounds-checked against Length().
  T& operator[](unsigned long long index);
  const T& operator[](unsigned long long index) const;

private:
  std::vector<T> m_Data;
};

extern template class CZtArrayBase<double>;
extern template class CZtArrayBase<int>;
extern template class CZtArrayBase<unsigned char>;
extern template class CZtArrayBase<unsigned int>;
extern template class CZtArrayBase<unsigned short>;

}  // namespace Zt

#endif
