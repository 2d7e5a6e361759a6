# Image views' conversions, through the shared library.
zt_add_gtest(zt_views_tests SOURCES zt.core.ex/ZtImageMonikerConvertTest.cpp LIBS Zt::CoreEx)
