/// Modules (shared libraries) loaded by the process.
#pragma once

#include <string>

#include "base/lbexport.h"

namespace LbOs
{

/// Loads the shared library at the full path `path` for the life of the process; its static objects have been
/// constructed when the call returns. The system searches the module's folder for the module's dependencies. On failure
/// returns false and stores the system's reason in `reason`. If the constructor of a static object throws, the module's
/// earlier registrations may remain. Shows no dialog. Any thread.
LB_API bool LoadModule(const std::wstring& path, std::wstring& reason);

/// Full path of the module that contains `address`; empty if no module contains it. Any thread.
LB_API std::wstring GetModulePathOf(const void* address);

} // namespace LbOs
