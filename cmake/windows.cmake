# Builds for 64-bit Windows with mingw-w64 and runs what was built under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(target x86_64-w64-mingw32)
# Of Debian's two compilers for this target, the one whose C++ library has threads.
find_program(CMAKE_C_COMPILER NAMES ${target}-gcc-posix ${target}-gcc REQUIRED)
find_program(CMAKE_CXX_COMPILER NAMES ${target}-g++-posix ${target}-g++ REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine)

set(CMAKE_FIND_ROOT_PATH /usr/${target})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Programs carry the C++ runtime with them, so that they run wherever they are put.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
