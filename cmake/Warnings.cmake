# Warnings are errors for every target declared after this file.

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
    if(NOT OpenMP_CXX_FOUND)
        # Without OpenMP, the compiler does not know the pragmas of OpenMP.
        add_compile_options(-Wno-unknown-pragmas)
    endif()
endif()
