# The library as its users meet it (symbols, installs, consumers, packages); not in a cross build.
if(NOT ZT_INSTALL OR CMAKE_CROSSCOMPILING)
  return()
endif()
set(_zt_packaging ${CMAKE_CURRENT_SOURCE_DIR}/packaging)
set(_zt_prefix ${CMAKE_BINARY_DIR}/test-install)
set(_zt_stage ${CMAKE_BINARY_DIR}/test-destdir)
if(ZT_SANITIZE) # an instrumented library needs the sanitizer runtime in the executable
  string(REPLACE ";" "," _zt_flags "-fsanitize=${ZT_SANITIZE}")
endif()

# zt_add_consumer(<test> <fixture> <cache options...>): the consumer project, built and run.
function(zt_add_consumer name fixture)
  add_test(NAME ${name} COMMAND ${CMAKE_CTEST_COMMAND} --build-and-test ${_zt_packaging}/consumer
    ${CMAKE_CURRENT_BINARY_DIR}/${name} --build-generator ${CMAKE_GENERATOR} --build-options
    -DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER} "-DCMAKE_EXE_LINKER_FLAGS=${_zt_flags}"
    -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF ${ARGN} --test-command consumer)
  set_tests_properties(${name} PROPERTIES FIXTURES_REQUIRED "${fixture}")
endfunction()

add_test(NAME zt_install COMMAND ${CMAKE_COMMAND} --install ${CMAKE_BINARY_DIR} --prefix ${_zt_prefix})
add_test(NAME zt_install_destdir
  COMMAND sh -c "rm -rf \"$1\" && DESTDIR=\"$1\" \"$2\" --install \"$3\"" zt_install_destdir
    ${_zt_stage} ${CMAKE_COMMAND} ${CMAKE_BINARY_DIR})
# Every install runs this build tree's install script, which rewrites its manifest: one at a time.
set_tests_properties(zt_install PROPERTIES FIXTURES_SETUP zt_installed RESOURCE_LOCK zt_install_tree)
set_tests_properties(zt_install_destdir PROPERTIES FIXTURES_SETUP zt_staged
  RESOURCE_LOCK zt_install_tree)
zt_add_consumer(zt_consumer_find_package zt_installed -DCMAKE_PREFIX_PATH=${_zt_prefix})
zt_add_consumer(zt_consumer_find_package_destdir zt_staged
  -DCMAKE_PREFIX_PATH=${_zt_stage}${CMAKE_INSTALL_PREFIX})
cmake_path(ABSOLUTE_PATH ZT_PKGCONFIG_INSTALL_DIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}
  OUTPUT_VARIABLE _zt_pcdir)
add_test(NAME zt_consumer_pkg_config COMMAND ${CMAKE_COMMAND} -E env PKG_CONFIG_SYSROOT_DIR=${_zt_stage}
  bash ${_zt_packaging}/common.sh pc_tree DESTDIR ${_zt_stage} ${_zt_stage}${_zt_pcdir}
  ${CMAKE_CURRENT_BINARY_DIR}/consumer-pkg-config ${CMAKE_CXX_COMPILER} ${_zt_flags})
set_tests_properties(zt_consumer_pkg_config PROPERTIES FIXTURES_REQUIRED zt_staged)

# Sanitizers add module constructors; their build is about memory, not a second build or packages.
if(NOT ZT_SANITIZE)
  add_test(NAME zt_library_symbols
    COMMAND bash ${_zt_packaging}/check_library.sh $<TARGET_FILE:ZtCoreEx>)
  zt_add_consumer(zt_consumer_add_subdirectory ""
    -DZT_SOURCE_DIR=${PROJECT_SOURCE_DIR} -DCMAKE_BUILD_TYPE=Debug)
  # CPack's tarball; in the GCC build also the Debian packages (once: they hold the same files).
  add_test(NAME zt_packages COMMAND bash ${_zt_packaging}/check_packages.sh ${CMAKE_BINARY_DIR}
    ${CMAKE_CURRENT_BINARY_DIR}/packages $<$<STREQUAL:${CMAKE_CXX_COMPILER_ID},GNU>:${CMAKE_CXX_COMPILER}>)
  set_tests_properties(zt_packages PROPERTIES RESOURCE_LOCK zt_install_tree)
endif()
