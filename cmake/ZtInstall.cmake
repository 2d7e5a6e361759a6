# Installs the three libraries, the public headers and the CMake package
# "ZtCoreEx", whose target Zt::CoreEx brings Zt::Core, Zt::InteropRuntime30
# and every include directory along.
include(CMakePackageConfigHelpers)

set(ZT_CMAKE_INSTALL_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ZtCoreEx)

install(TARGETS ZtInteropRuntime30 ZtCore ZtCoreEx
  EXPORT ZtCoreExTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)

install(FILES ${ZT_PUBLIC_HEADERS}
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ZtCoreEx COMPONENT development)

install(EXPORT ZtCoreExTargets
  NAMESPACE Zt::
  DESTINATION ${ZT_CMAKE_INSTALL_DIR}
  COMPONENT development)

configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/ZtCoreExConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/ZtCoreExConfig.cmake
  INSTALL_DESTINATION ${ZT_CMAKE_INSTALL_DIR})

write_basic_package_version_file(
  ${CMAKE_CURRENT_BINARY_DIR}/ZtCoreExConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)

install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/ZtCoreExConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/ZtCoreExConfigVersion.cmake
  DESTINATION ${ZT_CMAKE_INSTALL_DIR}
  COMPONENT development)
