# The parameter map and its parts, tested on the component's objects, and the
# metadata store over it, through the shared library as a user sees it.
zt_add_gtest(zt_params_tests SOURCES zt.core.development/ZtParMapTest.cpp LIBS Zt::CoreEx)
zt_link_components(zt_params_tests params)

# The calibration records, through the shared library.
zt_add_gtest(zt_metadata_tests SOURCES zt.core.ex/ZtMetricCalibResultTest.cpp LIBS Zt::CoreEx)
