# Cases of test modules as tests of CTest.

include_guard(GLOBAL)

# lutestsuite_discover_tests(<module> DATA_DIRECTORY <directory> [IN_PROCESS]
#     [OPTIONS <option>...] [TEST_PREFIX <prefix>] [PROPERTIES <name> <value>...]
#     [DISCOVERY_MODE PRE_TEST|POST_BUILD] [DISCOVERY_TIMEOUT <seconds>])
#
# Adds one test to CTest for each case of the module, a target of lutestsuite_add_module. The test has the name
# "<prefix><folder>/<class>:<case>", and class and folder as labels. The description of the case can give the test a
# time limit, disable it, or make it run alone ("Parallel" is false). Each case runs in a process of its own, a child of
# "LuTestSuiteRunner case", so that the test also fails if the case ends that process, in whatever way. With IN_PROCESS,
# a case without time limit runs in the process of the host: this takes less time and is easy to debug, but a case that
# calls _Exit(0) passes. OPTIONS are options of LuTestSuiteCLI, such as "-i" and a pattern or "-t 60".
#
# PRE_TEST, the default, lists the cases whenever ctest starts, so that new data sets are tests at once. POST_BUILD
# lists them after the module has been linked. Both use the variables of the property ENVIRONMENT. If the cases cannot
# be listed, PRE_TEST adds a test "<prefix><module>.discovery" that fails with the reason, and POST_BUILD fails the
# build. DISCOVERY_TIMEOUT limits PRE_TEST (default 60); POST_BUILD has no limit.
#
# Several calls can list one module, with other OPTIONS and PROPERTIES for some of its classes, or with other data.
# The names of the tests must differ. If the second of these calls cannot list its cases, its failing test is
# "<prefix><module>-2.discovery", that of the third call "<prefix><module>-3.discovery".
#
# Call lutestsuite_deploy_host for the module's directory first.
function(lutestsuite_discover_tests module)
    cmake_parse_arguments(PARSE_ARGV 1 arg "IN_PROCESS" "DATA_DIRECTORY;TEST_PREFIX;DISCOVERY_MODE;DISCOVERY_TIMEOUT"
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
    if(arg_DISCOVERY_TIMEOUT AND arg_DISCOVERY_MODE STREQUAL "POST_BUILD")
        message(FATAL_ERROR "lutestsuite_discover_tests: DISCOVERY_TIMEOUT has no effect with POST_BUILD")
    endif()
    if(NOT arg_DISCOVERY_TIMEOUT)
        set(arg_DISCOVERY_TIMEOUT 60)
    endif()
    cmake_path(ABSOLUTE_PATH arg_DATA_DIRECTORY BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}" NORMALIZE)

    math(EXPR last "${ARGC} - 1")
    foreach(index RANGE ${last})
        lutestsuite_refuse_single_brackets("${ARGV${index}}")
    endforeach()
    # PROPERTIES are names and values. A value that is a list is one argument.
    cmake_parse_arguments(property "" "ENVIRONMENT;LABELS" "" ${arg_PROPERTIES})

    lutestsuite_deployed_runner("${module}" runner)
    lutestsuite_name_discovery("${module}" discovery)
    set(options -d "${arg_DATA_DIRECTORY}" --dll "${load_name}")
    if(arg_OPTIONS)
        string(APPEND options ";${arg_OPTIONS}")
    endif()
    set(script "${CMAKE_CURRENT_BINARY_DIR}/${discovery}_cases-$<CONFIG>.cmake")
    if(arg_DISCOVERY_MODE STREQUAL "POST_BUILD")
        add_custom_command(TARGET "${module}" POST_BUILD VERBATIM
            COMMAND "${CMAKE_COMMAND}" -E env ${property_ENVIRONMENT}
                ${CMAKE_CROSSCOMPILING_EMULATOR} "${runner}" list --ctest "${script}" -- ${options})
        set(add_cases "lutestsuite_read_cases([[${module}]] [[${script}]])")
    else()
        set(add_cases "lutestsuite_list_cases([[${module}]] [[${script}]] ${arg_DISCOVERY_TIMEOUT})")
    endif()
    lutestsuite_in_brackets("${options}" options)
    lutestsuite_in_brackets("${arg_PROPERTIES}" properties)
    lutestsuite_in_brackets("${property_ENVIRONMENT}" environment)

    set(tests "${CMAKE_CURRENT_BINARY_DIR}/${discovery}_tests")
    file(GENERATE OUTPUT "${tests}-$<CONFIG>.cmake" CONTENT
"include([[${CMAKE_CURRENT_FUNCTION_LIST_DIR}/LuTestSuiteCases.cmake]])
set(LUTESTSUITE_CMAKE [[${CMAKE_COMMAND}]])
set(LUTESTSUITE_RUNNER [[${CMAKE_CROSSCOMPILING_EMULATOR}]] [[${runner}]])
set(LUTESTSUITE_OPTIONS ${options})
set(LUTESTSUITE_IN_PROCESS ${arg_IN_PROCESS})
set(LUTESTSUITE_TEST_PREFIX [[${arg_TEST_PREFIX}]])
set(LUTESTSUITE_DISCOVERY [[${arg_TEST_PREFIX}${discovery}.discovery]])
set(LUTESTSUITE_PROPERTIES ${properties})
set(LUTESTSUITE_ENVIRONMENT ${environment})
set(LUTESTSUITE_LABELS [[${property_LABELS}]])
${add_cases}
")
    lutestsuite_include_tests("${tests}" "${arg_TEST_PREFIX}${discovery}.discovery")
endfunction()

# A name of its own for each call in a directory: "<module>", then "<module>-2".
function(lutestsuite_name_discovery module result)
    get_property(count DIRECTORY PROPERTY "LUTESTSUITE_DISCOVERIES_${module}")
    if(NOT count)
        set(count 0)
    endif()
    math(EXPR count "${count} + 1")
    set_property(DIRECTORY PROPERTY "LUTESTSUITE_DISCOVERIES_${module}" ${count})
    set(name "${module}")
    if(count GREATER 1)
        string(APPEND name "-${count}")
    endif()
    set(${result} "${name}" PARENT_SCOPE)
endfunction()

# Has CTest read the file "<tests>-<configuration>.cmake".
function(lutestsuite_include_tests tests missing)
    get_property(is_multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
    set(file "${tests}-${CMAKE_BUILD_TYPE}.cmake")
    if(is_multi_config)
        set(file "${tests}.cmake")
        # If the option -C is missing or wrong, no file is found, and CTest reports a test that is not available.
        file(WRITE "${file}"
"include(\"${tests}-\${CTEST_CONFIGURATION_TYPE}.cmake\" OPTIONAL RESULT_VARIABLE found)
if(NOT found)
    add_test([[${missing}]] NOT_AVAILABLE)
endif()
")
    endif()
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${file}")
endfunction()

# Sets `result` to the path of LuTestSuiteRunner in the folder of the module, because LuTestSuiteRunner loads modules
# only from its own folder.
function(lutestsuite_deployed_runner module result)
    get_target_property(directory "${module}" LUTESTSUITE_HOST_DIRECTORY)
    lutestsuite_host_target("${directory}" host)
    if(NOT TARGET ${host})
        message(FATAL_ERROR "lutestsuite_discover_tests: lutestsuite_deploy_host has to be called before, for the "
            "directory of ${module}: ${directory}")
    endif()
    add_dependencies("${module}" ${host})
    set(${result} "${directory}/$<TARGET_FILE_NAME:LuTestSuite::LuTestSuiteRunner>" PARENT_SCOPE)
endfunction()

# CMake does not split a list inside brackets, so an option such as "\[x" would swallow the options after it.
function(lutestsuite_refuse_single_brackets argument)
    string(REGEX REPLACE "[^[]" "" opening "${argument}")
    string(REGEX REPLACE "[^]]" "" closing "${argument}")
    string(LENGTH "${opening}" opening)
    string(LENGTH "${closing}" closing)
    if(NOT opening EQUAL closing)
        message(FATAL_ERROR "lutestsuite_discover_tests: a bracket in '${argument}' has no counterpart; in patterns, "
            "write \\x5B for [ and \\x5D for ]")
    endif()
endfunction()

# Encloses the text in a bracket argument, in which CMake replaces nothing. The brackets have more equals signs than
# follow any "]" in the text.
function(lutestsuite_in_brackets text result)
    set(mark "")
    string(FIND "${text}" "]" position)
    while(NOT position EQUAL -1)
        string(APPEND mark "=")
        string(FIND "${text}" "]${mark}" position)
    endwhile()
    set(${result} "[${mark}[${text}]${mark}]" PARENT_SCOPE)
endfunction()
