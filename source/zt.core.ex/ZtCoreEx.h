#ifndef ZT_CORE_EX_H
#define ZT_CORE_EX_H

// Everything a user of Zt.Core.Ex needs: the interop declarations, the
// string and exception classes, and every exported class of the library.

#include "ZtInterop.h"
#include "ZtString.h"
#include "ZtException.h"

#include "ZtImageFormat.h"
#include "ZtImage.h"
#include "ZtImageMoniker.h"
#include "ZtPixel.h"

#endif
