#include "testing/lutestsuiterunner/commands/distributedrun.h"

#include <algorithm>

#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/folder.h"
#include "testing/lutestsuiterunner/journal/planfile.h"
#include "testing/lutestsuiterunner/settings/commandline.h"

namespace Runner
{

std::chrono::milliseconds SDistributedRun::GetInterval() const
{
    constexpr std::chrono::milliseconds c_Least(200);
    constexpr std::chrono::milliseconds c_PerShard(10);
    constexpr std::chrono::milliseconds c_Most(15'000);
    return std::clamp(c_PerShard * static_cast<std::int64_t>(shards.size()), c_Least, c_Most);
}

SDistributedRun OpenDistributedRun(const std::wstring& directory)
{
    if (directory.empty())
    {
        throw std::wstring(L"Der Ordner des Laufs fehlt");
    }
    SDistributedRun run;
    run.folder = GetRunFolder(directory);
    run.shards = ReadShards(run.folder);
    run.plan = ReadPlan(run.folder + c_PlanName);
    std::vector<std::wstring> arguments = {L"LuTestSuiteRunner"};
    arguments.insert(arguments.end(), run.plan.arguments.begin(), run.plan.arguments.end());
    run.options = std::get<SSubmitOptions>(ReadCommandLine(arguments));
    run.kind = &GetEngineKind(run.options.engine);
    run.kind->require(run.options.sbatch);
    run.engine = run.kind->make({run.folder, run.plan.runId, run.plan.partCount, run.options.sbatch});
    return run;
}

} // namespace Runner
