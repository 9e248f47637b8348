# Compares what a library exports with what a program takes from it. Expects: NM.

# Run as a script, where nothing else says so.
cmake_policy(VERSION 3.25)

# The public classes and functions. Private operations begin in lower case, but for those of the reports; the empty
# constructor of LuTestSuiteOut and the option parser are private, too.
set(public_names "LuTestSuite(Utils|Report|Tree|Out|HeapTracker|Setup|Environment|Run)::")
set(private_names "LuOptionParser|^LuTestSuiteOut::LuTestSuiteOut\\(\\)|^LuTestSuite(Utils|Tree|Out)::[a-z]")
# Of the heap tracker all but "dump".
string(APPEND private_names "|^LuTestSuiteHeapTracker::([a-ce-z]|d[^u])")

function(list_symbols file options result)
    execute_process(COMMAND "${NM}" -D -C ${options} "${file}" OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
    # Brackets would keep a list from being split.
    string(REGEX REPLACE "[][]" "" output "${output}")
    string(REPLACE "\n" ";" lines "${output}")
    list(TRANSFORM lines REPLACE "^[0-9a-f ]+ [TU] " "")
    list(FILTER lines INCLUDE REGEX "^${public_names}")
    list(FILTER lines EXCLUDE REGEX "${private_names}")
    list(REMOVE_DUPLICATES lines)
    set(${result} "${lines}" PARENT_SCOPE)
endfunction()

function(expect_every_operation_called library program)
    list_symbols("${library}" --defined-only exported)
    list_symbols("${program}" --undefined-only called)
    list(LENGTH exported count)
    if(count EQUAL 0)
        message(FATAL_ERROR "${library} exports nothing")
    endif()
    list(REMOVE_ITEM exported ${called})
    if(exported)
        list(JOIN exported "\n  " names)
        message(FATAL_ERROR "Exported, but not called by ${program}:\n  ${names}")
    endif()
    message("All of ${count} exported operations are called")
endfunction()
