/// Call stacks of a child process.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/lbexport.h"
#include "base/os/stackframe.h"

namespace LbOs
{

class CChildProcess;

/// A thread that waits in a crash report (CCrashHandler).
struct SCrashedThread
{
    std::uint64_t thread = 0;  ///< the system's id
    std::uint64_t context = 0; ///< SCrash::context
    std::uint32_t code = 0;    ///< SCrash::code
};

/// The stacks of the child's threads, at most 64. The first one is the one at fault: that of the crashed thread or,
/// without a crash, of the thread with which the process began. The threads are stopped meanwhile and continue
/// afterwards. Gives up after 1.2 s and returns what it has by then; names are looked up last. Empty on failure. Any
/// thread; one call at a time for each child.
///
/// The first call loads the library that finds callers and names. On Linux it needs libdw for more than the innermost
/// frame and for names, and the right to trace the child. On Windows it needs the system's dbghelp.dll, which serves
/// one caller at a time: other callers wait within their time limit.
LB_API std::vector<SThreadStack> ReadStacks(const CChildProcess& child, const std::optional<SCrashedThread>& crashed);

} // namespace LbOs
