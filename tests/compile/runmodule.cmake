# Builds SOURCE with COMPILER as a test module for HOST, in FOLDER, and runs its cases.

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
    set(status "${status}" PARENT_SCOPE)
    set(output "${output}" PARENT_SCOPE)
endfunction()

file(MAKE_DIRECTORY "${FOLDER}/data/CClangModel")
set(module "${FOLDER}/clangmodule")
run("${COMPILER}" -std=c++20 -shared -fPIC -Wall -Wextra -Werror "-I${ROOT}" "${SOURCE}" -o "${module}.so" ${LIBRARIES})
if(NOT status EQUAL 0)
    message(FATAL_ERROR "${output}")
endif()
cmake_path(GET HOST PARENT_PATH programs)
cmake_path(RELATIVE_PATH module BASE_DIRECTORY "${programs}")
foreach(mode IN ITEMS "" -x)
    run("${HOST}" -d "${FOLDER}/data" --dll "${module}" --xml "${FOLDER}/report.xml" ${mode})
    # The messages of the cases are only in the report.
    file(STRINGS "${FOLDER}/report.xml" report REGEX "<dump")
    foreach(text IN ITEMS "meldet... OK" "Breite 12" "prüft... FEHLER" "2 statt 3" "wirft... FEHLER" "aus dem Modul"
        "1 Klasse, 3 Tests")
        string(FIND "${output}${report}" "${text}" position)
        if(position LESS 0 OR NOT status EQUAL 1)
            message(FATAL_ERROR "\"${text}\" or status 1 is missing; status ${status}, output:\n${output}${report}")
        endif()
    endforeach()
    file(REMOVE "${FOLDER}/report.xml")
endforeach()
