# The parameter map and its parts on the component's objects; the metadata store over it and the
# calibration records through the shared library, as a user sees them.
zt_add_gtest(zt_params_tests SOURCES zt.core.development/ZtParMapTest.cpp LIBS Zt::CoreEx)
zt_link_components(zt_params_tests params)
