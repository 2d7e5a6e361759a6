# Image format, owned image and image view, through the shared library as a user sees them.
zt_add_gtest(zt_image_tests SOURCES zt.core.ex/ZtImageTest.cpp LIBS Zt::CoreEx)
