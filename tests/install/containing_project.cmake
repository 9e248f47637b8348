# Configures a project that contains LuTestSuite. Checks that LuTestSuite adds what the project requests, and nothing
# else. Builds the project and runs its tests, also as tests of CTest. Expects: SOURCE, WORK, CONFIG, GENERATOR,
# TOOLCHAIN, EMULATOR, LAUNCHER, HOST.

# A script has no project that sets the policies, so this line sets them.
cmake_policy(VERSION 3.25)

include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

set(project "${CMAKE_CURRENT_LIST_DIR}/containing")
set(toolchain_option "")
if(TOOLCHAIN)
    set(toolchain_option "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}")
endif()
cmake_path(GET HOST EXTENSION suffix)

function(configure method folder)
    run("${CMAKE_COMMAND}" -S "${project}" -B "${folder}" -G "${GENERATOR}" ${toolchain_option}
        "-DSOURCE=${SOURCE}" "-DMETHOD=${method}" "-DREPORT=${folder}/report.cmake"
        ${ARGN})
endfunction()

function(expect_nothing_else_in folder)
    include("${folder}/report.cmake")
    set(expected LbBase LuTestSuite LuTestSuiteCLI LuTestSuiteRunner lutestsuite_base_private_objects
        lutestsuite_objects lutestsuite_runner_headers lutestsuitehost_objects lutestsuiterunner_objects)
    if(suffix STREQUAL ".exe")
        list(APPEND expected lutestsuite_mingw_runtime)
    endif()
    list(SORT expected)
    expect_equal("Targets" targets expected)

    # Ignores our own variables, and those that contain the results of searches and checks.
    list(FILTER cache EXCLUDE REGEX "^(LUTESTSUITE|LuTestSuite|OpenMP|pugixml|FIND_PACKAGE_MESSAGE_DETAILS)_")
    list(FILTER cache EXCLUDE REGEX "^CMAKE_HAVE_LIBC_PTHREAD$")
    list(FILTER variables EXCLUDE REGEX "^(lutestsuite_|__)")
    set(expected "")
    expect_equal("Cache variables" cache expected)
    expect_equal("Variables of the containing project" variables expected)
    expect_equal("Options of the containing project" options expected)
    expect_equal("Build type" build_type expected)
    if(library_CXX_COMPILER_LAUNCHER)
        message(FATAL_ERROR "The build uses ${library_CXX_COMPILER_LAUNCHER}")
    endif()
    if(library_COMPILE_OPTIONS MATCHES "-W" OR library_LINK_OPTIONS MATCHES "lld")
        message(FATAL_ERROR "The library has options for developers: ${library_COMPILE_OPTIONS}")
    endif()
    if(EXISTS "${folder}/compile_commands.json")
        message(FATAL_ERROR "The build writes compile_commands.json")
    endif()
    run("${CMAKE_CTEST_COMMAND}" --test-dir "${folder}" -N)
    if(NOT output MATCHES "Total Tests: 0")
        message(FATAL_ERROR "The build has tests")
    endif()
endfunction()

file(REMOVE_RECURSE "${WORK}")
unset(ENV{CMAKE_CXX_COMPILER_LAUNCHER})
foreach(method add_subdirectory FetchContent)
    set(place "")
    if(method STREQUAL "FetchContent")
        set(place "-DFETCHCONTENT_SOURCE_DIR_LUTESTSUITE=${SOURCE}")
    endif()
    configure(${method} "${WORK}/${method}" ${place})
    expect_nothing_else_in("${WORK}/${method}")
endforeach()

# Requests everything. This project is only configured, not built.
file(MAKE_DIRECTORY "${WORK}/all")
configure(add_subdirectory "${WORK}/all" -DLUTESTSUITE_INSTALL=ON -DLUTESTSUITE_BUILD_TESTS=ON
    -DLUTESTSUITE_BUILD_EXAMPLES=ON -DLUTESTSUITE_BUILD_BENCHMARKS=ON -DDISCOVER=ON "-DCMAKE_BUILD_TYPE=${CONFIG}")
