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
