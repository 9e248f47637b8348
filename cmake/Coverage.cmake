# Counts the branches of the product that tests take. Included where the product is compiled; tests are not counted.

if(LUTESTSUITE_COVERAGE)
    add_compile_options(--coverage -fprofile-abs-path -fprofile-update=atomic)
endif()
