# Packages of the install tree, made by scripts/package: Debian packages on Linux, a ZIP of the Windows build.

set(CPACK_PACKAGE_VENDOR "The developers of LuTestSuite")
set(LUTESTSUITE_PACKAGE_CONTACT "The developers of LuTestSuite <lutestsuite@packages.invalid>"
    CACHE STRING "Whom users of a package write to: name <address>")
set(CPACK_PACKAGE_CONTACT "${LUTESTSUITE_PACKAGE_CONTACT}")
# The first line of each package's description. On Debian it begins with a lower-case letter.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "data-driven unit-test runner for C++ product families")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
if(WIN32)
    include(WindowsPackage)
else()
    include(DebianPackages)
endif()
include(CPack)
