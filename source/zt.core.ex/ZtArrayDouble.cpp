#include "ZtArrayDouble.h"

#include "ZtArrayWrapperImpl.h"

namespace Zt {

namespace Detail {
template <>
struct ZtArrayNames<double> {
  static constexpr const char* File = "ZtArrayDouble";
  static constexpr const char* Class = "CZtArrayDouble";
};
}  // namespace Detail

template class CZtArrayWrapper<double>;

CZtArrayDouble::~CZtArrayDouble() = default;

}  // namespace Zt
