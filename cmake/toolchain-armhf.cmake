# SPDX-License-Identifier: MIT
# Cross-compiles for the device: ARMv7 hard-float Linux with Debian's
# arm-linux-gnueabihf compilers, running what it builds under qemu-arm.
#
#   cmake -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-armhf.cmake \
#         -DTAMBER_DEVICE_PREFIX=$PWD/build-deps-armhf \
#         -DQT_QMAKE_EXECUTABLE=.../qt-4.8.7-qws-armhf/bin/qmake ...
#
# Libraries other than Qt come from TAMBER_DEVICE_PREFIX/glibc, the static ones
# scripts/device-deps builds; Qt comes from the SDK that qmake names. The
# device's glibc is far older than the compiler's, so code is built without
# _FORTIFY_SOURCE (whose checked functions need glibc 2.11 to 2.25) and the C++
# runtime is linked in.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm;-L;/usr/arm-linux-gnueabihf)

set(TAMBER_DEVICE_PREFIX "${CMAKE_CURRENT_LIST_DIR}/../build-deps-armhf" CACHE PATH
  "Where scripts/device-deps put the device's libraries")
# try_compile projects see the toolchain file again, with their own cache.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TAMBER_DEVICE_PREFIX QT_QMAKE_EXECUTABLE)
get_filename_component(TAMBER_DEVICE_PREFIX "${TAMBER_DEVICE_PREFIX}" ABSOLUTE)

set(CMAKE_FIND_ROOT_PATH "${TAMBER_DEVICE_PREFIX}/glibc" "${TAMBER_DEVICE_PREFIX}/sysroot"
  /usr/arm-linux-gnueabihf)
if(QT_QMAKE_EXECUTABLE)
  # qmake lives in SDK/bin; the SDK's headers and libraries are searched as they are.
  get_filename_component(_tamber_sdk "${QT_QMAKE_EXECUTABLE}" DIRECTORY)
  get_filename_component(_tamber_sdk "${_tamber_sdk}" DIRECTORY)
  list(APPEND CMAKE_FIND_ROOT_PATH "${_tamber_sdk}")
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# pkg-config reads only the device's .pc files, whose paths are already absolute.
set(ENV{PKG_CONFIG_LIBDIR} "${TAMBER_DEVICE_PREFIX}/glibc/lib/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")
set(ENV{PKG_CONFIG_SYSROOT_DIR} "")

set(_tamber_flags "-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=0 -ffunction-sections -fdata-sections")
set(CMAKE_C_FLAGS_INIT "${_tamber_flags}")
set(CMAKE_CXX_FLAGS_INIT "${_tamber_flags}")
set(_tamber_link "-Wl,--gc-sections -static-libstdc++ -static-libgcc")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${_tamber_link}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${_tamber_link}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${_tamber_link}")

# Stand-ins for the few functions of newer glibc versions that the static
# libraries and libstdc++ would import (scripts/device-deps builds it). An
# object, not a library: it must win over libc.so wherever it comes on the line.
if(EXISTS "${TAMBER_DEVICE_PREFIX}/glibc/lib/glibc-compat.o")
  set(CMAKE_C_STANDARD_LIBRARIES_INIT "${TAMBER_DEVICE_PREFIX}/glibc/lib/glibc-compat.o")
  set(CMAKE_CXX_STANDARD_LIBRARIES_INIT "${TAMBER_DEVICE_PREFIX}/glibc/lib/glibc-compat.o")
endif()
