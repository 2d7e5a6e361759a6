# Components linked from their objects, so that their own malloc and realloc can fail too.
zt_add_gtest(zt_alloc_sweep_tests SOURCES zt.core.ex/ZtAllocSweepTest.cpp LIBS ZtCore zt_alloc_fail)
zt_link_components(zt_alloc_sweep_tests arrays image views params metadata convert convert_Byte
  convert_UByte convert_Short convert_UShort convert_Int convert_UInt convert_Float convert_Double)
