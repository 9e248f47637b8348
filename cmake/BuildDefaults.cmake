# Settings that hold for every target of the project.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# The host loads modules from its own directory, so all programs and libraries are built into one folder.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")

# Relative run paths let the folder be moved or copied as a whole. Built and installed files have the same run paths:
# CMake pads a shorter path with colons, and an empty entry means the working directory. Each start of a process would
# search for libraries there and could load a foreign one.
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
file(RELATIVE_PATH libraries "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
set(CMAKE_INSTALL_RPATH "$ORIGIN;$ORIGIN/${libraries}")

# Exceptions name their source file relative to the repository, so that the place of the checkout does not show.
add_compile_options("-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=")

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build configuration" FORCE)
endif()

# Relative paths let checkouts in different folders share the compiler cache. It caches uses of precompiled headers only
# with this sloppiness.
if(NOT CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(LUTESTSUITE_CCACHE ccache)
    if(LUTESTSUITE_CCACHE)
        set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env "CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}"
            CCACHE_NOHASHDIR=1 "CCACHE_IGNOREOPTIONS=-fmacro-prefix-map=*"
            "CCACHE_SLOPPINESS=pch_defines,time_macros" "${LUTESTSUITE_CCACHE}")
    endif()
endif()

# LLVM's linker needs a fifth of the time. Release builds are linked as distributions do it.
if(NOT WIN32 AND (CMAKE_BUILD_TYPE STREQUAL "Debug" OR LUTESTSUITE_SANITIZERS))
    find_program(LUTESTSUITE_LLD ld.lld)
    mark_as_advanced(LUTESTSUITE_LLD)
    if(LUTESTSUITE_LLD)
        add_link_options(-fuse-ld=lld)
    endif()
endif()

if(WIN32)
    # Names as on the home platform: LbBase.dll, not libLbBase.dll.
    set(CMAKE_SHARED_LIBRARY_PREFIX "")
elseif(NOT LUTESTSUITE_SANITIZERS)
    # A missing symbol must fail here and not when a module is loaded. Sanitizer run-times are resolved late on purpose.
    add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,SHARED_LIBRARY>:-Wl,--no-undefined>)
endif()
