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
# `cpack` in the build directory writes one Debian package per install
# component, and one tarball of them all (zt-core-ex-<version>-Linux.tar.gz).
#
# Install components and their Debian packages (each component's install
# rules name it with COMPONENT <name>):
#
#   component     Debian package      holds
#   runtime       libzt-core-ex1      the three shared libraries
#   development   libzt-core-ex-dev   headers, CMake package, pkg-config file,
#                                     the libraries' .so links; depends on the
#                                     exact version of libzt-core-ex1
#   tools         zt-core-ex-tools    zt-convert, its manual page and bash
#                                     completion
#   python        python3-ztcoreex    the Python extension module; depends on
#                                     python3-numpy (none while no install
#                                     rule names the component)
#
# Every package gets /usr/share/doc/<package>/copyright and a changelog;
# dpkg-shlibdeps computes what their binaries need, libzt-core-ex1 carries a
# shlibs file and an ldconfig trigger, and binaries installed under /usr carry
# no run path (see tools/CMakeLists.txt).
set(CPACK_PACKAGE_NAME zt-core-ex)
set(CPACK_PACKAGE_VENDOR "Zt")
set(CPACK_PACKAGE_CONTACT "Zt.Core.Ex maintainers <maintainers@zt-core-ex.example.org>")
# Each Debian package's description below starts with its own synopsis.
# CPack puts a summary of its own in front of them unless the summary is
# its default, so the default it stays.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${CMAKE_PROJECT_NAME} built using CMake")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_FILE_NAME ${CPACK_PACKAGE_NAME}-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME})
set(CPACK_RESOURCE_FILE_README ${PROJECT_SOURCE_DIR}/README.md)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_GENERATOR DEB TGZ)
set(CPACK_STRIP_FILES ON)
set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)
set(CPACK_DEB_COMPONENT_INSTALL ON)

set(ZT_DEB_REVISION 1)
set(ZT_DEB_VERSION ${PROJECT_VERSION}-${ZT_DEB_REVISION})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${ZT_DEB_REVISION})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The tools need the project's own libraries, which no installed package
# describes yet: dpkg-shlibdeps finds them where the build put them, and the
# exact dependency on libzt-core-ex1 below stands for them.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/source)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${CPACK_PACKAGE_CONTACT}")
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://zt-core-ex.example.org/")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")

set(_zt_runtime_package libzt-core-ex${PROJECT_VERSION_MAJOR})
set(_zt_exact_runtime "${_zt_runtime_package} (= ${ZT_DEB_VERSION})")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${_zt_runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
  "image-processing value types of Zt.Core.Ex (shared libraries)\nThe shared libraries Zt.Core.Ex, Zt.Core and Zt.Interop.Runtime30:\narrays, images, pixel conversion and metadata.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/triggers)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzt-core-ex-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${_zt_exact_runtime}")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
  "image-processing value types of Zt.Core.Ex (development files)\nHeaders, the CMake package ZtCoreEx and the pkg-config file zt-core-ex\nfor building against Zt.Core.Ex.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME zt-core-ex-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${_zt_exact_runtime}")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
  "image converter built on Zt.Core.Ex\nzt-convert reads PNG and netpbm images and raw pixel blocks, converts\nthem to any pixel layout and sample type and writes them, in files or\npipelines.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-ztcoreex)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
# The extension module is built for one interpreter version: the package
# names that version's range, as Debian's Python packages do.
set(_zt_python_depends "")
if(ZT_PYTHON)
  execute_process(COMMAND ${ZT_PYTHON} -c "import sys; print('%d.%d %d.%d' % (sys.version_info[0], sys.version_info[1], sys.version_info[0], sys.version_info[1] + 1))"
    OUTPUT_VARIABLE _zt_python_versions OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(_zt_python_versions MATCHES "^([0-9.]+) ([0-9.]+)$")
    set(_zt_python_depends "python3 (>= ${CMAKE_MATCH_1}), python3 (<< ${CMAKE_MATCH_2}), ")
  endif()
endif()
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "${_zt_python_depends}python3-numpy, ${_zt_exact_runtime}")
set(CPACK_DEBIAN_PYTHON_DESCRIPTION
  "Python bindings of the Zt.Core.Ex image library\nThe module ztcoreex: Zt.Core.Ex images and conversions for Python,\nwith NumPy arrays.")

# The copyright file and a changelog for each package, made at configure
# time (TIMESTAMP honours SOURCE_DATE_EPOCH for a reproducible date).
set(_zt_debian_dir ${CMAKE_CURRENT_LIST_DIR}/debian)
string(TIMESTAMP _zt_changelog_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
function(zt_install_debian_docs component)
  string(TOUPPER ${component} _upper)
  set(_zt_package ${CPACK_DEBIAN_${_upper}_PACKAGE_NAME})
  set(_out ${PROJECT_BINARY_DIR}/debian/${_zt_package})
  configure_file(${_zt_debian_dir}/changelog.in ${_out}/changelog.Debian @ONLY)
  execute_process(COMMAND gzip -9nf ${_out}/changelog.Debian)
  install(FILES ${_zt_debian_dir}/copyright ${_out}/changelog.Debian.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${_zt_package} COMPONENT ${component})
  if(EXISTS ${_zt_debian_dir}/${component}.lintian-overrides)
    configure_file(${_zt_debian_dir}/${component}.lintian-overrides ${_out}/lintian-overrides @ONLY)
    install(FILES ${_out}/lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
      RENAME ${_zt_package} COMPONENT ${component})
  endif()
endfunction()
zt_install_debian_docs(runtime)
zt_install_debian_docs(development)
if(ZT_BUILD_TOOLS)
  zt_install_debian_docs(tools)
endif()
# The Python module is added later in the configure run: its documents
# follow once the whole project is read, and only when the module is built,
# so that no package of documents alone appears.
function(_zt_python_debian_docs)
  if(TARGET ztcoreex OR ZT_BUILD_PYTHON)
    zt_install_debian_docs(python)
  endif()
endfunction()
cmake_language(DEFER DIRECTORY ${PROJECT_SOURCE_DIR} CALL _zt_python_debian_docs)

include(CPack)
