#include "ZtArrayUChar.h"

#include "ZtArrayWrapperImpl.h"

namespace Zt {

namespace Detail {
template <>
struct ZtArrayNames<unsigned char> {
  static constexpr const char* File = "ZtArrayUChar";
  static constexpr const char* Class = "CZtArrayUChar";
};
}  // namespace Detail

template class CZtArrayWrapper<unsigned char>;

CZtArrayUChar::~CZtArrayUChar() = default;

}  // namespace Zt
