# Installs a build tree, builds the project in discovery/ against it and checks what CTest makes of its cases.
# Expects: BUILD_TREE, WORK, CONFIG, GENERATOR, TOOLCHAIN.

set(source "${CMAKE_CURRENT_LIST_DIR}/discovery")
set(build "${WORK}/build")

function(run expected_status)
    execute_process(COMMAND ${ARGN} WORKING_DIRECTORY "${WORK}" OUTPUT_VARIABLE output ERROR_VARIABLE output
        RESULT_VARIABLE status INPUT_FILE "${CMAKE_CURRENT_LIST_FILE}")
    list(JOIN ARGN " " command)
    message("> ${command}\n${output}")
    if(NOT status EQUAL expected_status)
        message(FATAL_ERROR "The command ended with ${status}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect text)
    string(FIND "${output}" "${text}" position)
    if(position EQUAL -1)
        message(FATAL_ERROR "Missing: ${text}")
    endif()
endfunction()

# Sets `result` to the properties of a test, as a list of names and values.
function(find_properties test result)
    set(found NOTFOUND)
    string(JSON count LENGTH "${tests}" tests)
    math(EXPR last "${count} - 1")
    foreach(index RANGE ${last})
        string(JSON name GET "${tests}" tests ${index} name)
        if(name STREQUAL test)
            string(JSON found GET "${tests}" tests ${index} properties)
        endif()
    endforeach()
    if(found STREQUAL NOTFOUND)
        message(FATAL_ERROR "CTest has no test ${test}")
    endif()
    string(REGEX REPLACE "[ \n]+" " " found "${found}")
    set(${result} "${found}" PARENT_SCOPE)
endfunction()

function(expect_property test property)
    find_properties("${test}" properties)
    string(FIND "${properties}" "${property}" position)
    if(position EQUAL -1)
        message(FATAL_ERROR "${test} has not ${property} but ${properties}")
    endif()
endfunction()

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
run(0 "${CMAKE_COMMAND}" --install "${BUILD_TREE}" --config "${CONFIG}" --prefix "${WORK}/prefix")
set(toolchain_option "")
if(TOOLCHAIN)
    set(toolchain_option "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}")
endif()
run(0 "${CMAKE_COMMAND}" -S "${source}" -B "${build}" -G "${GENERATOR}" ${toolchain_option}
    "-DCMAKE_PREFIX_PATH=${WORK}/prefix" "-DCMAKE_BUILD_TYPE=${CONFIG}")
run(0 "${CMAKE_COMMAND}" --build "${build}" --config "${CONFIG}")

set(ctest "${CMAKE_CTEST_COMMAND}" --test-dir "${build}" -C "${CONFIG}")
execute_process(COMMAND ${ctest} --show-only=json-v1 OUTPUT_VARIABLE tests COMMAND_ERROR_IS_FATAL ANY)

# What IDEs see.
expect_property("shapes.geometry/CShapes:round.shape" "[ \"CShapes\", \"geometry\" ]")
expect_property("shapes.geometry/CShapes:round.shape" "{ \"name\" : \"COST\", \"value\" : 7.0 }")
expect_property("shapes.geometry/CShapes:slow.shape" "{ \"name\" : \"TIMEOUT\", \"value\" : 37.0 }")
expect_property("shapes.geometry/CShapes:alone.shape" "{ \"name\" : \"RUN_SERIAL\", \"value\" : true }")
expect_property("shapes.geometry/CShapes:off.shape" "{ \"name\" : \"DISABLED\", \"value\" : true }")

# What a user sees: one failed case with its reason and data file; names are passed on as they are.
run(8 ${ctest} --output-on-failure -j 2 -R "^shapes\\.")
expect("80% tests passed, 1 tests failed out of 5")
expect("flat.shape has no body")
expect("Datei: ")
run(0 ${ctest} -R "ball .2..x")
expect("100% tests passed, 0 tests failed out of 1")
run(8 ${ctest} --rerun-failed -R "flat")

# Cases found after the build, restricted by options.
run(0 ${ctest} -R "^built\\.")
expect("100% tests passed, 0 tests failed out of 1")

# A new data set is a test at once, without a build.
file(WRITE "${build}/data/geometry/CShapes/new.shape" "x")
run(0 ${ctest} -R "new.shape")
expect("100% tests passed, 0 tests failed out of 1")

# Cases that cannot be listed do not vanish.
run(8 ${ctest} --output-on-failure -R "^lost\\.")
expect("lost.LostShapes.discovery")
expect("Fehler: ")
