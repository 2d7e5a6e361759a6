# Image format, owned image, image view, view conversions and pixel access, via the shared library.
zt_add_gtest(zt_image_tests SOURCES zt.core.ex/ZtImageTest.cpp LIBS Zt::CoreEx)
