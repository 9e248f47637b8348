/// What the commands for distributed runs have in common.
#pragma once

#include <memory>
#include <string>

#include "base/os/folderlock.h"
#include "testing/lutestsuiterunner/commands/distributedrun.h"

namespace Runner
{

/// Cancels the distributed run that the folder may contain, and waits for the end of its tasks, before another run
/// replaces it. Only warns if the run is unreadable or the scheduler does not confirm the end. `folder` ends in a
/// separator. Returns a lock that keeps other processes from starting local shards of the old run; hold it until the
/// folder has its new content. Null if no lock is needed or available. Throws LbException with a German message if the
/// process of local shards does not end.
std::unique_ptr<LbOs::CFolderLock> EndReplacedRun(const std::wstring& folder);

/// Follows the run to its end; Ctrl-C cancels the run. Then writes reports and proof, prints the outcome, and returns
/// the exit status. While another process runs the local shards, only waits for it to end; Ctrl-C then marks the run as
/// canceled, and that process obeys the mark. If the current process is asked to terminate, it leaves the tasks of a
/// scheduler or of another process alone and writes nothing. If the run already has its proof, it has ended, and the
/// same reports are written again.
int FollowToEnd(const SDistributedRun& run);

} // namespace Runner
