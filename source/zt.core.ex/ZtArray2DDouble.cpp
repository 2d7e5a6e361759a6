#include "ZtArray2DDouble.h"

#include "ZtArray2DWrapperImpl.h"

namespace Zt {

namespace Detail {
template <>
struct ZtArray2DNames<double> {
  static constexpr const char* File = "ZtArray2DDouble";
  static constexpr const char* Class = "CZtArray2DDouble";
};
}  // namespace Detail

template class CZtArray2DWrapper<double>;

CZtArray2DDouble::~CZtArray2DDouble() = default;

}  // namespace Zt
