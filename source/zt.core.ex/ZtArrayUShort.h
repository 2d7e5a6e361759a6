#ifndef ZT_CORE_EX_ZTARRAYUSHORT_H
#define ZT_CORE_EX_ZTARRAYUSHORT_H

#include "ZtArrayWrapper.h"

namespace Zt {

extern template class CZtArrayWrapper<unsigned short>;

// A one-dimensional array of unsigned short behind IMemory; see CZtArrayWrapper.
class ZT_CORE_EX_API CZtArrayUShort : public CZtArrayWrapper<unsigned short> {
public:
  using CZtArrayWrapper::CZtArrayWrapper;
  // Out of line, so that the vtable and type information live in the
  // library rather than in every client.
  ~CZtArrayUShort() override;
};

}  // namespace Zt

#endif
