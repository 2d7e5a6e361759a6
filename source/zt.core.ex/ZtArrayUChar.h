#ifndef ZT_CORE_EX_ZTARRAYUCHAR_H
#define ZT_CORE_EX_ZTARRAYUCHAR_H

#include "ZtArrayWrapper.h"

namespace Zt {

extern template class CZtArrayWrapper<unsigned char>;

// A one-dimensional array of unsigned char behind IMemory; see CZtArrayWrapper.
class ZT_CORE_EX_API CZtArrayUChar : public CZtArrayWrapper<unsigned char> {
public:
  using CZtArrayWrapper::CZtArrayWrapper;
  // Out of line, so that the vtable and type information live in the
  // library rather than in every client.
  ~CZtArrayUChar() override;
};

}  // namespace Zt

#endif
