# Numeric, string and two-dimensional arrays, and the memory blocks under the
# string arrays.
zt_ex_component(arrays
  SOURCES
    zt.core.ex/ZtArrayBase.cpp
    zt.core.ex/ZtArrayDouble.cpp
    zt.core.ex/ZtArrayInt.cpp
    zt.core.ex/ZtArrayUChar.cpp
    zt.core.ex/ZtArrayUInt.cpp
    zt.core.ex/ZtArrayUShort.cpp
    zt.core.ex/ZtMemBase.cpp
    zt.core.ex/ZtArrayString.cpp
    zt.core.math/ZtMatrix.cpp
    zt.core.ex/ZtArray2DBase.cpp
    zt.core.ex/ZtArray2DDouble.cpp
    zt.core.ex/ZtArray2DInt.cpp
  PUBLIC_HEADERS
    zt.core.ex/ZtArrayWrapper.h
    zt.core.ex/ZtArrayDouble.h
    zt.core.ex/ZtArrayInt.h
    zt.core.ex/ZtArrayUChar.h
    zt.core.ex/ZtArrayUInt.h
    zt.core.ex/ZtArrayUShort.h
    zt.core.ex/ZtArrayString.h
    zt.core.ex/ZtArray2DWrapper.h
    zt.core.ex/ZtArray2DDouble.h
    zt.core.ex/ZtArray2DInt.h)
