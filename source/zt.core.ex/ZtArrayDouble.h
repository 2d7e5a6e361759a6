#ifndef ZT_CORE_EX_ZTARRAYDOUBLE_H
#define ZT_CORE_EX_ZTARRAYDOUBLE_H

#include "ZtArrayWrapper.h"

namespace Zt {

extern template class CZtArrayWrapper<double>;

// A one-dimensional array of double behind IMemory; see CZtArrayWrapper.
class ZT_CORE_EX_API CZtArrayDouble : public CZtArrayWrapper<double> {
public:
  using CZtArrayWrapper::CZtArrayWrapper;
  // Out of line, so that the vtable and type information live in the
  // library rather than in every client.
  ~CZtArrayDouble() override;
};

}  // namespace Zt

#endif
