#include "ZtArrayUShort.h"

#include "ZtArrayWrapperImpl.h"

namespace Zt {

namespace Detail {
template <>
struct ZtArrayNames<unsigned short> {
  static constexpr const char* File = "ZtArrayUShort";
  static constexpr const char* Class = "CZtArrayUShort";
};
}  // namespace Detail

template class CZtArrayWrapper<unsigned short>;

CZtArrayUShort::~CZtArrayUShort() = default;

}  // namespace Zt
