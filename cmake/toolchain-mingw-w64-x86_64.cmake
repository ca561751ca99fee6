# Cross-builds the 64-bit Windows DLL with Debian's MinGW-w64 GCC (g++-mingw-w64-x86-64-posix).
# The posix flavour is the one whose libstdc++ has std::thread. Tests run under Wine when it is
# installed: scripts/test_windows prepares the prefix and the server they need.
#   cmake -B build/windows -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-mingw-w64-x86_64.cmake
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(ZAL_MINGW_TRIPLET x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${ZAL_MINGW_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ZAL_MINGW_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${ZAL_MINGW_TRIPLET}-windres)

# Libraries, headers and packages only from the target's roots (add yours with
# -DCMAKE_FIND_ROOT_PATH=...); programs (Python, Wine) from the host.
list(APPEND CMAKE_FIND_ROOT_PATH /usr/${ZAL_MINGW_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Debian's wine64 package puts its loader outside PATH; newer Wine has a single `wine`.
find_program(ZAL_WINE NAMES wine64 wine PATHS /usr/lib/wine NO_CMAKE_FIND_ROOT_PATH)
if(ZAL_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${ZAL_WINE})
else()
  message(STATUS "Wine not found: the test programs build but cannot run here")
endif()
