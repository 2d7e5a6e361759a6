#ifndef ZT_CORE_EX_ZTARRAY2DWRAPPER_H
#define ZT_CORE_EX_ZTARRAY2DWRAPPER_H

#include "ZtCoreExExport.h"
#include "ZtInterop.h"

namespace Zt {

template <class T>
class CZtArray2DBase;

// What the exported two-dimensional arrays (CZtArray2DDouble, CZtArray2DInt)
// have in common: each owns one implementation object, which holds a matrix
// stored row by row, and forwards every operation to it. An operation on a
// missing implementation raises "BaseRef is nullptr" under the exported
// class's own name and source file; IsValid answers false.
//
// They differ from the one-dimensional arrays on purpose: a new empty array
// is not valid (it has no storage), New keeps the old contents in linear
// order, and assigning an array to itself empties it.
template <class T>
class ZT_CORE_EX_API CZtArray2DWrapper : public IMemory2D {
public:
  // 0 rows and 0 columns, without storage.
  CZtArray2DWrapper();
  // `rows` by `columns` zero elements.
  CZtArray2DWrapper(unsigned long long rows, unsigned long long columns);
  // A deep copy. Neither side is checked.
  CZtArray2DWrapper(const CZtArray2DWrapper& other);
  // A deep copy into a new matrix. Neither side is checked. Each assignment
  // leaves the replaced matrix allocated for the life of the process.
  CZtArray2DWrapper& operator=(const CZtArray2DWrapper& other);

  unsigned long long GetElementSize() const override;
  void GetSize(unsigned long long& rows, unsigned long long& columns) const override;
  // Is GetDataPtr.
  const void* GetPointer() const override;
  // True once the array has storage; a Delete keeps it.
  bool IsValid() const override;
  // The new extents over the old contents in their linear order; elements
  // added at the end are zero.
  void New(unsigned long long rows, unsigned long long columns) override;
  // Keeps each element at its row and column; new ones are zero. An extent
  // of 0 makes both 0.
  void Resize(unsigned long long rows, unsigned long long columns) override;
  // Extents 0 and 0; storage kept.
  void Delete() override;
  // Zero bytes over every element.
  void Reset() override;
  // Extents and contents of a source of the same element width. The source
  // is not checked for null.
  void CopyFrom(const IMemory2DAccess* source) override;
  // Is GetDataPtr.
  void* GetPointer() override;

  // Raise "Nullptr --> Array Data Invalid" without storage and "Array index
  // out of bounds" outside the extents.
  T& operator()(unsigned long long row, unsigned long long column);
  const T& operator()(unsigned long long row, unsigned long long column) const;
  // The first element; null while the array has never had storage.
  T* GetDataPtr();
  const T* GetDataPtr() const;

protected:
  // Exported arrays are destroyed as themselves, never as this base.
  ~CZtArray2DWrapper() override;

  // Owned; set by every constructor.
  CZtArray2DBase<T>* m_pBaseRef;

private:
  // The implementation, or the failure for a missing one, reported as a
  // failure of `member`.
  CZtArray2DBase<T>& Ref(const char* member) const;
};

}  // namespace Zt

#endif
