# Writes a text file of "key: value" lines that say where the sources of a build come from. As a script:
# cmake -D "SOURCE=<source directory>" -D "RECORD=<file>" -P LuTestSuiteBuildRecord.cmake

# lutestsuite_split_remote(<url> <server variable> <repository variable>): server and path of a remote repository, for
# all spellings that git knows. Removes names and passwords of users, and everything from "?" or "#" on.
function(lutestsuite_split_remote url server_variable repository_variable)
    set(server "")
    set(repository "")
    string(REGEX REPLACE "[?#].*$" "" url "${url}")
    if(url MATCHES "^file:///?([A-Za-z]:.*)$")
        set(repository "${CMAKE_MATCH_1}")
    elseif(url MATCHES "^file://[^/]*(/.*)$")
        set(repository "${CMAKE_MATCH_1}")
    elseif(url MATCHES "^[A-Za-z][A-Za-z0-9+.-]*://([^/]*)/*(.*)$")
        set(server "${CMAKE_MATCH_1}")
        set(repository "${CMAKE_MATCH_2}")
    elseif(url MATCHES "^([^/\\]+[^/\\:]):(.*)$")
        # A single letter before the colon is a drive.
        set(server "${CMAKE_MATCH_1}")
        set(repository "${CMAKE_MATCH_2}")
    else()
        set(repository "${url}")
    endif()
    string(REGEX REPLACE "^.*@" "" server "${server}")
    set(${server_variable} "${server}" PARENT_SCOPE)
    set(${repository_variable} "${repository}" PARENT_SCOPE)
endfunction()

# lutestsuite_write_build_record(<source directory> <file>): asks git. The file is empty if git does not track the
# CMakeLists.txt of the sources, or if git is missing.
function(lutestsuite_write_build_record source_directory file)
    set(text "")
    lutestsuite_ask_git("${source_directory}" tracked ls-files --error-unmatch CMakeLists.txt)
    if(tracked)
        lutestsuite_ask_git("${source_directory}" root rev-parse --show-toplevel)
        lutestsuite_ask_git("${source_directory}" branch rev-parse --abbrev-ref HEAD)
        lutestsuite_ask_git("${source_directory}" changeset rev-parse HEAD)
        lutestsuite_ask_git("${source_directory}" author log -1 --format=%an)
        lutestsuite_ask_git("${source_directory}" url remote get-url origin)
        if(NOT url)
            set(url "${root}")
        endif()
        lutestsuite_split_remote("${url}" server repository)
        # Not a configured template, because a name may contain text that CMake would expand.
        foreach(pair "WorkspacePath;root" "Server;server" "Repository;repository" "Changeset;changeset"
                     "Branch;branch" "ChangesetAuthor;author")
            list(GET pair 0 key)
            list(GET pair 1 variable)
            string(APPEND text "${key}: ${${variable}}\n")
        endforeach()
    endif()
    # An unchanged file keeps its time, so that nothing is built again.
    set(former "")
    if(EXISTS "${file}")
        file(READ "${file}" former)
    endif()
    if(NOT EXISTS "${file}" OR NOT former STREQUAL text)
        file(WRITE "${file}" "${text}")
    endif()
endfunction()

# Sets `variable` to the output of git; empty if git is missing or fails.
function(lutestsuite_ask_git directory variable)
    find_program(LUTESTSUITE_GIT git)
    set(answer "")
    if(LUTESTSUITE_GIT)
        execute_process(COMMAND "${LUTESTSUITE_GIT}" -c "safe.directory=*" -C "${directory}" ${ARGN}
            OUTPUT_VARIABLE answer RESULT_VARIABLE status ERROR_QUIET OUTPUT_STRIP_TRAILING_WHITESPACE)
        if(NOT status EQUAL 0)
            set(answer "")
        endif()
    endif()
    set(${variable} "${answer}" PARENT_SCOPE)
endfunction()

if(CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
    lutestsuite_write_build_record("${SOURCE}" "${RECORD}")
endif()
