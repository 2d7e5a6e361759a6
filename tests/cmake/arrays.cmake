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

# Allocation failures injected into malloc, realloc and operator new. The
# support library is kept generic so that other suites can sweep with it.
add_library(zt_alloc_fail OBJECT support/ZtAllocFail.cpp)
target_include_directories(zt_alloc_fail PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/support)
target_link_libraries(zt_alloc_fail PRIVATE zt_test_options)
target_link_options(zt_alloc_fail INTERFACE -Wl,--wrap=malloc -Wl,--wrap=realloc)

zt_add_gtest(zt_arrays_alloc_tests
  SOURCES
    zt.core.ex/ZtArrayAllocFailTest.cpp
  LIBS ZtCore zt_alloc_fail)
zt_link_components(zt_arrays_alloc_tests arrays)
