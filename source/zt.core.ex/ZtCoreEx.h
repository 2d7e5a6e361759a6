#ifndef ZT_CORE_EX_H
#define ZT_CORE_EX_H

// Everything a user of Zt.Core.Ex needs: the interop declarations, the
// string and exception classes, and every exported class of the library.

#include "ZtArray2DDouble.h"
#include "ZtArray2DInt.h"
#include "ZtArrayDouble.h"
#include "ZtArrayInt.h"
#include "ZtArrayString.h"
#include "ZtArrayUChar.h"
#include "ZtArrayUInt.h"
#include "ZtArrayUShort.h"
#include "ZtException.h"
#include "ZtImage.h"
#include "ZtImageFormat.h"
#include "ZtImageMoniker.h"
#include "ZtInterop.h"
#include "ZtMetaData.h"
#include "ZtMetricCalibResult.h"
#include "ZtPixel.h"
#include "ZtString.h"

#endif
