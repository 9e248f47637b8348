# Settings for people who work on this project. A project that contains this one has its own.

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build configuration" FORCE)
endif()

# Relative paths let checkouts in different folders share the compiler cache. ccache caches sources with precompiled
# headers only with this sloppiness.
if(NOT CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(LUTESTSUITE_CCACHE ccache)
    if(LUTESTSUITE_CCACHE)
        set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env "CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}"
            CCACHE_NOHASHDIR=1 "CCACHE_IGNOREOPTIONS=-fmacro-prefix-map=*"
            "CCACHE_SLOPPINESS=pch_defines,time_macros" "${LUTESTSUITE_CCACHE}")
    endif()
endif()

# LLVM's linker takes a fifth of the time. Release builds use the default linker, as distributions do.
if(NOT WIN32 AND (CMAKE_BUILD_TYPE STREQUAL "Debug" OR LUTESTSUITE_SANITIZERS))
    find_program(LUTESTSUITE_LLD ld.lld)
    mark_as_advanced(LUTESTSUITE_LLD)
    if(LUTESTSUITE_LLD)
        add_link_options(-fuse-ld=lld)
    endif()
endif()

if(NOT WIN32 AND NOT LUTESTSUITE_SANITIZERS)
    # A missing symbol must cause an error here and not when a module is loaded. Symbols of sanitizer run-times are
    # resolved later on purpose.
    add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,SHARED_LIBRARY>:-Wl,--no-undefined>)
endif()
