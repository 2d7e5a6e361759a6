# Cross build for 64-bit Arm Linux with the distribution's cross compiler
# (Debian: g++-aarch64-linux-gnu), the tests run under user-mode emulation
# (Debian: qemu-user).
#
#   cmake --preset aarch64      or
#   cmake -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/aarch64-linux-gnu.cmake ...

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

set(ZT_CROSS_TRIPLET aarch64-linux-gnu)
set(ZT_CROSS_SYSROOT /usr/${ZT_CROSS_TRIPLET})

# The C compiler too: the GoogleTest sources, built with the tests, ask for it.
set(CMAKE_C_COMPILER ${ZT_CROSS_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${ZT_CROSS_TRIPLET}-g++)

# Libraries, headers and packages of the target only; programs (the
# emulator, ninja) of the host.
set(CMAKE_FIND_ROOT_PATH ${ZT_CROSS_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# ctest runs every test executable through the emulator, which finds the
# target's dynamic loader and C++ library under the sysroot.
find_program(ZT_QEMU_AARCH64 qemu-aarch64)
if(ZT_QEMU_AARCH64)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${ZT_QEMU_AARCH64} -L ${ZT_CROSS_SYSROOT})
endif()
