# Installs a build tree, moves it, builds the project in outside/ against it and checks the output of its run.
# Expects: BUILD_TREE, WORK, CONFIG, GENERATOR, TOOLCHAIN, EMULATOR, HOST, RUNNER, NM, OBJDUMP, COMPILER, PKGCONFIG (may
# be empty), LIBDIR.

include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

set(source "${CMAKE_CURRENT_LIST_DIR}/outside")
set(prefix "${WORK}/prefix")
set(build "${WORK}/build")
cmake_path(GET HOST EXTENSION suffix)

function(install_into folder)
    run("${CMAKE_COMMAND}" --install "${BUILD_TREE}" --config "${CONFIG}" --prefix "${folder}" ${ARGN})
endfunction()

# Removes the files of earlier runs.
file(REMOVE_RECURSE "${WORK}")

# The two components together are the whole installation. The host of the component "runtime" runs without the component
# "development".
install_into("${WORK}/first")
install_into("${WORK}/runtime" --component runtime)
install_into("${WORK}/development" --component development)
foreach(folder first runtime development)
    list_files("${WORK}/${folder}" ${folder}_files)
endforeach()
set(parts ${runtime_files} ${development_files})
list(SORT parts)
expect_equal("Files of both components" parts first_files)
if(runtime_files MATCHES "\\.(h|cmake|pc|a)(;|$)|lib[A-Za-z]+\\.so(;|$)" OR development_files MATCHES "bin/|\\.so\\.")
    message(FATAL_ERROR "A component has files of the other: ${runtime_files};;${development_files}")
endif()
file(READ "${CMAKE_CURRENT_LIST_DIR}/../../packaging/conan/conanfile.py" recipe)
string(REGEX MATCH "includedirs = \\[\"([^\"]*)\"\\]" match "${recipe}")
if(NOT EXISTS "${WORK}/development/${CMAKE_MATCH_1}/base/luunittest.h")
    message(FATAL_ERROR "The recipe for Conan does not name the folder of the headers: ${match}")
endif()
run(${EMULATOR} "${WORK}/runtime/bin/${HOST}" -h)
expect_lines("${output}" "--html")

# The installed tree can be moved.
file(RENAME "${WORK}/first" "${prefix}")

set(toolchain_option "")
if(TOOLCHAIN)
    set(toolchain_option "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}")
endif()
run("${CMAKE_COMMAND}" -S "${source}" -B "${build}" -G "${GENERATOR}" ${toolchain_option}
    "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_BUILD_TYPE=${CONFIG}")
run("${CMAKE_COMMAND}" --build "${build}" --config "${CONFIG}")

run(${EMULATOR} "${build}/bin/${HOST}" -d "${drive}${source}/data" --dll OutsideTests --dll Components/FolderTests)

expect_lines("${output}" "COutsideTest" "\tadds... " "\thello.txt... " "CFolderTest" "\tstands in a folder... ")
run(${EMULATOR} "${build}/bin/${HOST}" -d "${drive}${source}/data" --dll OutsideTests --xml "${drive}${WORK}/run.xml")
file(READ "${WORK}/run.xml" report)
if(NOT report MATCHES "<PscmChangeset>4711</PscmChangeset>")
    message(FATAL_ERROR "The report does not name the build of the outside project")
endif()
run(${EMULATOR} "${build}/bin/${RUNNER}" list -- -d "${drive}${source}/data" --dll OutsideTests)
if(NOT output MATCHES "COutsideTest \\(OutsideTests" OR NOT output MATCHES "    adds\n")
    message(FATAL_ERROR "The host for build servers does not list the cases")
endif()

# A module that is built without CMake.
if(PKGCONFIG)
    set(ENV{PKG_CONFIG_LIBDIR} "${prefix}/${LIBDIR}/pkgconfig")
    run("${PKGCONFIG}" --cflags --libs LuTestSuite)
    separate_arguments(options UNIX_COMMAND "${output}")
    set(module_suffix ".so")
    if(suffix STREQUAL ".exe")
        set(module_suffix ".dll")
    endif()
    run("${COMPILER}" -std=c++20 -shared -fPIC "${source}/outside_tests.cpp" ${options}
        -o "${build}/bin/PlainTests${module_suffix}")
    run(${EMULATOR} "${build}/bin/${HOST}" -d "${drive}${source}/data" --dll PlainTests)
    expect_lines("${output}" "COutsideTest" "\tadds... ")
endif()

# The program that calls every exported operation, with its own user data.
set(user "${WORK}/user")
set(calls "${WORK}/calls/")
file(MAKE_DIRECTORY "${calls}" "${user}")
set(command "${drive}${build}/bin/OutsideHost${suffix}" "${drive}${source}/data/" "${drive}${calls}")
if(suffix STREQUAL ".exe")
    # Wine resets APPDATA for each program that is started from outside, so a batch file sets it.
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
file(GLOB library "${build}/bin/*LuTestSuite.so.*" "${build}/bin/*LuTestSuite.dll")
expect_every_operation_called("${library}" "${build}/bin/OutsideHost${suffix}")
