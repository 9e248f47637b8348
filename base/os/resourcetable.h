/// The table of a module's resources, for systems whose executables cannot contain resources. Internal to base/os and
/// to the sources that lutestsuite_embed_resources generates.
#pragma once

#include "base/os/platform.h"

namespace LbOs
{

struct SEmbeddedResource
{
    const wchar_t* name; ///< null ends the table
    const wchar_t* type;
    const char* begin;
    const char* end;
};

} // namespace LbOs

extern "C" LB_OS_EXPORT const LbOs::SEmbeddedResource LbEmbeddedResources[];
