# An overlay port: vcpkg install lutestsuite --classic --overlay-ports=packaging/vcpkg. Builds the checkout that
# contains this file.

vcpkg_check_linkage(ONLY_DYNAMIC_LIBRARY)
# One configuration suffices: a debug build has the same interface, and its hosts would have other names.
set(VCPKG_BUILD_TYPE release)

cmake_path(SET SOURCE_PATH NORMALIZE "${CMAKE_CURRENT_LIST_DIR}/../../..")
vcpkg_cmake_configure(
    SOURCE_PATH "${SOURCE_PATH}"
    OPTIONS
        -DBUILD_TESTING=OFF
        -DLUTESTSUITE_BUILD_EXAMPLES=OFF
        -DLUTESTSUITE_WARNINGS=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME LuTestSuite CONFIG_PATH lib/cmake/LuTestSuite)
vcpkg_fixup_pkgconfig()
vcpkg_copy_tools(TOOL_NAMES LuTestSuiteCLI LuTestSuiteRunner AUTO_CLEAN)

vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/packaging/debian/copyright")
