# Single-pixel access, through the shared library.
zt_add_gtest(zt_views_tests
  SOURCES
    zt.core.ex/ZtPixelTest.cpp
  LIBS Zt::CoreEx)
