#ifndef ZT_CORE_EX_ZTARRAYUINT_H
#define ZT_CORE_EX_ZTARRAYUINT_H

#include "ZtArrayWrapper.h"

namespace Zt {

extern template class CZtArrayWrapper<unsigned int>;

// A one-dimensional array of unsigned int behind IMemory; see CZtArrayWrapper.
class ZT_CORE_EX_API CZtArrayUInt : public CZtArrayWrapper<unsigned int> {
public:
  using CZtArrayWrapper::CZtArrayWrapper;
};

}  // namespace Zt

#endif
