# Installs a build tree, builds the project in outside/ against it and checks the output of its run.
# Expects: BUILD_TREE, WORK, CONFIG, GENERATOR, TOOLCHAIN, EMULATOR, HOST, RUNNER, NM, OBJDUMP.

set(source "${CMAKE_CURRENT_LIST_DIR}/outside")
set(prefix "${WORK}/prefix")
set(build "${WORK}/build")

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

# Removes the files of earlier runs.
file(REMOVE_RECURSE "${WORK}")
run("${CMAKE_COMMAND}" --install "${BUILD_TREE}" --config "${CONFIG}" --prefix "${prefix}")

set(toolchain_option "")
if(TOOLCHAIN)
    set(toolchain_option "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}")
endif()
run("${CMAKE_COMMAND}" -S "${source}" -B "${build}" -G "${GENERATOR}" ${toolchain_option}
    "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_BUILD_TYPE=${CONFIG}")
run("${CMAKE_COMMAND}" --build "${build}" --config "${CONFIG}")

# Wine shows the root directory as drive Z.
set(drive "")
if(EMULATOR)
    set(drive "Z:")
endif()
run(${EMULATOR} "${build}/bin/${HOST}" -d "${drive}${source}/data" --dll OutsideTests --dll Components/FolderTests)

set(host_output "${output}")
run(${EMULATOR} "${build}/bin/${RUNNER}" list -- -d "${drive}${source}/data" --dll OutsideTests)
if(NOT output MATCHES "COutsideTest \\(OutsideTests" OR NOT output MATCHES "    adds\n")
    message(FATAL_ERROR "The host for build servers does not list the cases")
endif()
set(output "${host_output}")

foreach(expected "COutsideTest" "\tadds... " "\thello.txt... " "CFolderTest" "\tstands in a folder... ")
    string(FIND "${output}" "${expected}" position)
    if(position EQUAL -1)
        message(FATAL_ERROR "The run does not print: ${expected}")
    endif()
endforeach()

# The program that calls every exported operation, with its own user data.
cmake_path(GET HOST EXTENSION suffix)
set(user "${WORK}/user")
set(calls "${WORK}/calls/")
file(MAKE_DIRECTORY "${calls}" "${user}")
set(command "${drive}${build}/bin/OutsideHost${suffix}" "${drive}${source}/data/" "${drive}${calls}")
if(suffix STREQUAL ".exe")
    # Wine sets the variable anew for each program that is started from outside.
    string(REPLACE "/" "\\" native_user "${drive}${user}")
    list(JOIN command "\" \"" words)
    file(WRITE "${WORK}/calls.bat" "@set APPDATA=${native_user}\r\n@\"${words}\"\r\n")
    run(${EMULATOR} cmd /c "${drive}${WORK}/calls.bat")
else()
    set(ENV{XDG_DATA_HOME} "${user}")
    run(${command})
endif()
if(NOT IS_DIRECTORY "${user}/LuTestSuite/Orvell/Temp")
    message(FATAL_ERROR "The program's user data is not in ${user}")
endif()

# Exported and imported operations must agree by signature, so that no operation is forgotten.
include("${CMAKE_CURRENT_LIST_DIR}/exported_operations.cmake")
file(GLOB library "${build}/bin/*LuTestSuite.so" "${build}/bin/*LuTestSuite.dll")
expect_every_operation_called("${library}" "${build}/bin/OutsideHost${suffix}")
