#ifndef ZT_CORE_EX_ZTARRAY2DBASE_H
#define ZT_CORE_EX_ZTARRAY2DBASE_H

// Internal: the implementation behind the exported two-dimensional arrays.
// Never included by a public header.

#include "ZtInterop.h"
#include "ZtMatrix.h"

namespace Zt {

// A two-dimensional array over a CZtMatrix<T>, to which every IMemory2D
// operation goes unchecked. Only element access checks anything.
template <class T>
class CZtArray2DBase : public IMemory2D {
public:
  static constexpr const char* ZtSourceFile = "source\\zt.core.ex\\ZtArray2DBase";

  // A matrix of 0 by 0, without storage.
  CZtArray2DBase();
  CZtArray2DBase(unsigned long long rows, unsigned long long columns);
  CZtArray2DBase(const CZtArray2DBase&) = delete;
  ~CZtArray2DBase() override;

  // Puts a new, empty matrix in place and copies other into it. The matrix
  // that stood there is not released: it stays allocated for the life of
  // the process. Assigning an array to itself therefore empties it.
  CZtArray2DBase& operator=(const CZtArray2DBase& other);

  unsigned long long GetElementSize() const override;
  void GetSize(unsigned long long& rows, unsigned long long& columns) const override;
  const void* GetPointer() const override;
  bool IsValid() const override;
  void New(unsigned long long rows, unsigned long long columns) override;
  void Resize(unsigned long long rows, unsigned long long columns) override;
  void Delete() override;
  void Reset() override;
  void CopyFrom(const IMemory2DAccess* source) override;
  void* GetPointer() override;

  // Raises for a matrix without storage, then for an index outside the extents.
  T& operator()(unsigned long long row, unsigned long long column);
  const T& operator()(unsigned long long row, unsigned long long column) const;

private:
  CZtMatrix<T>* m_pMatrix;
};

extern template class CZtArray2DBase<double>;
extern template class CZtArray2DBase<int>;

}  // namespace Zt

#endif
