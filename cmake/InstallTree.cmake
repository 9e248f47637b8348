# The install tree: what find_package(LuTestSuite CONFIG) of another project gets.

include(CMakePackageConfigHelpers)

set(package_directory lib/cmake/LuTestSuite)

install(TARGETS LbBase LuTestSuite LuTestSuiteCLI LuTestSuiteRunner EXPORT LuTestSuiteTargets
    RUNTIME DESTINATION bin LIBRARY DESTINATION lib ARCHIVE DESTINATION lib)
install(FILES ${LUTESTSUITE_RUNTIME_DLLS} DESTINATION bin)
install(EXPORT LuTestSuiteTargets NAMESPACE LuTestSuite:: DESTINATION ${package_directory})

# Public headers of the platform layer are those that other public headers include or that a host needs to read its
# arguments. The folders below testing/lutestsuite are private.
file(GLOB headers CONFIGURE_DEPENDS base/*.h)
# Nobody outside of LbBase includes these.
list(FILTER headers EXCLUDE REGEX "/(pagememory|subtestsearch)\\.h$")
install(FILES ${headers} DESTINATION include/base)
install(FILES base/os/clock.h base/os/files.h base/os/platform.h base/os/process.h base/os/stacks.h
    DESTINATION include/base/os)
file(GLOB headers CONFIGURE_DEPENDS testing/lutestsuite/*.h)
install(FILES ${headers} DESTINATION include/testing/lutestsuite)

set(runtime_dll_names "")
foreach(dll IN LISTS LUTESTSUITE_RUNTIME_DLLS)
    cmake_path(GET dll FILENAME name)
    list(APPEND runtime_dll_names ${name})
endforeach()
configure_package_config_file(cmake/LuTestSuiteConfig.cmake.in LuTestSuiteConfig.cmake
    INSTALL_DESTINATION ${package_directory})
write_basic_package_version_file(LuTestSuiteConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/LuTestSuiteConfig.cmake" "${PROJECT_BINARY_DIR}/LuTestSuiteConfigVersion.cmake"
    cmake/LuTestSuiteAddModule.cmake cmake/LuTestSuiteCases.cmake cmake/LuTestSuiteDiscoverTests.cmake
    DESTINATION ${package_directory})
