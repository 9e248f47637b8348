/// Data that the build embeds in a module, see lutestsuite_embed_resources.
#pragma once

#include <string>
#include <string_view>

#include "base/lbexport.h"

namespace LbOs
{

/// The bytes of the resource of this name and type, both in capitals, in the module (shared library or program) that
/// contains `address`; valid as long as the module is loaded. Empty if the module has no such resource, or if no module
/// contains `address`. Any thread.
LB_API std::string_view FindEmbeddedResource(const void* address, const std::wstring& name, const std::wstring& type);

} // namespace LbOs
