#ifndef ZT_CORE_EX_ZTARRAYUCHAR_H
#define ZT_CORE_EX_ZTARRAYUCHAR_H

#include "ZtArrayWrapper.h"

namespace Zt {

extern template class CZtArrayWrapper<unsigned char>;

// A one-dimensional array of unsigned char behind IMemory; see CZtArrayWrapper.
class ZT_CORE_EX_API CZtArrayUChar : public CZtArrayWrapper<unsigned char> {
public:
  using CZtArrayWrapper::CZtArrayWrapper;
};

}  // namespace Zt

#endif
