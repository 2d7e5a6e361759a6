# Parameter exceptions, safe pointers and the parameter map: internal classes,
# tested on the component's objects.
zt_add_gtest(zt_params_tests
  SOURCES
    zt.core.development/ZtParMapExceptionTest.cpp
    zt.core.development/ZtSafePtrRepoTest.cpp
    zt.core.development/ZtParMapTest.cpp
  LIBS ZtCore)
zt_link_components(zt_params_tests params)

# The metadata store and the calibration records, through the shared library
# as a user sees them.
zt_add_gtest(zt_metadata_tests
  SOURCES
    zt.core.ex/ZtMetaDataTest.cpp
    zt.core.ex/ZtMetricCalibResultTest.cpp
  LIBS Zt::CoreEx)
