# Warnings are errors for every target declared after this file.

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
    if(NOT OpenMP_CXX_FOUND)
        # Without OpenMP, the compiler does not know the pragmas of OpenMP.
        add_compile_options(-Wno-unknown-pragmas)
    endif()
    # A unity build includes several sources in one, so names of one source seem to come from a header of the next one.
    add_compile_options($<$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>:-Wno-shadow>
        $<$<AND:$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>,$<CXX_COMPILER_ID:GNU>>:-Wno-subobject-linkage>)
endif()
