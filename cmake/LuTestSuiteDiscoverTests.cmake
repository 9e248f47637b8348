# Cases of test modules as tests of CTest.

include_guard(GLOBAL)

set(LUTESTSUITE_CASES_SCRIPT "${CMAKE_CURRENT_LIST_DIR}/LuTestSuiteCases.cmake")

# lutestsuite_discover_tests(<module> DATA_DIRECTORY <directory>
#     [OPTIONS <option>...] [TEST_PREFIX <prefix>] [PROPERTIES <name> <value>...]
#     [DISCOVERY_MODE PRE_TEST|POST_BUILD] [DISCOVERY_TIMEOUT <seconds>])
#
# Makes each case of a module that lutestsuite_add_module has added a test of CTest: "<prefix><folder>/<class>:<case>",
# labelled with class and folder, with the time limit of its description, disabled if its description disables it, and
# run alone if its description says that "Parallel" is false. Each runs in a process of its own, by
# "LuTestSuiteRunner case". OPTIONS are options of LuTestSuiteCLI, such as "-i" and a pattern or "-t 60".
#
# PRE_TEST, the default, lists the cases whenever ctest starts, so that new data sets are tests at once. POST_BUILD
# lists them after the module has been linked. If the cases cannot be listed, with PRE_TEST a test
# "<prefix><module>.discovery" fails with the reason, and with POST_BUILD the build.
function(lutestsuite_discover_tests module)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "DATA_DIRECTORY;TEST_PREFIX;DISCOVERY_MODE;DISCOVERY_TIMEOUT"
        "OPTIONS;PROPERTIES")
    get_target_property(load_name "${module}" LUTESTSUITE_LOAD_NAME)
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "lutestsuite_discover_tests: unknown arguments: ${arg_UNPARSED_ARGUMENTS}")
    elseif(NOT arg_DATA_DIRECTORY)
        message(FATAL_ERROR "lutestsuite_discover_tests: DATA_DIRECTORY is missing")
    elseif(NOT load_name)
        message(FATAL_ERROR "lutestsuite_discover_tests: lutestsuite_add_module has not added ${module}")
    endif()
    if(NOT arg_DISCOVERY_MODE)
        set(arg_DISCOVERY_MODE PRE_TEST)
    endif()
    if(NOT arg_DISCOVERY_MODE MATCHES "^(PRE_TEST|POST_BUILD)$")
        message(FATAL_ERROR "lutestsuite_discover_tests: DISCOVERY_MODE is PRE_TEST or POST_BUILD")
    endif()
    if(NOT arg_DISCOVERY_TIMEOUT)
        set(arg_DISCOVERY_TIMEOUT 60)
    endif()
    cmake_path(ABSOLUTE_PATH arg_DATA_DIRECTORY BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}" NORMALIZE)

    lutestsuite_runner_beside("${module}" runner)
    set(options -d "${arg_DATA_DIRECTORY}" --dll "${load_name}" ${arg_OPTIONS})
    set(script "${CMAKE_CURRENT_BINARY_DIR}/${module}_cases-$<CONFIG>.cmake")
    if(arg_DISCOVERY_MODE STREQUAL "POST_BUILD")
        add_custom_command(TARGET "${module}" POST_BUILD VERBATIM
            COMMAND ${CMAKE_CROSSCOMPILING_EMULATOR} "${runner}" list --ctest "${script}" -- ${options})
        set(list_cases "")
    else()
        set(list_cases "lutestsuite_list_cases([[${module}]] [[${script}]] ${arg_DISCOVERY_TIMEOUT})\n")
    endif()

    set(include "${CMAKE_CURRENT_BINARY_DIR}/${module}_tests")
    file(GENERATE OUTPUT "${include}-$<CONFIG>.cmake" CONTENT
"include([[${LUTESTSUITE_CASES_SCRIPT}]])
set(LUTESTSUITE_RUNNER [[${CMAKE_CROSSCOMPILING_EMULATOR}]] [[${runner}]])
set(LUTESTSUITE_OPTIONS [[${options}]])
set(LUTESTSUITE_TEST_PREFIX [[${arg_TEST_PREFIX}]])
set(LUTESTSUITE_PROPERTIES [[${arg_PROPERTIES}]])
${list_cases}include([[${script}]] OPTIONAL)
")
    get_property(is_multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
    if(is_multi_config)
        file(WRITE "${include}.cmake" "include(\"${include}-\${CTEST_CONFIGURATION_TYPE}.cmake\" OPTIONAL)\n")
        set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${include}.cmake")
    else()
        set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${include}-${CMAKE_BUILD_TYPE}.cmake")
    endif()
endfunction()

# The host for build servers in the folder of the module: an own target, or a deployed copy.
function(lutestsuite_runner_beside module result)
    get_target_property(is_imported LuTestSuite::LuTestSuiteRunner IMPORTED)
    if(is_imported)
        if(NOT TARGET lutestsuite_host)
            message(FATAL_ERROR "lutestsuite_discover_tests: call lutestsuite_deploy_host() first")
        endif()
        get_target_property(directory "${module}" LUTESTSUITE_HOST_DIRECTORY)
        set(${result} "${directory}/$<TARGET_FILE_NAME:LuTestSuite::LuTestSuiteRunner>" PARENT_SCOPE)
        add_dependencies("${module}" lutestsuite_host)
    else()
        set(${result} "$<TARGET_FILE:LuTestSuite::LuTestSuiteRunner>" PARENT_SCOPE)
        add_dependencies("${module}" LuTestSuiteRunner)
    endif()
endfunction()
