# Toolchain file: builds for another processor with Debian's cross compiler, against the sysroot that
# scripts/portability.sh makes, and runs what was built under qemu.
# usage: cmake -DCMAKE_TOOLCHAIN_FILE=cmake/crossBuild.cmake -DKAKB_ARCH=armhf|arm64|i386|s390x

set(KAKB_CROSS_armhf arm-linux-gnueabihf arm)
set(KAKB_CROSS_arm64 aarch64-linux-gnu aarch64)
set(KAKB_CROSS_i386 i686-linux-gnu i386)
set(KAKB_CROSS_s390x s390x-linux-gnu s390x)
if(NOT DEFINED KAKB_CROSS_${KAKB_ARCH})
    message(FATAL_ERROR "KAKB_ARCH is \"${KAKB_ARCH}\", not armhf, arm64, i386 or s390x")
endif()
list(GET KAKB_CROSS_${KAKB_ARCH} 0 KAKB_CROSS_COMPILER)
list(GET KAKB_CROSS_${KAKB_ARCH} 1 KAKB_PROCESSOR)

# The compiler is tried out in projects of its own, which read this file too.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KAKB_ARCH)

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${KAKB_PROCESSOR})
set(CMAKE_CXX_COMPILER ${KAKB_CROSS_COMPILER}-g++)

get_filename_component(CMAKE_SYSROOT
    ${CMAKE_CURRENT_LIST_DIR}/../build/sysroot/${KAKB_ARCH} ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${KAKB_PROCESSOR};-L;${CMAKE_SYSROOT})

# Debian names its library folder for i386 after the processor family, not after the compiler.
set(KAKB_LIBRARY_FOLDER ${KAKB_CROSS_COMPILER})
if(KAKB_ARCH STREQUAL "i386")
    set(KAKB_LIBRARY_FOLDER i386-linux-gnu)
endif()
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR}
    ${CMAKE_SYSROOT}/usr/lib/${KAKB_LIBRARY_FOLDER}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
