# Distribution beside the CMake package: a pkg-config file, and CPack
# producing a Debian package and a tarball from the same install rules.

# --- pkg-config ---------------------------------------------------------------
# The paths in zt-core-ex.pc are relative to the file's own place (pkg-config
# expands ${pcfiledir}), so one file serves every prefix: the configured one,
# `cmake --install --prefix`, a DESTDIR tree, the .deb under /usr and an
# unpacked tarball. A libdir or includedir given as an absolute path outside
# the prefix cannot move with it and is written as it stands.
set(ZT_PKGCONFIG_INSTALL_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

function(_zt_pc_path out_var dir)
  if(IS_ABSOLUTE "${dir}")
    set(${out_var} "${dir}" PARENT_SCOPE)
  else()
    set(${out_var} "\${prefix}/${dir}" PARENT_SCOPE)
  endif()
endfunction()

if(IS_ABSOLUTE "${ZT_PKGCONFIG_INSTALL_DIR}")
  set(ZT_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
else()
  # From <prefix>/<libdir>/pkgconfig back up to <prefix>.
  file(RELATIVE_PATH _zt_pc_up "/zt-prefix/${ZT_PKGCONFIG_INSTALL_DIR}" "/zt-prefix")
  string(REGEX REPLACE "/$" "" _zt_pc_up "${_zt_pc_up}")
  set(ZT_PC_PREFIX "\${pcfiledir}/${_zt_pc_up}")
endif()
_zt_pc_path(ZT_PC_LIBDIR "${CMAKE_INSTALL_LIBDIR}")
_zt_pc_path(ZT_PC_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}")

configure_file(${CMAKE_CURRENT_LIST_DIR}/zt-core-ex.pc.in
  ${PROJECT_BINARY_DIR}/zt-core-ex.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zt-core-ex.pc
  DESTINATION ${ZT_PKGCONFIG_INSTALL_DIR}
  COMPONENT development)

# --- CPack --------------------------------------------------------------------
# `cpack` in the build directory writes zt-core-ex_<version>_<arch>.deb and
# zt-core-ex-<version>-Linux.tar.gz. Both hold every install component: the
# three libraries, the headers, the CMake and pkg-config files, and the tools
# when they are built.
set(CPACK_PACKAGE_NAME zt-core-ex)
set(CPACK_PACKAGE_VENDOR "Zt")
set(CPACK_PACKAGE_CONTACT "Zt.Core.Ex maintainers <zt-core-ex@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_FILE_NAME ${CPACK_PACKAGE_NAME}-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME})
set(CPACK_RESOURCE_FILE_README ${PROJECT_SOURCE_DIR}/README.md)
set(CPACK_GENERATOR DEB TGZ)
set(CPACK_STRIP_FILES OFF)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# The libraries need the C and C++ runtimes only; zt-convert adds libpng.
set(_zt_deb_depends "libc6, libstdc++6, libgcc-s1")
if(ZT_BUILD_TOOLS)
  string(APPEND _zt_deb_depends ", libpng16-16")
endif()
set(CPACK_DEBIAN_PACKAGE_DEPENDS "${_zt_deb_depends}")

include(CPack)
