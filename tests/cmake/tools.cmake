# zt-convert and its image files, in process and as a user runs the tool; the
# demo's pictures; the row bands of the threads example. The examples are
# added after the tests, so their targets are named here before they exist.
if(ZT_BUILD_TOOLS)
  find_package(PNG REQUIRED)
  zt_add_gtest(zt_tools_tests
    SOURCES
      tools/ZtImageIoTest.cpp
      tools/ZtPngReadTest.cpp
      tools/ZtConvertCommandTest.cpp
      tools/ZtAtomicFileTest.cpp
    LIBS zt_image_io PNG::PNG)
  target_include_directories(zt_tools_tests PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/tools)

  add_test(NAME zt_convert_cli
    COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/tools/zt_convert_cli.sh $<TARGET_FILE:zt-convert>
      ${CMAKE_CURRENT_BINARY_DIR}/zt-convert-cli)
  add_test(NAME zt_convert_completion
    COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/tools/zt_convert_completion.sh
      ${PROJECT_SOURCE_DIR}/tools/completion/zt-convert ${CMAKE_CURRENT_BINARY_DIR}/zt-convert-completion)
endif()

if(ZT_BUILD_TOOLS AND ZT_BUILD_EXAMPLES)
  add_test(NAME zt_demo_output
    COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/tools/zt_demo_output.sh $<TARGET_FILE:zt-demo>
      $<TARGET_FILE:zt-convert> ${CMAKE_CURRENT_BINARY_DIR}/demo-output)
endif()

if(ZT_BUILD_EXAMPLES)
  zt_add_gtest(zt_banded_convert_tests
    SOURCES tools/ZtBandedConvertTest.cpp
    LIBS zt_banded_convert)
  target_include_directories(zt_banded_convert_tests PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/tools)
  # The example itself, small: it fails when any banded result differs.
  add_test(NAME zt_threads_example COMMAND zt-threads 301x257 5)
endif()
