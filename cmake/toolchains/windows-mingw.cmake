# SPDX-License-Identifier: Apache-2.0
# Cross-compiles for 64-bit Windows with Debian's mingw-w64 and runs the tests under Wine. The dependencies are in the
# prefix that scripts/windows-deps.sh prints; the environment variable QUORVEL_WINDOWS_PREFIX names it.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(triplet x86_64-w64-mingw32)
# The posix flavour is the one with std::thread and std::mutex.
set(CMAKE_C_COMPILER ${triplet}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triplet}-g++-posix)
set(CMAKE_RC_COMPILER ${triplet}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${triplet} "$ENV{QUORVEL_WINDOWS_PREFIX}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(wine NAMES wine64 wine PATHS /usr/lib/wine)
if(wine)
  set(CMAKE_CROSSCOMPILING_EMULATOR "${wine}")
endif()
