# Image views on foreign memory, and single-pixel access of the owned image.
zt_ex_component(views
  SOURCES
    zt.core.ex/ZtImageMoniker.cpp
    zt.core.ex/ZtImagePixel.cpp
  PUBLIC_HEADERS
    zt.core.ex/ZtImageMoniker.h
    zt.core.ex/ZtPixel.h)
