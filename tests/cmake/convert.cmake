# The conversion engine, linked from the component objects to run each instruction-set path.
find_package(Threads REQUIRED)
zt_add_gtest(zt_convert_tests
  SOURCES
    zt.core.ex/ZtConvertSampleTest.cpp
    zt.core.ex/ZtConvertEntryTest.cpp
    zt.core.ex/ZtConvertBoundsTest.cpp
  LIBS ZtCore Threads::Threads)
zt_link_components(zt_convert_tests image convert
  convert_Byte convert_UByte convert_Short convert_UShort
  convert_Int convert_UInt convert_Float convert_Double)
# valgrind models no FP control settings, nor megabyte runs or billions of samples in time.
set_target_properties(zt_convert_tests PROPERTIES
  ZT_MEMCHECK_ARGS "--gtest_filter=-ConvertEnvironment.*:ConvertBounds.LargeTargets*:VectorRoutes.*")
# The paths again with the C library's feature record narrowed by its tunables (x86-64 glibc).
include(CheckIncludeFileCXX)
set(CMAKE_REQUIRED_DEFINITIONS -D_Bool=bool) # the header is C; the engine includes it so too
check_include_file_cxx(sys/platform/x86.h ZT_HAVE_GLIBC_X86_FEATURES)
unset(CMAKE_REQUIRED_DEFINITIONS)
if(ZT_HAVE_GLIBC_X86_FEATURES AND NOT CMAKE_CROSSCOMPILING)
  foreach(_narrowed "avx512;-AVX512F" "avx2_avx512;-AVX512F,-AVX2,-FMA")
    list(GET _narrowed 0 _paths)
    list(GET _narrowed 1 _hwcaps)
    add_test(NAME zt_convert_paths_without_${_paths} COMMAND zt_convert_tests
      --gtest_filter=ConvertPaths.*)
    set_tests_properties(zt_convert_paths_without_${_paths} PROPERTIES
      ENVIRONMENT "GLIBC_TUNABLES=glibc.cpu.hwcaps=${_hwcaps};ZT_NARROWED=${_paths}")
  endforeach()
endif()
