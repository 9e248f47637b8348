#include "testing/lutestsuiterunner/commands/submitterlock.h"

#include <thread>

#include "base/os/interruption.h"
#include "testing/lutestsuiterunner/cluster/submissions.h"
#include "testing/lutestsuiterunner/commands/shardsline.h"
#include "testing/lutestsuiterunner/journal/filenames.h"

namespace Runner
{

std::unique_ptr<LbOs::CFolderLock> TryAcquireSubmitterLock(const SDistributedRun& run, bool& isHeld)
{
    return LbOs::CFolderLock::TryAcquire(run.folder + c_TasksFolderName, isHeld);
}

std::unique_ptr<LbOs::CFolderLock> AcquireSubmitterLock(const SDistributedRun& run, bool& isHeld)
{
    CFollower follower(run.folder, run.shards, *run.engine);
    CShardsLine line;
    std::unique_ptr<LbOs::CFolderLock> lock = TryAcquireSubmitterLock(run, isHeld);
    while (isHeld && LbOs::GetInterruption() != LbOs::EInterruption::Terminate)
    {
        follower.Watch();
        line.Show(follower, CShardsLine::Clock::now());
        if (LbOs::GetInterruption() == LbOs::EInterruption::User)
        {
            MarkCanceled(run.folder);
        }
        std::this_thread::sleep_for(run.GetInterval());
        lock = TryAcquireSubmitterLock(run, isHeld);
    }
    return lock;
}

bool BelongsToAnotherProcess(const SDistributedRun& run)
{
    bool isHeld = false;
    TryAcquireSubmitterLock(run, isHeld);
    return run.kind->isOfThisMachine && isHeld;
}

} // namespace Runner
