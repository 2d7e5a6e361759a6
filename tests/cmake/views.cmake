# Image views' conversions and single-pixel access, through the shared library.
zt_add_gtest(zt_views_tests
  SOURCES zt.core.ex/ZtImageMonikerConvertTest.cpp zt.core.ex/ZtPixelTest.cpp LIBS Zt::CoreEx)
