# LUTESTSUITE_PUBLIC_HEADERS: paths of the installed headers, relative to the project. As a script (cmake -P) it prints
# them for scripts/api-reference.

cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH root)
set(option "")
if(NOT CMAKE_SCRIPT_MODE_FILE)
    set(option CONFIGURE_DEPENDS)
endif()
# The folders below testing/lutestsuite are private.
file(GLOB LUTESTSUITE_PUBLIC_HEADERS RELATIVE "${root}" ${option} "${root}/base/*.h" "${root}/testing/lutestsuite/*.h")
# Only sources of this project include these headers.
list(REMOVE_ITEM LUTESTSUITE_PUBLIC_HEADERS
    base/givenstream.h base/listingimage.h base/listingshare.h base/pagememory.h base/subtesthints.h
    base/subtestsearch.h)
# Headers of the platform layer that other public headers include, or that a host needs to read its arguments.
list(APPEND LUTESTSUITE_PUBLIC_HEADERS
    base/os/clock.h base/os/files.h base/os/platform.h base/os/process.h base/os/stackframe.h
    base/os/stacks.h)

if(CMAKE_SCRIPT_MODE_FILE)
    foreach(header IN LISTS LUTESTSUITE_PUBLIC_HEADERS)
        message("${header}")
    endforeach()
endif()
