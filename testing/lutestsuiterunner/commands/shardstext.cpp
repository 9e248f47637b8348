#include "testing/lutestsuiterunner/commands/shardstext.h"

#include <cstddef>
#include <cstdint>

#include "base/lbformat.h"

namespace Runner
{

std::wstring FormatShards(const CFollower& follower)
{
    std::size_t ended = 0;
    std::size_t givenUp = 0;
    std::size_t running = 0;
    std::size_t waiting = 0;
    std::wstring reason;
    std::uint64_t cases = 0;
    std::uint64_t done = 0;
    std::uint64_t failed = 0;
    for (const SShardStatus& shard : follower.GetShards())
    {
        ended += shard.isEnded ? 1 : 0;
        givenUp += !shard.isEnded && shard.isGivenUp ? 1 : 0;
        running +=
            !shard.isEnded && !shard.isGivenUp && (shard.task.state == ETaskState::Running || shard.hasBegun) ? 1 : 0;
        if (!shard.isEnded && !shard.hasBegun && shard.task.state == ETaskState::Waiting)
        {
            ++waiting;
            reason = reason.empty() ? shard.task.note : reason;
        }
        cases += shard.cases;
        done += shard.done;
        failed += shard.failed;
    }
    const std::wstring waitingText = waiting == 0 ? L"" : LbFormat(L", %u warten (%s)", waiting, reason);
    const std::wstring givenUpText = givenUp == 0 ? L"" : LbFormat(L", %u aufgegeben", givenUp);
    return LbFormat(L"Teile: %u von %u fertig, %u laufen%s%s, Fälle: %u/%u, fehlgeschlagen: %u%s", ended,
                    follower.GetShards().size(), running, waitingText, givenUpText, done, cases, failed,
                    follower.HasAnswer() ? L"" : L", der Scheduler antwortet nicht");
}

} // namespace Runner
