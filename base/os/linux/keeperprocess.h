/// The keeper's process, and the state that it shares with its owner. Internal to the Linux side.
#pragma once

#include <atomic>

#include <sys/types.h>

#include "base/os/linux/keptentries.h"

namespace LbOs::Linux
{

/// Shared with the keeper; initially all zero.
struct SKeeperState
{
    std::atomic<int> isReady; ///< set when the keeper has its name and session; a futex
    SKeptGroup groups[c_KeptGroups];
    SKeptFile files[c_KeptFiles];
};

/// Forks the keeper and returns its id; negative on failure. The keeper works once `isReady` is set.
pid_t ForkKeeper(SKeeperState& state) noexcept;

} // namespace LbOs::Linux
