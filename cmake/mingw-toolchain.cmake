# Windows on x86-64, built with MinGW-w64 (posix threads) and run under Wine.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# scripts/setup builds libraries for which Debian has no MinGW package, and puts them into the user's cache.
if(DEFINED ENV{XDG_CACHE_HOME} AND NOT "$ENV{XDG_CACHE_HOME}" STREQUAL "")
    set(LUTESTSUITE_MINGW_PREFIX "$ENV{XDG_CACHE_HOME}/lutestsuite/mingw")
else()
    set(LUTESTSUITE_MINGW_PREFIX "$ENV{HOME}/.cache/lutestsuite/mingw")
endif()

# CMAKE_PREFIX_PATH is a root as well, so that an install tree named there is found in a cross build.
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 "${LUTESTSUITE_MINGW_PREFIX}" ${CMAKE_PREFIX_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../scripts/run-wine")
