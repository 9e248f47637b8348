/// Loaded modules (shared libraries) of the process.
#pragma once

#include <string>

#include "base/lbexport.h"

namespace LbOs
{

/// Loads the shared library at the full path `path`; it stays loaded for the life of the process, and its static
/// objects have been constructed when the call returns. The module's own folder is searched for its dependencies.
/// Returns false on failure, with the system's reason in `reason`: also when a static object's constructor throws; what
/// the module registered before that may stay registered. No dialog appears. Any thread.
LB_API bool LoadModule(const std::wstring& path, std::wstring& reason);

/// Full path of the module that contains `address`; empty when no module does. Any thread.
LB_API std::wstring GetModulePathOf(const void* address);

} // namespace LbOs
