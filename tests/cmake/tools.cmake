# zt-convert and its image files, in process and as a user runs the tool (with
# its completion, and the demo's pictures when the examples are built); the row
# bands of the threads example. The examples are added after the tests, so
# their targets are named here before they exist.
if(ZT_BUILD_TOOLS)
  find_package(PNG REQUIRED)
  zt_add_gtest(zt_tools_tests
    SOURCES tools/ZtImageIoTest.cpp tools/ZtConvertCommandTest.cpp tools/ZtAtomicFileTest.cpp
    LIBS zt_image_io PNG::PNG)
  target_include_directories(zt_tools_tests PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/tools)
  set(_zt_demo "")
  if(ZT_BUILD_EXAMPLES)
    set(_zt_demo $<TARGET_FILE:zt-demo>)
  endif()
  add_test(NAME zt_convert_cli
    COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/tools/zt_convert_cli.sh $<TARGET_FILE:zt-convert>
      ${PROJECT_SOURCE_DIR}/tools/completion/zt-convert ${CMAKE_CURRENT_BINARY_DIR}/zt-convert-cli
      ${_zt_demo})
endif()

if(ZT_BUILD_EXAMPLES)
  zt_add_gtest(zt_banded_convert_tests
    SOURCES tools/ZtBandedConvertTest.cpp
    LIBS zt_banded_convert)
  target_include_directories(zt_banded_convert_tests PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/tools)
  # The example itself, small: it fails when any banded result differs.
  add_test(NAME zt_threads_example COMMAND zt-threads 301x257 5)
endif()
