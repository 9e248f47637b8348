# All outside dependencies. scripts/setup installs them on Debian.

find_package(Threads REQUIRED)

find_package(pugixml CONFIG QUIET)
if(NOT pugixml_FOUND)
    if(CMAKE_CROSSCOMPILING)
        message(FATAL_ERROR "pugixml for MinGW is missing. Run: scripts/setup windows")
    endif()
    message(FATAL_ERROR "pugixml is missing. Run: scripts/setup linux")
endif()

# libgomp is not instrumented, so the thread sanitizer would report every parallel region.
if(NOT "thread" IN_LIST LUTESTSUITE_SANITIZERS)
    find_package(OpenMP QUIET COMPONENTS CXX)
endif()

# Static on Windows, because a module in a sub-folder does not find a zlib1.dll beside the host.
if(WIN32)
    set(ZLIB_USE_STATIC_LIBS ON)
endif()
if(LUTESTSUITE_BUILD_EXAMPLES)
    find_package(ZLIB REQUIRED)
endif()

if(BUILD_TESTING OR LUTESTSUITE_BUILD_BENCHMARKS)
    set(LUTESTSUITE_GOOGLETEST_SOURCE "/usr/src/googletest" CACHE PATH "GoogleTest sources, built for both platforms")
    if(EXISTS "${LUTESTSUITE_GOOGLETEST_SOURCE}/CMakeLists.txt")
        set(INSTALL_GTEST OFF)
        add_subdirectory("${LUTESTSUITE_GOOGLETEST_SOURCE}" "${PROJECT_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
    else()
        find_package(GTest CONFIG REQUIRED)
    endif()
endif()

# Debian has no Google Benchmark for MinGW. Programs that measure whole processes do not need it.
if(LUTESTSUITE_BUILD_BENCHMARKS AND NOT CMAKE_CROSSCOMPILING)
    find_package(benchmark CONFIG REQUIRED)
endif()
