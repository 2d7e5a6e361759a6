# GUIDs, strings, exceptions and the raising helpers.
zt_add_gtest(zt_core_tests SOURCES zt.core/ZtCoreTest.cpp LIBS ZtCore zt_ex_internal)
