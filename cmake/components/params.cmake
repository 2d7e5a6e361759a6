# Parameters: the parameter exceptions, safe pointers and the parameter map.
# Internal throughout; the metadata store is their only user.
zt_ex_component(params
  SOURCES
    zt.core.development/ZtParException.cpp
    zt.core.development/ZtSafePtrRepo.cpp
    zt.core.development/ZtParMap.cpp)

# The exported face of the parameters: the metadata store.
zt_ex_component(metadata
  SOURCES
    zt.core.ex/ZtMetaData.cpp
  PUBLIC_HEADERS
    zt.core.ex/ZtMetaData.h)
