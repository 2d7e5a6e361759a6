# Pixel conversion: the entry points of CZtImage and the selection in
# ZtImageConvert.cpp, and the cells in ZtConvertCells.cpp, compiled once per
# target data type (component convert_<type>) so the eight parts build in
# parallel.
zt_ex_component(convert
  SOURCES
    zt.core.ex/ZtImageConvert.cpp)

foreach(_zt_type IN ITEMS Byte UByte Short UShort Int UInt Float Double)
  zt_ex_component(convert_${_zt_type}
    SOURCES
      zt.core.ex/ZtConvertCells.cpp)
  target_compile_definitions(zt_ex_convert_${_zt_type} PRIVATE ZT_CONVERT_TARGET_TYPE=${_zt_type})
endforeach()

# GCC would also vectorise the remainder of each vectorised loop with
# narrower vectors; the remainder is at most one vector of pixels, and the
# extra loop versions doubled the compile time and size of the cells.
#
# The cells run with every floating-point exception masked (the entry point
# sets the control register so), so no operation in them can trap. GCC is
# told so, as Clang assumes by default: it may then evaluate both sides of
# the rule's selects in vector lanes, which it otherwise refuses for a
# division or a comparison. Values are untouched: rounding, denormals and
# NaNs stay IEEE, and contraction stays off.
# (A source-file option, so that it comes after the project's -fno-fast-math,
# which would set trapping back.)
foreach(_zt_type IN ITEMS Byte UByte Short UShort Int UInt Float Double)
  target_compile_options(zt_ex_convert_${_zt_type} PRIVATE
    $<$<CXX_COMPILER_ID:GNU>:--param=vect-epilogues-nomask=0>)
endforeach()
set_source_files_properties(zt.core.ex/ZtConvertCells.cpp PROPERTIES
  COMPILE_OPTIONS $<$<CXX_COMPILER_ID:GNU>:-fno-trapping-math>)
