# The library as its users meet it: exported symbols, the installed CMake
# package and the source tree pulled in with add_subdirectory. They need the
# install rules, and they inspect and run what they build on the host, so a
# cross build leaves them out.
if(NOT ZT_INSTALL OR CMAKE_CROSSCOMPILING)
  return()
endif()

set(_zt_packaging ${CMAKE_CURRENT_SOURCE_DIR}/packaging)
set(_zt_prefix ${CMAKE_BINARY_DIR}/test-install)

# Sanitizers add their own module constructors, so the check of the library's
# symbols and initialisers only runs on uninstrumented builds.
if(NOT ZT_SANITIZE)
  add_test(NAME zt_library_symbols
    COMMAND bash ${_zt_packaging}/check_library.sh $<TARGET_FILE:ZtCoreEx>)
endif()

add_test(NAME zt_install
  COMMAND ${CMAKE_COMMAND} --install ${CMAKE_BINARY_DIR} --prefix ${_zt_prefix})
set_tests_properties(zt_install PROPERTIES FIXTURES_SETUP zt_installed)

set(_zt_consumer_options
  --build-generator ${CMAKE_GENERATOR}
  --build-options -DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER})
if(ZT_SANITIZE)
  # An instrumented library needs the sanitizer runtime in the executable.
  list(JOIN ZT_SANITIZE "," _zt_sanitizers)
  list(APPEND _zt_consumer_options "-DCMAKE_EXE_LINKER_FLAGS=-fsanitize=${_zt_sanitizers}")
endif()

add_test(NAME zt_consumer_find_package
  COMMAND ${CMAKE_CTEST_COMMAND} --build-and-test
    ${_zt_packaging}/find_package ${CMAKE_CURRENT_BINARY_DIR}/consumer-find-package
    ${_zt_consumer_options} -DCMAKE_PREFIX_PATH=${_zt_prefix} -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF
    --test-command consumer)
set_tests_properties(zt_consumer_find_package PROPERTIES FIXTURES_REQUIRED zt_installed)

# Builds the whole library a second time, so it runs in the plain builds
# only: the sanitizer build is about the library's memory behaviour.
if(NOT ZT_SANITIZE)
  add_test(NAME zt_consumer_add_subdirectory
    COMMAND ${CMAKE_CTEST_COMMAND} --build-and-test
      ${_zt_packaging}/add_subdirectory ${CMAKE_CURRENT_BINARY_DIR}/consumer-add-subdirectory
      ${_zt_consumer_options} -DZT_SOURCE_DIR=${PROJECT_SOURCE_DIR} -DCMAKE_BUILD_TYPE=Debug
      --test-command consumer)
endif()

# The same library installed with DESTDIR, as distribution packaging does it,
# consumed through pkg-config and through find_package.
set(_zt_stage ${CMAKE_BINARY_DIR}/test-destdir)
add_test(NAME zt_install_destdir
  COMMAND sh -c "rm -rf \"$1\" && DESTDIR=\"$1\" \"$2\" --install \"$3\"" zt_install_destdir
    ${_zt_stage} ${CMAKE_COMMAND} ${CMAKE_BINARY_DIR})
set_tests_properties(zt_install_destdir PROPERTIES FIXTURES_SETUP zt_staged)

set(_zt_sanitize_flags "")
if(ZT_SANITIZE)
  set(_zt_sanitize_flags -fsanitize=${_zt_sanitizers})
endif()
add_test(NAME zt_consumer_pkg_config
  COMMAND bash ${_zt_packaging}/pkg_config_consumer.sh ${_zt_stage} ${CMAKE_INSTALL_PREFIX}
    ${ZT_PKGCONFIG_INSTALL_DIR} ${CMAKE_CURRENT_BINARY_DIR}/consumer-pkg-config
    ${CMAKE_CXX_COMPILER} ${_zt_sanitize_flags})
set_tests_properties(zt_consumer_pkg_config PROPERTIES FIXTURES_REQUIRED zt_staged)

add_test(NAME zt_consumer_find_package_destdir
  COMMAND ${CMAKE_CTEST_COMMAND} --build-and-test
    ${_zt_packaging}/find_package ${CMAKE_CURRENT_BINARY_DIR}/consumer-find-package-destdir
    ${_zt_consumer_options} -DCMAKE_PREFIX_PATH=${_zt_stage}${CMAKE_INSTALL_PREFIX}
    -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF
    --test-command consumer)
set_tests_properties(zt_consumer_find_package_destdir PROPERTIES FIXTURES_REQUIRED zt_staged)

# CPack's tarball, unpacked and looked into; in the GCC build also the
# Debian packages, with lintian and unpacked by dpkg into a scratch root for a
# consumer to build against (once is enough: they hold the same files).
if(NOT ZT_SANITIZE)
  set(_zt_deb_check "")
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    set(_zt_deb_check ${CMAKE_CXX_COMPILER})
  endif()
  add_test(NAME zt_packages
    COMMAND bash ${_zt_packaging}/check_packages.sh ${CMAKE_BINARY_DIR}
      ${CMAKE_CURRENT_BINARY_DIR}/packages ${_zt_deb_check})
  set_tests_properties(zt_packages PROPERTIES RESOURCE_LOCK zt_install_tree)
endif()
# Every install runs the same install script of this build tree, which also
# rewrites its manifest: one at a time.
set_tests_properties(zt_install zt_install_destdir PROPERTIES RESOURCE_LOCK zt_install_tree)
