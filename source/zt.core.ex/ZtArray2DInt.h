#ifndef ZT_CORE_EX_ZTARRAY2DINT_H
#define ZT_CORE_EX_ZTARRAY2DINT_H

#include "ZtArray2DWrapper.h"

namespace Zt {

extern template class CZtArray2DWrapper<int>;

// A two-dimensional array of int behind IMemory2D; see CZtArray2DWrapper.
class ZT_CORE_EX_API CZtArray2DInt : public CZtArray2DWrapper<int> {
public:
  using CZtArray2DWrapper::CZtArray2DWrapper;
  // Out of line, so that the vtable and type information live in the
  // library rather than in every client.
  ~CZtArray2DInt() override;
};

}  // namespace Zt

#endif
