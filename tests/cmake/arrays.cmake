# Numeric, string and two-dimensional arrays through the shared library.
zt_add_gtest(zt_arrays_tests SOURCES zt.core.ex/ZtArrayTest.cpp LIBS Zt::CoreEx)

# Makes chosen calls of malloc, realloc or operator new fail in the binary
# that links it (see support/ZtAllocFail.h); generic, for any suite.
add_library(zt_alloc_fail OBJECT support/ZtAllocFail.cpp)
target_include_directories(zt_alloc_fail PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/support)
target_link_libraries(zt_alloc_fail PRIVATE zt_test_options)
target_link_options(zt_alloc_fail INTERFACE -Wl,--wrap=malloc -Wl,--wrap=realloc -Wl,--wrap=free)

# The memory blocks and matrices that the shared library hides, linked from
# the component's objects, where malloc and realloc can be made to fail too.
zt_add_gtest(zt_arrays_internal_tests SOURCES zt.core.ex/ZtMemTest.cpp LIBS ZtCore zt_alloc_fail)
zt_link_components(zt_arrays_internal_tests arrays)
