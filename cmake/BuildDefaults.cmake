# Settings that every target of the project needs, also if another project contains this one.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# The host loads modules from its own directory, so all programs and libraries are built into one folder.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")

# Relative run paths let the folder be moved or copied as a whole. Built and installed files have the same run paths,
# because CMake pads a path that becomes shorter with colons. An empty entry between colons means the working directory:
# each process would search for libraries there and could load a foreign one.
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN")
if(LUTESTSUITE_INSTALL)
    file(RELATIVE_PATH libraries "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
    list(APPEND CMAKE_INSTALL_RPATH "$ORIGIN/${libraries}")
endif()

# Exceptions name their source file relative to the repository, so that they do not show where the checkout is.
add_compile_options("-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=")

if(WIN32)
    # Names as usual on Windows: LbBase.dll, not libLbBase.dll.
    set(CMAKE_SHARED_LIBRARY_PREFIX "")
endif()
