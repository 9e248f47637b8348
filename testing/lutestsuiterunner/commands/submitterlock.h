/// The lock of the process that has started the shards of a run on this machine.
#pragma once

#include <memory>

#include "base/os/folderlock.h"
#include "testing/lutestsuiterunner/commands/distributedrun.h"

namespace Runner
{

/// Sets `isHeld` to true if another process has the lock, else to false. If no other process has it, the result is null
/// only on a file system without locks.
std::unique_ptr<LbOs::CFolderLock> TryAcquireSubmitterLock(const SDistributedRun& run, bool& isHeld);

/// Waits until the process that started the local shards has ended, and then takes over its lock. Meanwhile shows the
/// progress of the run; if the user presses Ctrl-C, marks the run as canceled, so that the other process ends it. If
/// this process is asked to terminate while it waits, sets `isHeld` and returns null. Also returns null on a file
/// system without locks.
std::unique_ptr<LbOs::CFolderLock> AcquireSubmitterLock(const SDistributedRun& run, bool& isHeld);

/// True if the shards were started by another process of this machine, and that process has not ended.
bool BelongsToAnotherProcess(const SDistributedRun& run);

} // namespace Runner
