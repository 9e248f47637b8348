# The install tree: what find_package(LuTestSuite CONFIG) and pkg-config provide to other projects.
#
# The component "runtime" contains what is needed to run tests, and "development" what is needed to build them.
# "development" needs "runtime".

include(CMakePackageConfigHelpers)

set(libraries_component runtime)
if(LUTESTSUITE_DEBIAN_PACKAGES)
    set(libraries_component libraries)
endif()
set(package_directory "${CMAKE_INSTALL_LIBDIR}/cmake/LuTestSuite")
set(header_directory "${CMAKE_INSTALL_INCLUDEDIR}")
if(LUTESTSUITE_DEBIAN_PACKAGES)
    # Debian installs all packages into one folder, where other packages may have folders "base" and "testing", too.
    string(APPEND header_directory "/lutestsuite")
endif()

install(TARGETS LbBase LuTestSuite LuTestSuiteCLI LuTestSuiteRunner EXPORT LuTestSuiteTargets
    RUNTIME COMPONENT runtime
    LIBRARY COMPONENT ${libraries_component} NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development
    INCLUDES DESTINATION "${header_directory}")
install(FILES ${LUTESTSUITE_RUNTIME_DLLS} DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime)
if(NOT WIN32)
    install(PROGRAMS scripts/check-proof DESTINATION "${CMAKE_INSTALL_BINDIR}" RENAME lutestsuite-check-proof
        COMPONENT runtime)
endif()
install(EXPORT LuTestSuiteTargets NAMESPACE LuTestSuite:: DESTINATION "${package_directory}" COMPONENT development)

include(PublicHeaders)
foreach(header IN LISTS LUTESTSUITE_PUBLIC_HEADERS)
    cmake_path(GET header PARENT_PATH folder)
    install(FILES ${header} DESTINATION "${header_directory}/${folder}" COMPONENT development)
endforeach()

set(runtime_dll_names "")
foreach(dll IN LISTS LUTESTSUITE_RUNTIME_DLLS)
    cmake_path(GET dll FILENAME name)
    list(APPEND runtime_dll_names ${name})
endforeach()
configure_package_config_file(cmake/LuTestSuiteConfig.cmake.in LuTestSuiteConfig.cmake
    INSTALL_DESTINATION "${package_directory}" PATH_VARS CMAKE_INSTALL_BINDIR)
write_basic_package_version_file(LuTestSuiteConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/LuTestSuiteConfig.cmake" "${PROJECT_BINARY_DIR}/LuTestSuiteConfigVersion.cmake"
    cmake/LuTestSuiteAddModule.cmake cmake/LuTestSuiteBuildRecord.cmake cmake/LuTestSuiteCases.cmake
    cmake/LuTestSuiteDiscoverTests.cmake
    DESTINATION "${package_directory}" COMPONENT development)

set(pkgconfig_directory "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH prefix_from_pkgconfig
    "${CMAKE_INSTALL_PREFIX}/${pkgconfig_directory}" "${CMAKE_INSTALL_PREFIX}")
foreach(library LbBase LuTestSuite)
    configure_file(cmake/${library}.pc.in ${library}.pc @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${library}.pc" DESTINATION "${pkgconfig_directory}" COMPONENT development)
endforeach()
