#include "ZtArray2DInt.h"

#include "ZtArray2DWrapperImpl.h"

namespace Zt {

namespace Detail {
template <>
struct ZtArray2DNames<int> {
  static constexpr const char* File = "ZtArray2DInt";
  static constexpr const char* Class = "CZtArray2DInt";
};
}  // namespace Detail

template class CZtArray2DWrapper<int>;

CZtArray2DInt::~CZtArray2DInt() = default;

}  // namespace Zt
