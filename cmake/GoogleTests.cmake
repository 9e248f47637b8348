# lutestsuite_add_tests(<target>): registers a GoogleTest program with ctest.
#
# In linux-debug, every test is an entry of its own. Elsewhere an entry is a whole test suite, because a
# process takes up to 0.3 s to start under Wine or a sanitizer.

# Suites with one of these words in their name get the label "concurrent". With the thread sanitizer only these run.
set(LUTESTSUITE_CONCURRENT_WORDS Concurren Thread Parallel CriticalSection LbEvent Dispatcher Combinable)

# Removes from a list of sources those that have suites, but none of these. Keeps sources without suites unless no other
# source is left; then the list is empty.
function(lutestsuite_keep_concurrent_tests list)
    list(JOIN LUTESTSUITE_CONCURRENT_WORDS "|" words)
    set(kept "")
    set(without_suites "")
    foreach(source IN LISTS ${list})
        file(STRINGS "${source}" any REGEX "^(TYPED_)?TEST(_F|_P)?\\(" LIMIT_COUNT 1)
        file(STRINGS "${source}" suites REGEX "^(TYPED_)?TEST(_F|_P)?\\([^,]*(${words})" LIMIT_COUNT 1)
        if(suites)
            list(APPEND kept "${source}")
        elseif(NOT any)
            list(APPEND without_suites "${source}")
        endif()
    endforeach()
    if(kept)
        list(APPEND kept ${without_suites})
    endif()
    set(${list} "${kept}" PARENT_SCOPE)
endfunction()

# Makes the sources of a test program quick to compile, in every build type: reading the headers of GoogleTest takes
# more time than compiling most tests, and only what is tested has to be optimised. linux-debug compiles each source
# alone, so that a changed test compiles quickly and missing includes cause errors.
function(lutestsuite_compile_test target)
    if(CMAKE_CROSSCOMPILING OR LUTESTSUITE_SANITIZERS OR NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
        set_target_properties(${target} PROPERTIES UNITY_BUILD ON)
        if(WIN32)
            # The linker for Windows takes quadratic time in the number of an object's sections.
            set_target_properties(${target} PROPERTIES UNITY_BUILD_BATCH_SIZE 3)
        endif()
    endif()
    target_compile_options(${target} PRIVATE -O0)
    if("undefined" IN_LIST LUTESTSUITE_SANITIZERS)
        # These checks make compiling tests a third slower, and only what is tested needs them.
        target_compile_options(${target} PRIVATE -fno-sanitize=undefined)
    endif()
    target_precompile_headers(${target} PRIVATE <gmock/gmock.h> <gtest/gtest.h> <algorithm> <atomic> <chrono>
        <filesystem> <functional> <memory> <optional> <regex> <stdexcept> <string> <thread> <vector>)
endfunction()

function(lutestsuite_add_tests target)
    if(CMAKE_CROSSCOMPILING OR LUTESTSUITE_SANITIZERS OR NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
        lutestsuite_add_test_suites(${target})
        return()
    endif()

    include(GoogleTest)
    set(common WORKING_DIRECTORY "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}" DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60)
    list(TRANSFORM LUTESTSUITE_CONCURRENT_WORDS REPLACE "(.+)" "*\\1*.*" OUTPUT_VARIABLE patterns)
    list(JOIN patterns ":" concurrent)
    gtest_discover_tests(${target} ${common} TEST_FILTER "${concurrent}" PROPERTIES LABELS "concurrent" TIMEOUT 300)
    gtest_discover_tests(${target} ${common} TEST_FILTER "-${concurrent}"
        PROPERTIES TIMEOUT 300)
endfunction()

function(lutestsuite_add_test_suites target)
    set(script "${CMAKE_CURRENT_BINARY_DIR}/${target}_suites.cmake")
    file(GENERATE OUTPUT "${script}" CONTENT "
set(program \"$<TARGET_FILE:${target}>\")
set(emulator \"${CMAKE_CROSSCOMPILING_EMULATOR}\")
set(name \"${target}\")
set(concurrent_words ${LUTESTSUITE_CONCURRENT_WORDS})
include(\"${PROJECT_SOURCE_DIR}/cmake/DiscoverTestSuites.cmake\")
")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${script}")
endfunction()
