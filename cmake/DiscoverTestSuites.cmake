# Read by ctest: asks a GoogleTest program for its suites and makes one test of each.
# Expects: program, emulator (may be empty), name, concurrent_words.

if(NOT EXISTS "${program}")
    add_test("${name}_NOT_BUILT" "${program}")
    return()
endif()

get_filename_component(directory "${program}" DIRECTORY)
execute_process(COMMAND ${emulator} "${program}" --gtest_list_tests
    WORKING_DIRECTORY "${directory}" OUTPUT_VARIABLE listing RESULT_VARIABLE status TIMEOUT 120)
if(NOT status EQUAL 0)
    add_test("${name}_NOT_LISTED" ${emulator} "${program}" --gtest_list_tests)
    return()
endif()

# Matches the end of the output if all tests were skipped. Without this pattern, a skipped suite would count as passed.
set(all_skipped "\\[  PASSED  \\] 0 tests\\.[\r\n]+(\\[  SKIPPED \\][^\r\n]*[\r\n]*)+$")

# A line with a suite is not indented and ends in a dot; its tests follow indented.
list(JOIN concurrent_words "|" concurrent)
string(REGEX MATCHALL "(^|\n)[^ \r\n]+\\." suites "${listing}")
foreach(suite IN LISTS suites)
    string(STRIP "${suite}" suite)
    add_test("${name}.${suite}*" ${emulator} "${program}" "--gtest_filter=${suite}*")
    set_tests_properties("${name}.${suite}*" PROPERTIES WORKING_DIRECTORY "${directory}" TIMEOUT 300
        SKIP_REGULAR_EXPRESSION "${all_skipped}")
    if(suite MATCHES "${concurrent}")
        set_tests_properties("${name}.${suite}*" PROPERTIES LABELS "concurrent")
    endif()
    if(suite MATCHES "^(RunnerSlurm|RunnerSlurmCommands|HistoryStatistics|HistoryWithoutChange)\\.$")
        # These suites take long: they start a cluster and wait for it, or compute much. Other suites test the same code
        # with sanitizers.
        set_tests_properties("${name}.${suite}*" PROPERTIES LABELS "independent" TIMEOUT 900)
    endif()
    if(suite MATCHES "RunParallelCrashes|^RunnerSlurm\\.$")
        # The longest suites begin first.
        set_tests_properties("${name}.${suite}*" PROPERTIES COST 600)
    endif()
endforeach()
