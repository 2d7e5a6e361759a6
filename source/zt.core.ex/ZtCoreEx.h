#ifndef ZT_CORE_EX_H
#define ZT_CORE_EX_H

// Everything a user of Zt.Core.Ex needs: the interop declarations, the
// string and exception classes, and every exported class of the library.

#include "ZtInterop.h"
#include "ZtString.h"
#include "ZtException.h"

#include "ZtImageFormat.h"
#include "ZtImage.h"
#include "ZtArrayDouble.h"
#include "ZtArrayInt.h"
#include "ZtArrayUChar.h"
#include "ZtArrayUInt.h"
#include "ZtArrayUShort.h"
#include "ZtArrayString.h"
#include "ZtArray2DDouble.h"
#include "ZtArray2DInt.h"
#include "ZtImageMoniker.h"
#include "ZtPixel.h"
#include "ZtMetaData.h"
#include "ZtMetricCalibResult.h"

#endif
