# Coverage-guided fuzzing with libFuzzer (Clang only).
#
# With ZT_FUZZ on, every target of the build is compiled with the fuzzer's
# coverage instrumentation (-fsanitize=fuzzer-no-link), so the fuzz targets
# see the edges of the library they drive, and the fuzz targets themselves
# link the fuzzer's main (-fsanitize=fuzzer). Combined with ZT_SANITIZE the
# one instrumented build serves the ordinary suites and the fuzzers alike.

option(ZT_FUZZ "Build the libFuzzer targets and instrument everything for them (Clang)" OFF)
set(ZT_FUZZ_SECONDS 45 CACHE STRING "Seconds each fuzz target runs as a ctest test")

if(ZT_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "ZT_FUZZ needs Clang; ${CMAKE_CXX_COMPILER_ID} has no libFuzzer")
  endif()
  # The sanitizer runtime supplies the coverage hooks of the instrumented
  # shared libraries, which are linked without it; a fuzzer without a
  # sanitizer would find crashes only.
  if(NOT ZT_SANITIZE)
    message(FATAL_ERROR "ZT_FUZZ needs a sanitizer build: set ZT_SANITIZE (the asan preset does)")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