include("${WORK}/all/report.cmake")
foreach(target base_tests cli_tests example_modules process_pairs TrivialCases)
    if(NOT target IN_LIST targets)
        message(FATAL_ERROR "The build has not the target ${target} but ${targets}")
    endif()
endforeach()
file(READ "${WORK}/all/lutestsuite/cmake_install.cmake" rules)
expect_lines("${rules}" "LuTestSuiteConfig.cmake")
run("${CMAKE_CTEST_COMMAND}" --test-dir "${WORK}/all/lutestsuite" -N)
expect_lines("${output}" "install.outside_project")

# Uses the options of the build that runs this test, so that the libraries come from the compiler cache.
set(ENV{CMAKE_CXX_COMPILER_LAUNCHER} "${LAUNCHER}")
configure(add_subdirectory "${WORK}" -DLUTESTSUITE_WARNINGS=ON -DDISCOVER=ON "-DCMAKE_BUILD_TYPE=${CONFIG}")
run("${CMAKE_COMMAND}" --build "${WORK}" --config "${CONFIG}")

set(data "${drive}${CMAKE_CURRENT_LIST_DIR}/outside/data")
foreach(host "${HOST}" "ContainingHost${suffix}")
    run(${EMULATOR} "${WORK}/bin/${host}" -d "${data}" --dll OutsideTests --dll Components/FolderTests)
    expect_lines("${output}" "COutsideTest" "\tadds... " "\thello.txt... " "CFolderTest" "\tstands in a folder... ")
endforeach()

run("${CMAKE_CTEST_COMMAND}" --test-dir "${WORK}" -C "${CONFIG}")
expect_lines("${output}" "COutsideTest:hello.txt" "CFolderTest:stands in a folder" "100% tests passed, 0 tests failed")

run("${CMAKE_COMMAND}" --install "${WORK}" --config "${CONFIG}" --prefix "${WORK}/prefix")
list_files("${WORK}/prefix" installed)
set(expected "bin/ContainingHost${suffix}")
expect_equal("Installed files" installed expected)

# Installs a package of the subproject, which has install rules on request, and uses it in another project. The
# libraries are already built.
configure(add_subdirectory "${WORK}" -DLUTESTSUITE_WARNINGS=ON -DLUTESTSUITE_INSTALL=ON "-DCMAKE_BUILD_TYPE=${CONFIG}")
run("${CMAKE_COMMAND}" --build "${WORK}" --config "${CONFIG}")
run("${CMAKE_COMMAND}" --install "${WORK}" --config "${CONFIG}" --prefix "${WORK}/package")
set(outside "${WORK}/outside")
file(WRITE "${outside}/CMakeLists.txt" "cmake_minimum_required(VERSION 3.25)
project(PackageUser LANGUAGES CXX)
find_package(LuTestSuite CONFIG REQUIRED)
lutestsuite_add_module(OutsideTests \"${CMAKE_CURRENT_LIST_DIR}/outside/outside_tests.cpp\")
lutestsuite_deploy_host()
")
run("${CMAKE_COMMAND}" -S "${outside}" -B "${outside}/build" -G "${GENERATOR}" ${toolchain_option}
    "-DCMAKE_PREFIX_PATH=${WORK}/package" "-DCMAKE_BUILD_TYPE=${CONFIG}")
file(STRINGS "${outside}/build/CMakeCache.txt" package REGEX "^LuTestSuite_DIR:")
if(NOT package MATCHES "=${WORK}/package/")
    message(FATAL_ERROR "The project uses another package: ${package}")
endif()
run("${CMAKE_COMMAND}" --build "${outside}/build" --config "${CONFIG}")
run(${EMULATOR} "${outside}/build/bin/${HOST}" -d "${data}" --dll OutsideTests)
expect_lines("${output}" "COutsideTest" "\tadds... " "\thello.txt... ")
