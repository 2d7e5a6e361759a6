# Single-pixel access of the owned image.
zt_ex_component(views
  SOURCES
    zt.core.ex/ZtImagePixel.cpp
  PUBLIC_HEADERS
    zt.core.ex/ZtPixel.h)
