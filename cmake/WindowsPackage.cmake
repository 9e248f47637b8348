# Makes a ZIP that contains the run-time libraries of the compiler. Windows provides the other libraries.

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME "LuTestSuite-${PROJECT_VERSION}-windows-x86_64")

set(names "")
foreach(dll IN LISTS LUTESTSUITE_RUNTIME_DLLS)
    cmake_path(GET dll FILENAME name)
    string(APPEND names "  bin/${name}\n")
endforeach()
configure_file(packaging/windows/PREREQUISITES.txt.in PREREQUISITES.txt @ONLY NEWLINE_STYLE CRLF)
install(FILES "${PROJECT_BINARY_DIR}/PREREQUISITES.txt" DESTINATION . COMPONENT runtime)

# Debian's copyright files for the software that is part of the binaries.
foreach(package gcc-mingw-w64-base mingw-w64-common libpugixml-dev libcli11-dev nlohmann-json3-dev libxxhash-dev)
    set(file "/usr/share/doc/${package}/copyright")
    if(EXISTS "${file}")
        install(FILES "${file}" DESTINATION licenses RENAME ${package}.txt COMPONENT runtime)
    endif()
endforeach()
