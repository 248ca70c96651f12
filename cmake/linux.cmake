# Builds for Linux on another processor with Debian's cross compilers and runs what was built under
# qemu, which translates the program and hands its system calls on. TESSEL_TARGET is the target as
# the compilers are named, such as s390x-linux-gnu.
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TESSEL_TARGET)
set(CMAKE_SYSTEM_NAME Linux)
string(REGEX MATCH "^[^-]+" CMAKE_SYSTEM_PROCESSOR ${TESSEL_TARGET})

set(CMAKE_C_COMPILER ${TESSEL_TARGET}-gcc)
set(CMAKE_CXX_COMPILER ${TESSEL_TARGET}-g++)
# Debian keeps the target's loader and libraries below the root, where programs look for them in it.
string(REPLACE i686 i386 emulated ${CMAKE_SYSTEM_PROCESSOR})
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${emulated} -L /usr/${TESSEL_TARGET})

set(CMAKE_FIND_ROOT_PATH /usr/${TESSEL_TARGET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
