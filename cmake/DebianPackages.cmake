# Three Debian packages: the shared libraries, the files for building test modules, and the hosts.

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL libraries development runtime)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")
# The hosts link our own libraries. No installed package contains them, so dpkg-shlibdeps must search this folder.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(version "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")
set(library_package liblutestsuite${PROJECT_VERSION_MAJOR})

set(CPACK_DEBIAN_LIBRARIES_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARIES_DESCRIPTION "The libraries LuTestSuite and LbBase, which run data-driven unit tests
and are the base of test modules.")
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/packaging/debian/triggers")
# The library loads libdw when a child process has crashed.
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_RECOMMENDS libdw1)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liblutestsuite-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
# The CMake package refers to the hosts, too, because projects copy them beside their modules.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library_package} (= ${version}), lutestsuite (= ${version})")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "Headers, a CMake package and pkg-config files for building modules with
data-driven unit tests, and programs that run them.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME lutestsuite)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "${library_package} (= ${version})")
# For lutestsuite-check-proof.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS "python3, python3-xxhash")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "Loads modules with unit tests, finds their cases in folders of data sets,
runs them in the process, on threads or in child processes, and reports.
LuTestSuiteCLI is the host for a console, LuTestSuiteRunner the one for
build servers.")

if(NOT LUTESTSUITE_DEBIAN_PACKAGES)
    return()
endif()

# Each package contains its copyright and a changelog.
find_program(LUTESTSUITE_GZIP gzip REQUIRED)
mark_as_advanced(LUTESTSUITE_GZIP)
string(TIMESTAMP time "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(changelog "${PROJECT_BINARY_DIR}/changelog.Debian")
configure_file(packaging/debian/changelog.in "${changelog}" @ONLY)
execute_process(COMMAND "${LUTESTSUITE_GZIP}" -9nfk "${changelog}" COMMAND_ERROR_IS_FATAL ANY)
foreach(component LIBRARIES DEVELOPMENT RUNTIME)
    string(TOLOWER ${component} install_component)
    install(FILES packaging/debian/copyright "${changelog}.gz"
        DESTINATION "share/doc/${CPACK_DEBIAN_${component}_PACKAGE_NAME}" COMPONENT ${install_component})
endforeach()
