# Parameters: the parameter exceptions, safe pointers and the parameter map.
# Internal throughout; the metadata store is their only user.
zt_ex_component(params
  SOURCES
    zt.core.development/ZtParException.cpp
    zt.core.development/ZtSafePtrRepo.cpp
    zt.core.development/ZtParMap.cpp)

# The exported face of the parameters: the metadata store, and the records of
# a metric calibration.
zt_ex_component(metadata
  SOURCES
    zt.core.ex/ZtMetaData.cpp
    zt.core.ex/ZtMetricCalibResult.cpp
  PUBLIC_HEADERS
    zt.core.ex/ZtMetaData.h
    zt.core.ex/ZtMetricCalibResult.h)
