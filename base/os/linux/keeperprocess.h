/// The keeper as a process, and what it shares with its owner. Internal to the Linux side.
#pragma once

#include <atomic>

#include <sys/types.h>

#include "base/os/linux/keeper.h"

namespace LbOs::Linux
{

/// Shared with the keeper, and all zero at first.
struct SKeeperState
{
    std::atomic<int> isReady; ///< the keeper can no longer be taken for anything else; a futex
    SKeptGroup groups[c_KeptGroups];
    SKeptFile files[c_KeptFiles];
};

/// Forks the keeper, whose number it returns; negative on failure. Only with `isReady` it does its work.
pid_t ForkKeeper(SKeeperState& state) noexcept;

} // namespace LbOs::Linux
