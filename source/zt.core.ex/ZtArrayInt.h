#ifndef ZT_CORE_EX_ZTARRAYINT_H
#define ZT_CORE_EX_ZTARRAYINT_H

#include "ZtArrayWrapper.h"

namespace Zt {

extern template class CZtArrayWrapper<int>;

// A one-dimensional array of int behind IMemory; see CZtArrayWrapper.
class ZT_CORE_EX_API CZtArrayInt : public CZtArrayWrapper<int> {
public:
  using CZtArrayWrapper::CZtArrayWrapper;
};

}  // namespace Zt

#endif
