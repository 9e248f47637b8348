# Compares the symbols that a library exports with those that a program imports from it. Expects: NM, OBJDUMP.

# A script has no project that sets the policies, so this line sets them.
cmake_policy(VERSION 3.25)

# The public classes and functions. Operations whose names begin in lower case are private, except those of the reports.
# The option parser and two constructors of LuTestSuiteOut (without arguments, and from text) are also private.
set(public_names "LuTestSuite(Utils|Report|Tree|Out|HeapTracker|Setup|Environment|Run)::")
set(private_names "LuOptionParser|^LuTestSuiteOut::LuTestSuiteOut\\((\\)|std::)|^LuTestSuite(Utils|Tree|Out)::[a-z]")
# All operations of the heap tracker except "dump".
string(APPEND private_names "|^LuTestSuiteHeapTracker::([a-ce-z]|d[^u])")

# The symbol tables of stripped Windows files contain only exports and imports. A library does not import its own
# exports, and a program exports nothing, so exports need not be distinguished from imports.
function(dump_windows_symbols file result)
    execute_process(COMMAND "${OBJDUMP}" -p "${file}" OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "_Z[A-Za-z0-9_.]+" symbols "${output}")
    list(JOIN symbols "\n" lines)
    set(list_file "${WORK}/symbols.txt")
    file(WRITE "${list_file}" "${lines}\n")
    find_program(CXXFILT NAMES c++filt REQUIRED)
    execute_process(COMMAND "${CXXFILT}" INPUT_FILE "${list_file}" OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
    set(${result} "${output}" PARENT_SCOPE)
endfunction()

# `kind` is "defined" or "undefined".
function(dump_symbols file kind result)
    if(file MATCHES "\\.(dll|exe)$")
        dump_windows_symbols("${file}" output)
    else()
        execute_process(COMMAND "${NM}" -D -C --${kind}-only "${file}"
            OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
    endif()
    set(${result} "${output}" PARENT_SCOPE)
endfunction()

function(list_symbols file kind result)
    dump_symbols("${file}" ${kind} output)
    # Removes brackets, because CMake does not split a list inside them.
    string(REGEX REPLACE "[][]" "" output "${output}")
    string(REPLACE "\n" ";" lines "${output}")
    list(TRANSFORM lines REPLACE "^[0-9a-f ]+ [TU] " "")
    list(FILTER lines INCLUDE REGEX "^${public_names}")
    list(FILTER lines EXCLUDE REGEX "${private_names}")
    list(REMOVE_DUPLICATES lines)
    set(${result} "${lines}" PARENT_SCOPE)
endfunction()

function(expect_every_operation_called library program)
    list_symbols("${library}" defined exported)
    list_symbols("${program}" undefined called)
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
