# Runs the vcpkg port with stand-ins for vcpkg's functions. Configures the project with the port's options, and checks
# that the project installs the files that the port names. Does not run vcpkg: nothing is built, and the libraries are
# those of the system.
# Expects: SOURCE, WORK, GENERATOR.

cmake_policy(VERSION 3.25)
include("${SOURCE}/tests/install/run.cmake")

function(vcpkg_check_linkage linkage)
    set(expected ONLY_DYNAMIC_LIBRARY)
    expect_equal("Linkage" linkage expected)
endfunction()

function(vcpkg_cmake_configure)
    cmake_parse_arguments(arg "" "SOURCE_PATH" "OPTIONS" ${ARGN})
    run("${CMAKE_COMMAND}" -S "${arg_SOURCE_PATH}" -B "${WORK}" -G "${GENERATOR}" -Wno-dev
        -DCMAKE_BUILD_TYPE=Release ${arg_OPTIONS})
    if(output MATCHES "not used by the project")
        message(FATAL_ERROR "The project does not know an option of the port")
    endif()
    run("${CMAKE_CTEST_COMMAND}" --test-dir "${WORK}" -N)
    expect_lines("${output}" "Total Tests: 0")
endfunction()

# Expects the arguments in the install rules of the project and of its folders.
function(expect_installed)
    set(rules "")
    file(GLOB_RECURSE scripts "${WORK}/cmake_install.cmake")
    foreach(script IN LISTS scripts)
        file(READ "${script}" text)
        string(APPEND rules "${text}")
    endforeach()
    expect_lines("${rules}" ${ARGN})
endfunction()

function(vcpkg_cmake_install)
    expect_installed("libLuTestSuite.so" "libLbBase.so")
endfunction()

function(vcpkg_cmake_config_fixup)
    cmake_parse_arguments(arg "" "PACKAGE_NAME;CONFIG_PATH" "" ${ARGN})
    expect_installed("/${arg_CONFIG_PATH}" "${arg_PACKAGE_NAME}Config.cmake")
endfunction()

function(vcpkg_fixup_pkgconfig)
    expect_installed("/pkgconfig" "LuTestSuite.pc")
endfunction()

function(vcpkg_copy_tools)
    cmake_parse_arguments(arg "AUTO_CLEAN" "" "TOOL_NAMES" ${ARGN})
    foreach(tool IN LISTS arg_TOOL_NAMES)
        expect_installed("/bin/${tool}\"")
    endforeach()
endfunction()

function(vcpkg_install_copyright)
    cmake_parse_arguments(arg "" "" "FILE_LIST" ${ARGN})
    foreach(file IN LISTS arg_FILE_LIST)
        if(NOT EXISTS "${file}")
            message(FATAL_ERROR "The port names a file that is missing: ${file}")
        endif()
    endforeach()
    set_property(GLOBAL PROPERTY has_copyright TRUE)
endfunction()

file(REMOVE_RECURSE "${WORK}")
include("${SOURCE}/packaging/vcpkg/lutestsuite/portfile.cmake")
get_property(has_copyright GLOBAL PROPERTY has_copyright)
if(NOT has_copyright)
    message(FATAL_ERROR "The port installs no copyright")
endif()
