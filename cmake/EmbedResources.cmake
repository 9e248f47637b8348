# Embeds files in a module. LbOs::FindEmbeddedResource finds them by name and type.

# lutestsuite_embed_resources(<target> (<name> <type> <file>)...)
#
# On Windows the files become Windows resources. Elsewhere a generated source contains the bytes and the only table of
# them, so call this function only once for each target. A file that changes is embedded again.
function(lutestsuite_embed_resources target)
    set(resources "${ARGN}")
    set(files "")
    set(script "")
    set(blobs "")
    set(declarations "")
    set(entries "")
    set(index 0)
    while(resources)
        list(POP_FRONT resources name type file)
        cmake_path(ABSOLUTE_PATH file BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}" NORMALIZE)
        list(APPEND files "${file}")
        set(label "lb_resource_${index}")
        string(APPEND script "${name} ${type} \"${file}\"\n")
        string(APPEND blobs "    LB_RESOURCE(\"${label}\", \"${file}\")\n")
        string(APPEND declarations "extern const char ${label}_begin[];\nextern const char ${label}_end[];\n")
        string(APPEND entries "    {L\"${name}\", L\"${type}\", ${label}_begin, ${label}_end},\n")
        math(EXPR index "${index} + 1")
    endwhile()

    set(generated "${CMAKE_CURRENT_BINARY_DIR}/${target}_resources")
    if(WIN32)
        string(APPEND generated ".rc")
        file(CONFIGURE OUTPUT "${generated}" CONTENT "${script}" @ONLY)
    else()
        string(APPEND generated ".cpp")
        file(CONFIGURE OUTPUT "${generated}" CONTENT [[
// Generated from the list of the target's resources.
#include "base/os/resourcetable.h"

#define LB_RESOURCE(label, file)                                                                                      \
    ".hidden " label "_begin\n.global " label "_begin\n" label "_begin:\n.incbin \"" file "\"\n"                      \
    ".hidden " label "_end\n.global " label "_end\n" label "_end:\n.byte 0\n"

asm(".pushsection .rodata\n"
@blobs@    ".popsection\n");

extern "C"
{
@declarations@}

const LbOs::SEmbeddedResource LbEmbeddedResources[] = {
@entries@    {nullptr, nullptr, nullptr, nullptr},
};
]] @ONLY)
    endif()
    set_source_files_properties("${generated}" PROPERTIES OBJECT_DEPENDS "${files}")
    target_sources(${target} PRIVATE "${generated}")
endfunction()
