# Commands for projects that build test modules; used by this project itself and by projects that find it installed.

include_guard(GLOBAL)

# lutestsuite_add_module(<name> [FOLDER <folder>] [OUTPUT_DIRECTORY <directory>] <source>...)
#
# Builds a test module: a shared library "<name>.dll" or "<name>.so" (nothing in front of the name) that links LbBase.
# The module is put into OUTPUT_DIRECTORY. The default is CMAKE_LIBRARY_OUTPUT_DIRECTORY or, if this variable is empty,
# ${CMAKE_BINARY_DIR}/bin. If the generator builds several configurations, each has a folder there. With FOLDER the
# module is put into that sub-folder and loaded as "<folder>/<name>".
function(lutestsuite_add_module name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "FOLDER;OUTPUT_DIRECTORY" "")

    lutestsuite_module_directory("${arg_OUTPUT_DIRECTORY}" host_directory)
    set(output_directory "${host_directory}")
    set(load_name "${name}")
    set(run_path "$ORIGIN")
    if(arg_FOLDER)
        set(load_name "${arg_FOLDER}/${name}")
        string(APPEND output_directory "/${arg_FOLDER}")
        string(REGEX REPLACE "[^/]+" ".." up "${arg_FOLDER}")
        list(APPEND run_path "$ORIGIN/${up}")
    endif()

    add_library(${name} MODULE ${arg_UNPARSED_ARGUMENTS})
    target_link_libraries(${name} PRIVATE LuTestSuite::LbBase)
    set_target_properties(${name} PROPERTIES
        PREFIX ""
        LIBRARY_OUTPUT_DIRECTORY "${output_directory}"
        BUILD_RPATH_USE_ORIGIN ON
        BUILD_RPATH "${run_path}"
        INSTALL_RPATH "${run_path}"
        # For lutestsuite_discover_tests.
        LUTESTSUITE_HOST_DIRECTORY "${host_directory}"
        LUTESTSUITE_LOAD_NAME "${load_name}")
    if(NOT WIN32)
        set_target_properties(${name} PROPERTIES SUFFIX ".so")
    endif()
endfunction()

# lutestsuite_deploy_host([<directory>] [BUILD_RECORD <file>])
#
# Copies the hosts and the shared libraries they need into a directory, by default the one that
# lutestsuite_add_module uses. The hosts look for modules beside themselves, so this makes the directory ready to run.
# Each OUTPUT_DIRECTORY of modules needs a call; a second call for the same directory does nothing.
#
# Each build also writes lutestsuite-build.txt beside the hosts. Reports and the history take from this file the build
# that they name. It describes the commit of the git checkout that tracks the CMakeLists.txt of the call; it is empty if
# there is no such checkout. With BUILD_RECORD it is a copy of <file>, with lines "Server: ...", "Repository: ...",
# "Branch: ...", "Changeset: ...", "ChangesetAuthor: ..." and "WorkspacePath: ...".
function(lutestsuite_deploy_host)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "BUILD_RECORD" "")
    lutestsuite_module_directory("${arg_UNPARSED_ARGUMENTS}" directory)
    lutestsuite_host_target("${directory}" target)
    if(TARGET ${target})
        return()
    endif()

    # Programs look for the name that has only the major version.
    set(kind SONAME_FILE)
    if(WIN32)
        set(kind FILE)
    endif()
    set(files "$<TARGET_FILE:LuTestSuite::LuTestSuiteCLI>" "$<TARGET_FILE:LuTestSuite::LuTestSuiteRunner>"
        "$<TARGET_${kind}:LuTestSuite::LuTestSuite>" "$<TARGET_${kind}:LuTestSuite::LbBase>"
        "$<TARGET_PROPERTY:LuTestSuite::LbBase,LUTESTSUITE_RUNTIME_DLLS>")
    set(record "${directory}/lutestsuite-build.txt")
    if(arg_BUILD_RECORD)
        cmake_path(ABSOLUTE_PATH arg_BUILD_RECORD NORMALIZE)
        set(record_command "${CMAKE_COMMAND}" -E copy_if_different "${arg_BUILD_RECORD}" "${record}")
    else()
        set(record_command "${CMAKE_COMMAND}" -D "SOURCE=${CMAKE_CURRENT_SOURCE_DIR}" -D "RECORD=${record}"
            -P "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/LuTestSuiteBuildRecord.cmake")
    endif()
    add_custom_target(${target} ALL
        COMMAND "${CMAKE_COMMAND}" -E make_directory "${directory}"
        COMMAND "${CMAKE_COMMAND}" -E copy_if_different ${files} "${directory}"
        COMMAND ${record_command}
        COMMENT "Copying the LuTestSuite hosts to ${directory}" COMMAND_EXPAND_LISTS VERBATIM)
endfunction()

# The target that copies the hosts into a directory.
function(lutestsuite_host_target directory result)
    string(MD5 hash "${directory}")
    string(SUBSTRING "${hash}" 0 8 hash)
    set(${result} "lutestsuite_host_${hash}" PARENT_SCOPE)
endfunction()

# Sets `result` to the absolute path of a directory of modules and hosts; "" means the default directory. If the
# generator builds several configurations, each has its own directory.
function(lutestsuite_module_directory directory result)
    if(NOT directory)
        set(directory "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
    endif()
    if(NOT directory)
        set(directory "${CMAKE_BINARY_DIR}/bin")
    endif()
    get_property(is_multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
    if(NOT directory MATCHES "\\$<")
        cmake_path(ABSOLUTE_PATH directory BASE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}" NORMALIZE)
        string(REGEX REPLACE "/$" "" directory "${directory}")
        if(is_multi_config)
            string(APPEND directory "/$<CONFIG>")
        endif()
    endif()
    set(${result} "${directory}" PARENT_SCOPE)
endfunction()
