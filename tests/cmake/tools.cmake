# zt-convert in process and as a user runs it (completion, and the demo's pictures if built).
if(ZT_BUILD_TOOLS)
  find_package(PNG REQUIRED)
  zt_add_gtest(zt_tools_tests
    SOURCES tools/ZtImageIoTest.cpp tools/ZtConvertCommandTest.cpp
    LIBS zt_image_io PNG::PNG)
  add_test(NAME zt_convert_cli
    COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/tools/zt_convert_cli.sh $<TARGET_FILE:zt-convert>
      ${PROJECT_SOURCE_DIR}/tools/completion/zt-convert ${CMAKE_CURRENT_BINARY_DIR}/zt-convert-cli
      $<$<TARGET_EXISTS:zt-demo>:$<TARGET_FILE:zt-demo>>)
endif()

if(ZT_BUILD_EXAMPLES)
  zt_add_gtest(zt_banded_convert_tests
    SOURCES tools/ZtBandedConvertTest.cpp
    LIBS zt_banded_convert)
  # The example itself, small: it fails when any banded result differs.
  add_test(NAME zt_threads_example COMMAND zt-threads 301x257 5)
endif()
