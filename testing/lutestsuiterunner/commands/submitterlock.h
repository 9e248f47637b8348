/// The lock of the process that has started the shards of a run on this machine.
#pragma once

#include <memory>

#include "base/os/folderlock.h"
#include "testing/lutestsuiterunner/commands/distributedrun.h"

namespace Runner
{

/// `isHeld` receives whether another process has the lock. If not, the lock is null only on a file system without
/// locks.
std::unique_ptr<LbOs::CFolderLock> TryAcquireSubmitterLock(const SDistributedRun& run, bool& isHeld);

/// Local shards belong to the process that started them. Another process takes over only when that one has ended. Until
/// then it shows how far the run is, and tells that process when the user cancels. If this process is asked to
/// terminate while it waits, sets `isHeld` and returns null. On a file system without locks also returns null.
std::unique_ptr<LbOs::CFolderLock> AcquireSubmitterLock(const SDistributedRun& run, bool& isHeld);

/// True if another process of this machine has started the shards and has not ended.
bool BelongsToAnotherProcess(const SDistributedRun& run);

} // namespace Runner
