#ifndef ZT_CORE_EX_ZTARRAYUINT_H
#define ZT_CORE_EX_ZTARRAYUINT_H

#include "ZtArrayWrapper.h"

namespace Zt {

extern template class CZtArrayWrapper<unsigned int>;

// A one-dimensional array of unsigned int behind IMemory; see CZtArrayWrapper.
class ZT_CORE_EX_API CZtArrayUInt : public CZtArrayWrapper<unsigned int> {
public:
  using CZtArrayWrapper::CZtArrayWrapper;
  // Out of line, so that the vtable and type information live in the
  // library rather than in every client.
  ~CZtArrayUInt() override;
};

}  // namespace Zt

#endif
