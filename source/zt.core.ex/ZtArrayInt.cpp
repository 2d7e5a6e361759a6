#include "ZtArrayInt.h"

#include "ZtArrayWrapperImpl.h"

namespace Zt {

namespace Detail {
template <>
struct ZtArrayNames<int> {
  static constexpr const char* File = "ZtArrayInt";
  static constexpr const char* Class = "CZtArrayInt";
};
}  // namespace Detail

template class CZtArrayWrapper<int>;

CZtArrayInt::~CZtArrayInt() = default;

}  // namespace Zt
