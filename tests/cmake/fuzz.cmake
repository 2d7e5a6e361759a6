# The libFuzzer targets, in the instrumented build only (ZT_FUZZ).
if(ZT_FUZZ)
  add_subdirectory(${PROJECT_SOURCE_DIR}/fuzz ${CMAKE_CURRENT_BINARY_DIR}/fuzz)
endif()
