# The install directories of GNUInstallDirs, with the libraries in the
# machine's multiarch directory (lib/x86_64-linux-gnu on Debian) whatever the
# prefix, where the dynamic linker of a multiarch system looks under /usr and
# /usr/local alike. GNUInstallDirs alone does so under /usr only, and the
# Debian packages are made from an install under the configured prefix.
# A CMAKE_INSTALL_LIBDIR given on the command line wins.
if(NOT DEFINED CMAKE_INSTALL_LIBDIR AND CMAKE_LIBRARY_ARCHITECTURE
   AND EXISTS "/etc/debian_version")
  set(CMAKE_INSTALL_LIBDIR "lib/${CMAKE_LIBRARY_ARCHITECTURE}" CACHE PATH
    "Object code libraries (LIBDIR)")
endif()
include(GNUInstallDirs)
