# All outside dependencies. scripts/setup installs them on Debian.

find_package(Threads REQUIRED)

# A project that contains this one may have its own pugixml.
if(NOT TARGET pugixml::pugixml)
    find_package(pugixml CONFIG QUIET)
endif()
if(NOT TARGET pugixml::pugixml)
    if(CMAKE_CROSSCOMPILING)
        message(FATAL_ERROR "pugixml for MinGW is missing. Run: ${PROJECT_SOURCE_DIR}/scripts/setup windows")
    endif()
    message(FATAL_ERROR "pugixml is missing. Run: ${PROJECT_SOURCE_DIR}/scripts/setup build")
endif()

# Header-only libraries of the host LuTestSuiteRunner. scripts/setup puts links to them beside pugixml for MinGW,
# because a cross build must not search all of the system's headers.
add_library(lutestsuite_runner_headers INTERFACE)
target_compile_definitions(lutestsuite_runner_headers INTERFACE XXH_INLINE_ALL)
foreach(header CLI/CLI.hpp nlohmann/json.hpp xxhash.h)
    string(MAKE_C_IDENTIFIER "LUTESTSUITE_DIRECTORY_OF_${header}" variable)
    find_path(${variable} ${header})
    mark_as_advanced(${variable})
    if(NOT ${variable})
        message(FATAL_ERROR "The header ${header} is missing. Run: ${PROJECT_SOURCE_DIR}/scripts/setup")
    endif()
    target_include_directories(lutestsuite_runner_headers SYSTEM INTERFACE "${${variable}}")
endforeach()

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

if((LUTESTSUITE_BUILD_TESTS OR LUTESTSUITE_BUILD_BENCHMARKS) AND NOT TARGET GTest::gtest)
    set(LUTESTSUITE_GOOGLETEST_SOURCE "/usr/src/googletest" CACHE PATH "GoogleTest sources, built for both platforms")
    if(EXISTS "${LUTESTSUITE_GOOGLETEST_SOURCE}/CMakeLists.txt")
        set(INSTALL_GTEST OFF)
        add_subdirectory("${LUTESTSUITE_GOOGLETEST_SOURCE}" "${PROJECT_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
    else()
        find_package(GTest CONFIG REQUIRED)
    endif()
endif()

# Catch2 is needed only by the tests of the Catch2 adapter, which are skipped if it is missing. scripts/setup fetches
# the sources.
if(LUTESTSUITE_BUILD_TESTS AND NOT TARGET Catch2::Catch2)
    set(cache "$ENV{XDG_CACHE_HOME}")
    if(NOT cache)
        set(cache "$ENV{HOME}/.cache")
    endif()
    set(LUTESTSUITE_CATCH2_SOURCE "${cache}/lutestsuite/catch2" CACHE PATH "Catch2 3 sources, built for both platforms")
    if(EXISTS "${LUTESTSUITE_CATCH2_SOURCE}/CMakeLists.txt")
        add_subdirectory("${LUTESTSUITE_CATCH2_SOURCE}" "${PROJECT_BINARY_DIR}/catch2" EXCLUDE_FROM_ALL SYSTEM)
        # Compiling Catch2's hundred sources one by one takes several times as long as compiling a few large ones.
        set_target_properties(Catch2 PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 60)
    else()
        find_package(Catch2 3 CONFIG QUIET)
    endif()
endif()

# Debian has no Google Benchmark for MinGW. Programs that measure whole processes do not need it.
if(LUTESTSUITE_BUILD_BENCHMARKS AND NOT CMAKE_CROSSCOMPILING)
    find_package(benchmark CONFIG REQUIRED)
endif()

# Links libraries of a test framework into a module.
function(lutestsuite_link_framework module)
    target_link_libraries(${module} PRIVATE ${ARGN})
    foreach(library IN LISTS ARGN)
        # The library becomes part of a shared library, so its code must be position-independent.
        get_target_property(aliased ${library} ALIASED_TARGET)
        if(aliased)
            set_target_properties(${aliased} PROPERTIES POSITION_INDEPENDENT_CODE ON)
        endif()
    endforeach()
endfunction()
