#ifndef ZT_INTEROP_H
#define ZT_INTEROP_H

// Every declaration of the interop layer, and their names made available in
// namespace Zt, where the library's own classes use them unqualified.
#include "CGuid.h"
#include "CIException.h"
#include "IImage.h"
#include "IMemory.h"
#include "ImageTypes.h"

namespace Zt {
using Interop::Runtime28::EDataType;
using Interop::Runtime28::EPixelType;
using Interop::Runtime28::IImage;
using Interop::Runtime30::CGuid;
using Interop::Runtime30::CIException;
using Interop::Runtime30::IMemory;
using Interop::Runtime30::IMemory2D;
using Interop::Runtime30::IMemory2DAccess;
using Interop::Runtime30::IMemoryAccess;
}  // namespace Zt

#endif
