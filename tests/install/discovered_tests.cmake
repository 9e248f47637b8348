# Installs a build tree, builds the project in discovery/ against it and checks the tests that CTest has.
# Expects: BUILD_TREE, WORK, CONFIG, GENERATOR, TOOLCHAIN, EMULATOR, COMPILER, RUNNER.

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

# Sets `result` to the member "properties" or "command" of the description of a test.
function(find_member test member result)
    set(found NOTFOUND)
    string(JSON count LENGTH "${tests}" tests)
    math(EXPR last "${count} - 1")
    foreach(index RANGE ${last})
        string(JSON name GET "${tests}" tests ${index} name)
        if(name STREQUAL test)
            string(JSON found GET "${tests}" tests ${index} ${member})
        endif()
    endforeach()
    if(found STREQUAL NOTFOUND)
        message(FATAL_ERROR "CTest has no test ${test}")
    endif()
    string(REGEX REPLACE "[ \n]+" " " found "${found}")
    set(${result} "${found}" PARENT_SCOPE)
endfunction()

function(expect_property test property)
    find_member("${test}" properties properties)
    string(FIND "${properties}" "${property}" position)
    if(position EQUAL -1)
        message(FATAL_ERROR "${test} has not ${property} but ${properties}")
    endif()
endfunction()

function(expect_command test)
    find_member("${test}" command command)
    string(JSON count LENGTH "${command}")
    math(EXPR last "${count} - 1")
    set(words "")
    foreach(index RANGE ${last})
        string(JSON word GET "${command}" ${index})
        list(APPEND words "${word}")
    endforeach()
    set(expected ${ARGN})
    if(EMULATOR)
        get_filename_component(emulator "${EMULATOR}" ABSOLUTE)
        list(PREPEND expected "${emulator}")
    endif()
    if(NOT words STREQUAL expected)
        message(FATAL_ERROR "${test} has the command ${words} instead of ${expected}")
    endif()
endfunction()

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
run(0 "${CMAKE_COMMAND}" --install "${BUILD_TREE}" --config "${CONFIG}" --prefix "${WORK}/prefix")
set(toolchain_option "")
if(TOOLCHAIN)
    set(toolchain_option "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}")
endif()
execute_process(COMMAND "${COMPILER}" -print-file-name=libasan.so OUTPUT_VARIABLE asan_library
    OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT IS_ABSOLUTE "${asan_library}")
    set(asan_library "")
endif()
set(options ${toolchain_option} "-DCMAKE_PREFIX_PATH=${WORK}/prefix" "-DCMAKE_BUILD_TYPE=${CONFIG}"
    "-DASAN_LIBRARY=${asan_library}")
run(0 "${CMAKE_COMMAND}" -S "${source}" -B "${build}" -G "${GENERATOR}" ${options})
run(0 "${CMAKE_COMMAND}" --build "${build}" --config "${CONFIG}")

set(ctest "${CMAKE_CTEST_COMMAND}" --test-dir "${build}" -C "${CONFIG}")
execute_process(COMMAND ${ctest} --show-only=json-v1 OUTPUT_VARIABLE tests COMMAND_ERROR_IS_FATAL ANY)

# The properties of the tests, which IDEs read.
expect_property("shapes.geometry/CShapes:round.shape" "[ \"CShapes\", \"drawn\", \"geometry\", \"quick\" ]")
expect_property("shapes.geometry/solids/CShapes:cube.shape"
    "[ \"CShapes\", \"drawn\", \"geometry\", \"geometry/solids\", \"quick\", \"solids\" ]")
expect_property("shapes.geometry/CShapes:round.shape" "[ \"FIRST=1\", \"SECOND=2\" ]")
expect_property("shapes.geometry/CShapes:round.shape" "{ \"name\" : \"COST\", \"value\" : 7.0 }")
expect_property("shapes.geometry/CShapes:slow.shape" "{ \"name\" : \"TIMEOUT\", \"value\" : 37.0 }")
expect_property("shapes.geometry/CShapes:round.shape" "{ \"name\" : \"TIMEOUT\", \"value\" : 0.0 }")
expect_property("shapes.geometry/CShapes:alone.shape" "{ \"name\" : \"RUN_SERIAL\", \"value\" : true }")
expect_property("shapes.geometry/CShapes:off.shape" "{ \"name\" : \"DISABLED\", \"value\" : true }")
expect_property("again.geometry/CShapes:round.shape"
    "{ \"name\" : \"FIXTURES_REQUIRED\", \"value\" : [ \"drawing\" ] }")
expect_property("shapes.geometry/CShapes:round.shape" "ATTACHED_FILES_ON_FAIL")
expect_property("shapes.geometry/CShapes:round.shape" "round.shape\" ]")

set(runner "${build}/bin/${RUNNER}")
expect_command("shapes.geometry/CShapes:round.shape" "${runner}" case geometry/CShapes:round.shape --
    -d "${build}/data" --dll Components/Shapes -x)
