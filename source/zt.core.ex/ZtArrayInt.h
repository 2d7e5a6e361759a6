#ifndef ZT_CORE_EX_ZTARRAYINT_H
#define ZT_CORE_EX_ZTARRAYINT_H

#include "ZtArrayWrapper.h"

namespace Zt {

extern template class CZtArrayWrapper<int>;

// A one-dimensional array of int behind IMemory; see CZtArrayWrapper.
class ZT_CORE_EX_API CZtArrayInt : public CZtArrayWrapper<int> {
public:
  using CZtArrayWrapper::CZtArrayWrapper;
  // Out of line, so that the vtable and type information live in the
  // library rather than in every client.
  ~CZtArrayInt() override;
};

}  // namespace Zt

#endif
