/// The commands "wait", "status" and "cancel" for a distributed run that another process began.

#include "base/lbformat.h"
#include "testing/lutestsuitehost/hostmain.h"
#include "testing/lutestsuiterunner/cluster/submissions.h"
#include "testing/lutestsuiterunner/commands/commands.h"
#include "testing/lutestsuiterunner/commands/distributed.h"
#include "testing/lutestsuiterunner/commands/shardstext.h"
#include "testing/lutestsuiterunner/commands/submitterlock.h"
#include "testing/lutestsuiterunner/console/messages.h"
#include "testing/lutestsuiterunner/console/terminal.h"

namespace Runner
{

namespace
{

std::wstring describe(const SShardStatus& shard)
{
    const bool isRunning = shard.task.state == ETaskState::Running || shard.hasBegun;
    const wchar_t* const state = shard.isEnded                             ? L"fertig"
                                 : shard.isGivenUp                         ? L"aufgegeben"
                                 : isRunning                               ? L"läuft"
                                 : shard.task.state == ETaskState::Waiting ? L"wartet"
                                 : shard.submissions == 0                  ? L"nicht vergeben"
                                                                           : L"ohne Prozess";
    std::wstring text =
        LbFormat(L"%u/%u Testfälle, fehlgeschlagen: %u, %s", shard.done, shard.cases, shard.failed, state);
    if (!shard.isEnded && !shard.task.note.empty())
    {
        text += LbFormat(L" (%s)", shard.task.note);
    }
    return shard.submissions > 1 ? text + LbFormat(L", %u mal vergeben", shard.submissions) : text;
}

} // namespace

int Execute(const SWaitOptions& options)
{
    MoveLibraryLinesToErrors();
    return FollowToEnd(OpenDistributedRun(options.directory));
}

int Execute(const SStatusOptions& options)
{
    const SDistributedRun run = OpenDistributedRun(options.directory);
    CFollower follower(run.folder, run.shards, *run.engine);
    if (BelongsToAnotherProcess(run))
    {
        follower.Watch();
    }
    else
    {
        follower.Poll();
    }
    std::wstring text;
    for (std::size_t index = 0; index < run.shards.size(); ++index)
    {
        text += LbFormat(L"Teil %u: %s\n", index + 1, describe(follower.GetShards()[index]));
    }
    CTerminal::Get().WriteOutput(text + FormatShards(follower) + L"\n");
    return LuTestSuiteHost::c_Succeeded;
}

int Execute(const SCancelOptions& options)
{
    const SDistributedRun run = OpenDistributedRun(options.directory);
    CFollower follower(run.folder, run.shards, *run.engine);
    follower.Poll();
    if (follower.IsComplete())
    {
        CTerminal::Get().WriteOutput(L"Der Lauf ist schon fertig.\n");
        return LuTestSuiteHost::c_Succeeded;
    }
    MarkCanceled(run.folder);
    run.engine->Cancel(ReadSubmissions(run.folder));
    CTerminal::Get().WriteOutput(L"Der Abbruch ist angefordert.\n");
    return LuTestSuiteHost::c_Succeeded;
}

} // namespace Runner
