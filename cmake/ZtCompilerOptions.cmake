# Compiler settings shared by every target of the project.
#
# Floating point is part of the library's contract: conversions must give the
# same bits under every compiler and optimisation level, so contraction into
# fused multiply-add is switched off and nothing that relaxes IEEE semantics
# is ever added here.

add_library(zt_compile_options INTERFACE)
add_library(Zt::CompileOptions ALIAS zt_compile_options)

target_compile_options(zt_compile_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast
  -Wcast-align -Woverloaded-virtual -Wconversion -Wsign-conversion
  -Wdouble-promotion -Wformat=2
  -ffp-contract=off -fno-fast-math -fno-finite-math-only)

# Tests, examples and benchmarks: the same floating-point settings, ordinary warnings.
add_library(zt_test_options INTERFACE)
target_compile_options(zt_test_options INTERFACE
  -Wall -Wextra -ffp-contract=off -fno-fast-math)

if(ZT_WARNINGS_AS_ERRORS)
  target_compile_options(zt_compile_options INTERFACE -Werror)
  target_compile_options(zt_test_options INTERFACE -Werror)
endif()

# Only what carries an export macro is visible outside a shared library.
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# Sets the shared-library defaults of this project on a library target.
function(zt_shared_library target)
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    # The three libraries are installed side by side; each finds its
    # siblings next to itself under any prefix.
    INSTALL_RPATH "$ORIGIN")
  # Every symbol a library needs must come from its declared dependencies.
  # Not under sanitizers: their runtime is linked into the executable only.
  if(NOT ZT_SANITIZE)
    target_link_options(${target} PRIVATE -Wl,--no-undefined)
  endif()
endfunction()

# Sanitizer builds: ZT_SANITIZE is a list such as "address;undefined". Every
# target of the build, tests included, is instrumented, and any finding stops
# the program (no recovery), so a finding fails its test.
set(ZT_SANITIZE "" CACHE STRING "Sanitizers to build with, e.g. address;undefined")
if(ZT_SANITIZE)
  list(JOIN ZT_SANITIZE "," _zt_sanitizers)
  add_compile_options(-fsanitize=${_zt_sanitizers} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer -g)
  add_link_options(-fsanitize=${_zt_sanitizers} -fno-sanitize-recover=all)
endif()
