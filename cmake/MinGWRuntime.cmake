# Copies the compiler's run-time libraries, stripped, beside the programs. They must be shared, because a static copy
# in each binary breaks exceptions and type identity across modules.

set(LUTESTSUITE_RUNTIME_DLLS "")
if(NOT MINGW)
    return()
endif()

function(lutestsuite_locate_runtime_dll name result)
    execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=${name}
        OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    if(NOT IS_ABSOLUTE "${path}")
        message(FATAL_ERROR "The compiler does not know its run-time library ${name}")
    endif()
    set(${result} "${path}" PARENT_SCOPE)
endfunction()

set(names libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
if(OpenMP_CXX_FOUND)
    list(APPEND names libgomp-1.dll)
endif()

foreach(name IN LISTS names)
    lutestsuite_locate_runtime_dll(${name} source)
    set(copy "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name}")
    add_custom_command(OUTPUT "${copy}"
        COMMAND "${CMAKE_COMMAND}" -E make_directory "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}"
        COMMAND "${CMAKE_STRIP}" --strip-unneeded -o "${copy}" "${source}"
        DEPENDS "${source}" VERBATIM)
    list(APPEND LUTESTSUITE_RUNTIME_DLLS "${copy}")
endforeach()
add_custom_target(lutestsuite_mingw_runtime ALL DEPENDS ${LUTESTSUITE_RUNTIME_DLLS})
