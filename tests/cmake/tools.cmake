# zt-convert and its image files, in process and as a user runs the tool.
if(ZT_BUILD_TOOLS)
  find_package(PNG REQUIRED)
  zt_add_gtest(zt_tools_tests
    SOURCES
      tools/ZtImageIoTest.cpp
      tools/ZtPngReadTest.cpp
      tools/ZtConvertCommandTest.cpp
    LIBS zt_image_io PNG::PNG)
  target_include_directories(zt_tools_tests PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/tools)

  add_test(NAME zt_convert_cli
    COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/tools/zt_convert_cli.sh $<TARGET_FILE:zt-convert>
      ${CMAKE_CURRENT_BINARY_DIR}/zt-convert-cli)
endif()
