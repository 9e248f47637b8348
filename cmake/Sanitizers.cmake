# Sanitizers apply to every target, GoogleTest included, because a mixture reports false positives.

if(LUTESTSUITE_SANITIZERS)
    list(JOIN LUTESTSUITE_SANITIZERS "," sanitizers)
    add_compile_options(-fsanitize=${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${sanitizers})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # GCC 12 mistakes the instrumentation of <regex> for a read of uninitialised memory.
        add_compile_options(-Wno-maybe-uninitialized)
    endif()
endif()