expect_command("near.CMoods:leaves" "${runner}" case CMoods:leaves -- -d "${build}/moods" --dll NearMoods)

# A case that ends its process fails, whatever the status.
run(8 ${ctest} --output-on-failure -R "^moods.*leaves")
expect("0% tests passed, 1 tests failed out of 1")

# A skipped case is skipped for CTest, too.
run(0 ${ctest} -R "^(moods|near)\\.CMoods:skips")
expect("near.CMoods:skips (Skipped)")
expect("moods.CMoods:skips (Skipped)")
string(FIND "${output}" "Warnung: " position)
if(NOT position EQUAL -1)
    message(FATAL_ERROR "A warning without a reason")
endif()

# CTest itself can repeat single cases. The option -r, which repeats cases in the host, is refused.
run(0 ${ctest} --repeat until-pass:2 -R "^moods.*second")
expect("100% tests passed, 0 tests failed out of 1")
run(8 ${ctest} --output-on-failure -R "^repeated\\.")
expect("Fehler: Die Option '-r' gibt es hier nicht")

# The user sees the reason and the data file of each failed case. Names may contain special characters.
run(8 ${ctest} --output-on-failure -j 2 -R "^shapes\\.")
expect("71% tests passed, 2 tests failed out of 7")
expect("flat.shape has no body")
expect("Datei: ")
# A case that hangs is ended at its own time limit.
expect("endless.shape has no end")
expect("shapes.geometry/CShapes:endless.shape (Failed)")
# Only these two of all tests run again.
run(8 ${ctest} --rerun-failed)
expect("0% tests passed, 2 tests failed out of 2")
expect("shapes.geometry/CShapes:flat.shape (Failed)")
run(0 ${ctest} -R "ball .2..x")
expect("100% tests passed, 0 tests failed out of 1")

# Cases that the build has found, restricted by options.
run(0 ${ctest} -R "^built\\.")
expect("100% tests passed, 0 tests failed out of 1")

# Modules of another directory, which are not in the default folder.
run(0 ${ctest} -R "^other\\.")
expect("100% tests passed, 0 tests failed out of 1")

# The tests and the search for cases use the same environment variables.
if(asan_library)
    run(0 ${ctest} -R "^checked\\.")
    expect("100% tests passed, 0 tests failed out of 1")
endif()

# A new data set becomes a test without another build.
file(WRITE "${build}/data/geometry/CShapes/new.shape" "x")
run(0 ${ctest} -R "new.shape")
expect("100% tests passed, 0 tests failed out of 1")

# If cases cannot be listed, a test that fails replaces them.
run(8 ${ctest} --output-on-failure -L quick -R "^lost\\.")
expect("lost.LostShapes.discovery")
expect("Fehler: ")
run(8 ${ctest} --output-on-failure -R "^nowhere\\.")
expect("nowhere.Shapes-3.discovery")
expect("Fehler: ")
run(8 ${ctest} --output-on-failure -R "^missing\\.")
expect("missing.MissingShapes.discovery")
expect("Fehler: Das Modul 'MissingShapes' fehlt")
run(8 ${ctest} --output-on-failure -R "^unbuilt\\.")
expect("unbuilt.UnbuiltShapes.discovery")
expect("UnbuiltShapes has not been built.")
# If cases are listed at build time and that fails, the build fails.
run(1 "${CMAKE_COMMAND}" --build "${build}" --config "${CONFIG}" --target BrokenShapes)
expect("Fehler: ")

# CMake breaks messages into lines, so only one word of each is compared.
run(1 "${CMAKE_COMMAND}" -DMISTAKE=bracket "${build}")
expect("counterpart")
run(1 "${CMAKE_COMMAND}" -DMISTAKE=timeout "${build}")
expect("DISCOVERY_TIMEOUT")
run(1 "${CMAKE_COMMAND}" -DMISTAKE=folder "${build}")
expect("lutestsuite_deploy_host")

# Each configuration has a folder of its own. Without a configuration CTest knows no cases.
if(GENERATOR STREQUAL "Ninja")
    set(build "${WORK}/configurations")
    run(0 "${CMAKE_COMMAND}" -S "${source}" -B "${build}" -G "Ninja Multi-Config" ${options})
    run(0 "${CMAKE_COMMAND}" --build "${build}" --config "${CONFIG}" --target other/all)
    run(0 "${CMAKE_CTEST_COMMAND}" --test-dir "${build}" -C "${CONFIG}" -R "^other\\.")
    expect("100% tests passed, 0 tests failed out of 1")
    run(8 "${CMAKE_CTEST_COMMAND}" --test-dir "${build}" -R "^other\\.")
    expect("other.OtherShapes.discovery")
    expect("(Missing \"-C <config>\"?)")
endif()
