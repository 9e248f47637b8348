/// Memory dumps of a child process, for debuggers.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "base/lbexport.h"
#include "base/os/stacks.h"

namespace LbOs
{

class CChildProcess;

/// Either path or failure is empty.
struct SDump
{
    std::wstring path;    ///< of the file
    std::wstring failure; ///< German, without a full stop; then no file remains
};

/// Writes a dump to `path` with the platform's suffix: on Linux a core ("name.core"), on Windows a mini dump
/// ("name.dmp"). An existing file is replaced; only the current user can read the new one. The registers of a crashed
/// thread are those of the crash. The child's threads are stopped meanwhile and continue afterwards. Any thread; one
/// call at a time for each child.
///
/// A core contains all memory that the process has changed; files that it maps are not copied. A mini dump contains
/// stacks and the variables of modules.
///
/// Fails after `longest`. On Windows the system's function that writes a dump cannot be interrupted: after this
/// time-out it may keep the child's threads stopped for a while, and the file disappears when the function returns or
/// when the current process ends.
LB_API SDump WriteDump(const CChildProcess& child, const std::optional<SCrashedThread>& crashed,
                       const std::wstring& path, std::chrono::milliseconds longest);

} // namespace LbOs
