#include "testing/lutestsuiterunner/cluster/engine.h"

namespace Runner
{

std::unique_ptr<IEngine> MakeEngine(EEngine kind, const SEngineSettings& settings)
{
    return kind == EEngine::Slurm ? MakeSlurmEngine(settings) : MakeLocalEngine(settings);
}

void RequireEngine(EEngine kind)
{
    if (kind == EEngine::Slurm)
    {
        RequireSlurm();
    }
}

} // namespace Runner
