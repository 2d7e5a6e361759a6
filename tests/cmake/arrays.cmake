# Numeric, string and two-dimensional arrays through the shared library.
zt_add_gtest(zt_arrays_tests SOURCES zt.core.ex/ZtArrayTest.cpp LIBS Zt::CoreEx)

# Makes chosen calls of malloc, realloc or operator new fail (support/ZtAllocFail.h), for any suite.
add_library(zt_alloc_fail OBJECT support/ZtAllocFail.cpp)
target_include_directories(zt_alloc_fail PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/support)
target_link_libraries(zt_alloc_fail PRIVATE zt_test_options)
target_link_options(zt_alloc_fail INTERFACE -Wl,--wrap=malloc -Wl,--wrap=realloc -Wl,--wrap=free)

# The memory blocks and matrices the shared library hides, from the component's objects.
zt_add_gtest(zt_arrays_internal_tests SOURCES zt.core.ex/ZtMemTest.cpp LIBS ZtCore zt_alloc_fail)
zt_link_components(zt_arrays_internal_tests arrays)
