# Builds for another architecture with Debian's compilers and packages, and runs tests with qemu-user:
#   cmake --toolchain cmake/toolchains/linux-gnu.cmake -DTRIPLET=arm-linux-gnueabihf -DCMAKE_SYSROOT=FOLDER
# The folder holds the development packages of that architecture; scripts/elsewhere makes one.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TRIPLET)
set(CMAKE_SYSTEM_NAME Linux)
string(REGEX MATCH "^[^-]+" CMAKE_SYSTEM_PROCESSOR "${TRIPLET}")
set(CMAKE_CXX_COMPILER "${TRIPLET}-g++")
set(CMAKE_LIBRARY_ARCHITECTURE "${TRIPLET}")
set(CMAKE_CROSSCOMPILING_EMULATOR "qemu-${CMAKE_SYSTEM_PROCESSOR};-L;${CMAKE_SYSROOT}")

# Programs, xsltproc among them, are those of this machine; all else is the target's.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
foreach(kind LIBRARY INCLUDE PACKAGE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${CMAKE_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR} "${CMAKE_SYSROOT}/usr/lib/${TRIPLET}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig")
