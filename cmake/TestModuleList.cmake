# Turns the text file of module names into the source that holds them.

# The names keep the order of the file. A "/" in a name becomes the platform's separator.
function(lutestsuite_generate_test_module_list names_file template output)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${names_file}")
    file(STRINGS "${names_file}" lines ENCODING UTF-8)

    set(LUTESTSUITE_TEST_MODULE_COUNT 0)
    set(LUTESTSUITE_TEST_MODULE_LITERALS "")
    foreach(line IN LISTS lines)
        string(STRIP "${line}" name)
        if(name STREQUAL "" OR name MATCHES "^#")
            continue()
        endif()
        if(WIN32)
            string(REPLACE "/" "\\\\" name "${name}")
        endif()
        string(APPEND LUTESTSUITE_TEST_MODULE_LITERALS "    L\"${name}\",\n")
        math(EXPR LUTESTSUITE_TEST_MODULE_COUNT "${LUTESTSUITE_TEST_MODULE_COUNT} + 1")
    endforeach()

    configure_file("${template}" "${output}" @ONLY)
endfunction()
