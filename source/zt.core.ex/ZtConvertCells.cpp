// The conversion cells of one target data type, ZT_CONVERT_TARGET_TYPE (set
// by the build, which compiles this file once per data type so that the
// cells of the eight types compile in parallel).

#include "ZtConvertCell.h"

#ifndef ZT_CONVERT_TARGET_TYPE
#error "ZT_CONVERT_TARGET_TYPE must name the target data type"
#endif

namespace Zt {
namespace Convert {

template bool ConvertTo<EDataType::ZT_CONVERT_TARGET_TYPE>(void*, const void*, EPixelType::ID,
                                                           const CZtImageFormat&, EPath);

}  // namespace Convert
}  // namespace Zt
