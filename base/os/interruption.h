/// Requests from outside to end the process: Ctrl-C, and the system's request to terminate.
#pragma once

#include "base/lbexport.h"

namespace LbOs
{

enum class EInterruption
{
    None,
    User,      ///< Ctrl-C, Ctrl-Break
    Terminate, ///< SIGTERM, SIGHUP; on Windows the console closes or the user logs off
};

/// From now on and for the life of the process, the first request is remembered and does nothing else; a second one
/// ends the process at once, with the status of the second request. Child processes keep the system's own handling. Any
/// thread.
LB_API void CatchInterruptions();

/// The first request so far. Any thread.
LB_API EInterruption GetInterruption() noexcept;

/// The exit status that shells use for this interruption: 130 for User, 143 for Terminate, 0 for None.
LB_API int GetExitStatus(EInterruption interruption) noexcept;

} // namespace LbOs
