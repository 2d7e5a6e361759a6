#ifndef ZT_CORE_EX_ZTARRAY2DDOUBLE_H
#define ZT_CORE_EX_ZTARRAY2DDOUBLE_H

#include "ZtArray2DWrapper.h"

namespace Zt {

extern template class CZtArray2DWrapper<double>;

// A two-dimensional array of double behind IMemory2D; see CZtArray2DWrapper.
class ZT_CORE_EX_API CZtArray2DDouble : public CZtArray2DWrapper<double> {
public:
  using CZtArray2DWrapper::CZtArray2DWrapper;
  // Out of line, so that the vtable and type information live in the
  // library rather than in every client.
  ~CZtArray2DDouble() override;
};

}  // namespace Zt

#endif
