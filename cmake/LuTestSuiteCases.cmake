# Adds the cases of one module as tests. CTest reads a script that lutestsuite_discover_tests has written; the script
# includes this file and sets: LUTESTSUITE_CMAKE (program), LUTESTSUITE_RUNNER (command), LUTESTSUITE_OPTIONS (after
# "--"), LUTESTSUITE_IN_PROCESS, LUTESTSUITE_TEST_PREFIX, LUTESTSUITE_DISCOVERY (the test that fails if the cases cannot
# be listed), LUTESTSUITE_PROPERTIES (names and values), and the values of two of these properties again as
# LUTESTSUITE_ENVIRONMENT and LUTESTSUITE_LABELS.

# Called by the script that "LuTestSuiteRunner list --ctest" writes; `state` is "", SERIAL or DISABLED. If the case has
# a data file, its path is the sixth argument.
function(lutestsuite_add_case name class folder time_limit state)
    set(test "${LUTESTSUITE_TEST_PREFIX}${name}")
    set(options "${LUTESTSUITE_OPTIONS}")
    set(properties SKIP_RETURN_CODE 77) # The exit status of the command "case" if the case is disabled or was skipped.
    if(time_limit GREATER 0 OR NOT LUTESTSUITE_IN_PROCESS)
        # With -x the case runs in a child process: the host notices every way in which that process ends, and can end
        # the process at a time limit.
        list(APPEND options -x)
    endif()
    if(time_limit GREATER 0)
        # If the host itself hangs, CTest ends it 30 seconds after the case's limit.
        math(EXPR time_limit "${time_limit} + 30")
        list(APPEND properties TIMEOUT ${time_limit})
    else()
        # Without the property, CTest ends the test after 1,500 seconds; 0 means no limit.
        list(APPEND properties TIMEOUT 0)
    endif()
    if(state STREQUAL "DISABLED")
        list(APPEND properties DISABLED TRUE)
    elseif(state STREQUAL "SERIAL")
        list(APPEND properties RUN_SERIAL TRUE)
    endif()
    if(ARGC GREATER 5)
        # CTest shows the file among the properties, also to IDEs, and submits it to a dashboard if the test fails.
        string(REPLACE ";" "\\;" file "${ARGV5}")
        list(APPEND properties ATTACHED_FILES_ON_FAIL "${file}")
    endif()
    add_test("${test}" ${LUTESTSUITE_RUNNER} case "${name}" -- ${options})

    string(REPLACE "/" ";" folders "${folder}")
    set(labels "${class}" ${folders} ${folder})
    list(REMOVE_DUPLICATES labels)
    # If the last properties contain labels, CTest adds them to those of the case. All properties are set in one call,
    # because each call searches all tests.
    set_tests_properties("${test}" PROPERTIES LABELS "${labels}" ${properties} ${LUTESTSUITE_PROPERTIES})
endfunction()

# Lists the cases now and adds them, or a test that fails with the reason.
function(lutestsuite_list_cases module script time_limit)
    # A file instead of a pipe, because a process that the module leaves behind would keep a pipe open.
    set(log "${script}.log")
    execute_process(COMMAND "${LUTESTSUITE_CMAKE}" -E env ${LUTESTSUITE_ENVIRONMENT}
            ${LUTESTSUITE_RUNNER} list --ctest "${script}" -- ${LUTESTSUITE_OPTIONS}
        RESULT_VARIABLE status OUTPUT_FILE "${log}" ERROR_FILE "${log}" TIMEOUT ${time_limit})
    if(status EQUAL 0)
        include("${script}")
        # message() writes to standard error here, so warnings do not disturb IDEs, which read standard output.
        file(STRINGS "${log}" warnings REGEX "^Warnung: " ENCODING UTF-8)
        foreach(warning IN LISTS warnings)
            message("${warning}")
        endforeach()
    else()
        file(READ "${log}" output)
        lutestsuite_add_failure("${module}" "${script}" "${output}LuTestSuiteRunner: ${status}")
    endif()
endfunction()

# Adds the cases that the build has listed.
function(lutestsuite_read_cases module script)
    if(EXISTS "${script}")
        include("${script}")
    else()
        lutestsuite_add_failure("${module}" "${script}" "${module} has not been built.")
    endif()
endfunction()

# Adds a test that fails with the reason. If the test listed the cases again, it could pass although they are missing.
function(lutestsuite_add_failure module script reason)
    set(failure "${script}.failure")
    file(WRITE "${failure}" "message([==========[${reason}]==========])\n"
        "message(FATAL_ERROR \"The cases of ${module} could not be listed.\")\n")
    add_test("${LUTESTSUITE_DISCOVERY}" "${LUTESTSUITE_CMAKE}" -P "${failure}")
    set_tests_properties("${LUTESTSUITE_DISCOVERY}" PROPERTIES LABELS "${LUTESTSUITE_LABELS}")
endfunction()
