// Out-of-line members of the interop declarations. Defining the destructors
// here gives every interface one vtable and one type_info, owned by this
// library, so that casts and catch clauses agree across shared libraries.
#include "CIException.h"
#include "IImage.h"
#include "IMemory.h"

namespace Zt {
namespace Interop {
namespace Runtime30 {

CIException::CIException(CIException& /*other*/) {}
CIException::~CIException() = default;

IMemoryAccess::~IMemoryAccess() = default;
IMemory::~IMemory() = default;
IMemory2DAccess::~IMemory2DAccess() = default;
IMemory2D::~IMemory2D() = default;

}  // namespace Runtime30

namespace Runtime28 {
IImage::~IImage() = default;
}  // namespace Runtime28

}  // namespace Interop
}  // namespace Zt
