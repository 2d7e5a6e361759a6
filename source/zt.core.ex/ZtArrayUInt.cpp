#include "ZtArrayUInt.h"

#include "ZtArrayWrapperImpl.h"

namespace Zt {

namespace Detail {
template <>
struct ZtArrayNames<unsigned int> {
  static constexpr const char* File = "ZtArrayUInt";
  static constexpr const char* Class = "CZtArrayUInt";
};
}  // namespace Detail

template class CZtArrayWrapper<unsigned int>;

CZtArrayUInt::~CZtArrayUInt() = default;

}  // namespace Zt
