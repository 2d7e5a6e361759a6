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
  PUBLIC_HEADERS
    zt.core.ex/ZtArrayWrapper.h
    zt.core.ex/ZtArrayDouble.h
    zt.core.ex/ZtArrayInt.h
    zt.core.ex/ZtArrayUChar.h
    zt.core.ex/ZtArrayUInt.h
    zt.core.ex/ZtArrayUShort.h
    zt.core.ex/ZtArrayString.h)
