# lutestsuite_add_tests(<target>): registers a GoogleTest program with ctest.
#
# On Linux every test is an entry of its own. Under Wine an entry is a whole test suite, because starting a process
# takes about 0.3 s.

# Suites with one of these words in their name carry the label "concurrent", which the thread sanitizer runs.
set(LUTESTSUITE_CONCURRENT_SUITES
    "*Concurren*.*:*Thread*.*:*Parallel*.*:*CriticalSection*.*:*LbEvent*.*:*Dispatcher*.*:*Combinable*.*")

function(lutestsuite_add_tests target)
    if(CMAKE_CROSSCOMPILING)
        lutestsuite_add_test_suites(${target})
        return()
    endif()

    include(GoogleTest)
    set(common WORKING_DIRECTORY "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}" DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60)
    gtest_discover_tests(${target} ${common} TEST_FILTER "${LUTESTSUITE_CONCURRENT_SUITES}"
        PROPERTIES LABELS "concurrent" TIMEOUT 300)
    gtest_discover_tests(${target} ${common} TEST_FILTER "-${LUTESTSUITE_CONCURRENT_SUITES}"
        PROPERTIES TIMEOUT 300)
endfunction()

function(lutestsuite_add_test_suites target)
    set(script "${CMAKE_CURRENT_BINARY_DIR}/${target}_suites.cmake")
    file(GENERATE OUTPUT "${script}" CONTENT "
set(program \"$<TARGET_FILE:${target}>\")
set(emulator \"${CMAKE_CROSSCOMPILING_EMULATOR}\")
set(name \"${target}\")
include(\"${PROJECT_SOURCE_DIR}/cmake/DiscoverTestSuites.cmake\")
")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${script}")
endfunction()
