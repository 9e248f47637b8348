# Read by CTest: adds the cases of one module as tests. Written by lutestsuite_discover_tests, which sets:
# LUTESTSUITE_RUNNER (command), LUTESTSUITE_OPTIONS (behind "--"), LUTESTSUITE_TEST_PREFIX, LUTESTSUITE_PROPERTIES.

# Called by the script that "LuTestSuiteRunner list --ctest" writes; `state` is "", SERIAL or DISABLED.
function(lutestsuite_add_case name class folder time_limit state)
    set(test "${LUTESTSUITE_TEST_PREFIX}${name}")
    add_test("${test}" ${LUTESTSUITE_RUNNER} case "${name}" -- ${LUTESTSUITE_OPTIONS})

    set(labels "${class}" ${folder})
    set_tests_properties("${test}" PROPERTIES LABELS "${labels}")
    set(properties SKIP_RETURN_CODE 77) # The exit status of "case" if the case is disabled.
    if(time_limit GREATER 0)
        # The host ends the case at the case's limit. CTest only has to end a host that hangs.
        math(EXPR time_limit "${time_limit} + 30")
        list(APPEND properties TIMEOUT ${time_limit})
    endif()
    if(state STREQUAL "DISABLED")
        list(APPEND properties DISABLED TRUE)
    elseif(state STREQUAL "SERIAL")
        list(APPEND properties RUN_SERIAL TRUE)
    endif()
    set_tests_properties("${test}" PROPERTIES ${properties} ${LUTESTSUITE_PROPERTIES})
endfunction()

# Lists the cases now. If that fails, adds one test that fails in the same way.
function(lutestsuite_list_cases module script time_limit)
    set(command ${LUTESTSUITE_RUNNER} list --ctest "${script}" -- ${LUTESTSUITE_OPTIONS})
    execute_process(COMMAND ${command} RESULT_VARIABLE status OUTPUT_QUIET ERROR_QUIET TIMEOUT ${time_limit})
    if(NOT status EQUAL 0)
        file(REMOVE "${script}")
        add_test("${LUTESTSUITE_TEST_PREFIX}${module}.discovery" ${command})
    endif()
endfunction()
