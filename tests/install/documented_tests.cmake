# Builds the project in docs/runner.md against an install tree and runs its tests.
# Expects: SOURCE, BUILD_TREE, WORK, CONFIG, GENERATOR.

include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

# Writes all blocks of the document whose first line names the file.
function(write_blocks comment file)
    set(rest "${document}")
    set(text "")
    string(FIND "${rest}" "\n${comment} ${file}" start)
    while(NOT start EQUAL -1)
        string(SUBSTRING "${rest}" ${start} -1 rest)
        string(FIND "${rest}" "\n```" end)
        string(SUBSTRING "${rest}" 0 ${end} block)
        string(SUBSTRING "${rest}" ${end} -1 rest)
        string(APPEND text "${block}\n")
        string(FIND "${rest}" "\n${comment} ${file}" start)
    endwhile()
    file(WRITE "${project}/${file}" "${text}")
endfunction()

set(project "${WORK}/project")
set(build "${WORK}/build")
file(REMOVE_RECURSE "${WORK}")
file(READ "${SOURCE}/docs/runner.md" document)
write_blocks("#" CMakeLists.txt)
write_blocks("//" my_tests.cpp)
file(WRITE "${project}/coarse.txt" "mesh")
foreach(part wheel axle)
    file(WRITE "${project}/data/CMeshTest/${part}.part" "${part}")
endforeach()

run("${CMAKE_COMMAND}" --install "${BUILD_TREE}" --config "${CONFIG}" --prefix "${WORK}/prefix")
run("${CMAKE_COMMAND}" -S "${project}" -B "${build}" -G "${GENERATOR}" "-DCMAKE_PREFIX_PATH=${WORK}/prefix"
    "-DCMAKE_BUILD_TYPE=${CONFIG}")
run("${CMAKE_COMMAND}" --build "${build}" --config "${CONFIG}")

# Six tests: the fixture and its removal, two cases, the class, and a case.
run("${CMAKE_CTEST_COMMAND}" --test-dir "${build}" -C "${CONFIG}")
expect_lines("${output}" "100% tests passed, 0 tests failed out of 6" "CMeshTest:axle.part" "meshes ")
# CTest adds the fixture and its removal to a selection.
run("${CMAKE_CTEST_COMMAND}" --test-dir "${build}" -C "${CONFIG}" -R "^wheel$")
expect_lines("${output}" "make_mesh" "100% tests passed, 0 tests failed out of 3")
