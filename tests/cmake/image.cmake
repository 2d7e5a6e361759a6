# Image format, owned image, image view and single-pixel access, through the shared library.
zt_add_gtest(zt_image_tests SOURCES zt.core.ex/ZtImageTest.cpp LIBS Zt::CoreEx)
