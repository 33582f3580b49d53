# SPDX-License-Identifier: MIT
# Cross-compiles fully static ARMv7 hard-float programs against musl, for the
# extractor the device runs: Debian has musl for armhf but no C++ runtime for
# it, so this is for C only. scripts/device-deps unpacks musl and writes the
# compiler that links against it, TAMBER_DEVICE_PREFIX/musl-sysroot/bin/musl-cc;
# libraries come from TAMBER_DEVICE_PREFIX/musl.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm)

set(TAMBER_DEVICE_PREFIX "${CMAKE_CURRENT_LIST_DIR}/../build-deps-armhf" CACHE PATH
  "Where scripts/device-deps put the device's libraries")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TAMBER_DEVICE_PREFIX)
get_filename_component(TAMBER_DEVICE_PREFIX "${TAMBER_DEVICE_PREFIX}" ABSOLUTE)
set(CMAKE_C_COMPILER "${TAMBER_DEVICE_PREFIX}/musl-sysroot/bin/musl-cc")
# Its name carries no target prefix from which CMake would find the binutils.
foreach(tool ar ranlib strip objcopy)
  string(TOUPPER ${tool} variable)
  set(CMAKE_${variable} /usr/bin/arm-linux-gnueabihf-${tool} CACHE FILEPATH "")
endforeach()

set(CMAKE_FIND_ROOT_PATH "${TAMBER_DEVICE_PREFIX}/musl")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_FIND_LIBRARY_SUFFIXES .a)
set(ENV{PKG_CONFIG_LIBDIR} "${TAMBER_DEVICE_PREFIX}/musl/lib/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")

set(CMAKE_C_FLAGS_INIT "-ffunction-sections -fdata-sections")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -Wl,--gc-sections")
