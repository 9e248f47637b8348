# Runs a command, shows its output and leaves it in the variable "output". A failure ends the script.
function(run)
    execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE status
        INPUT_FILE "${CMAKE_CURRENT_LIST_FILE}")
    list(JOIN ARGN " " command)
    message("> ${command}\n${output}")
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "The command ended with ${status}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

# Wine shows the root directory as drive Z.
set(drive "")
if(EMULATOR)
    set(drive "Z:")
endif()

function(expect_lines text)
    foreach(expected IN LISTS ARGN)
        string(FIND "${text}" "${expected}" position)
        if(position EQUAL -1)
            message(FATAL_ERROR "The run does not print: ${expected}")
        endif()
    endforeach()
endfunction()

# `found_name` and `expected_name` are names of lists.
function(expect_equal what found_name expected_name)
    if(NOT "${${found_name}}" STREQUAL "${${expected_name}}")
        list(JOIN ${found_name} "\n  " found_lines)
        list(JOIN ${expected_name} "\n  " expected_lines)
        message(FATAL_ERROR "${what}:\n  ${found_lines}\ninstead of:\n  ${expected_lines}")
    endif()
endfunction()

# Paths of all files below a folder, sorted.
function(list_files folder result)
    file(GLOB_RECURSE files RELATIVE "${folder}" "${folder}/*")
    list(SORT files)
    set(${result} "${files}" PARENT_SCOPE)
endfunction()
