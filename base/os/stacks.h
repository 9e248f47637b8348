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

/// A crashed thread that waits in the report of its crash (CCrashHandler).
struct SCrashedThread
{
    std::uint64_t thread = 0;  ///< the system's id
    std::uint64_t context = 0; ///< SCrash::context
    std::uint32_t code = 0;    ///< SCrash::code
};

/// The stacks of the child's threads, at most 64. The first stack is that of the thread at fault: the crashed thread
/// or, without a crash, the thread with which the process began. The threads are stopped while their stacks are read.
/// Looks up names last. After 1.2 s returns what has been read so far. Empty on failure. Any thread; one call at a time
/// for each child.
///
/// The first call loads a library that finds callers and names. On Linux this is libdw; without it, a stack has only
/// the innermost frame and no function names. Linux also requires the right to trace the child. On Windows the library
/// is the system's dbghelp.dll, which serves one caller at a time: other callers wait within their time limit.
LB_API std::vector<SThreadStack> ReadStacks(const CChildProcess& child, const std::optional<SCrashedThread>& crashed);

} // namespace LbOs
