# Numeric, string and two-dimensional arrays as a user meets them, through
# the shared library.
zt_add_gtest(zt_arrays_tests
  SOURCES
    zt.core.ex/ZtArrayTest.cpp
    zt.core.ex/ZtArrayStringTest.cpp
    zt.core.ex/ZtArray2DTest.cpp
  LIBS Zt::CoreEx)

# The internal building blocks, which the shared library hides: linked from
# the component's objects.
zt_add_gtest(zt_arrays_internal_tests
  SOURCES
    zt.core.ex/ZtMemTest.cpp
    zt.core.ex/ZtMatrixTest.cpp
  LIBS ZtCore)
zt_link_components(zt_arrays_internal_tests arrays)

