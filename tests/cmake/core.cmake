# Interop declarations, string, exceptions and the raising helpers.
zt_add_gtest(zt_core_tests
  SOURCES interop/CGuidTest.cpp zt.core/ZtStringTest.cpp zt.core/ZtExceptionTest.cpp
  LIBS ZtCore zt_ex_internal)
