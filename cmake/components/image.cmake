# Image format and owned image.
zt_ex_component(image
  SOURCES
    zt.core.ex/ZtImageFormat.cpp
    zt.core.ex/ZtImage.cpp
  PUBLIC_HEADERS
    zt.core.ex/ZtImageFormat.h
    zt.core.ex/ZtImage.h)
