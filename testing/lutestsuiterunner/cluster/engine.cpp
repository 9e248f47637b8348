#include "testing/lutestsuiterunner/cluster/engine.h"

#include <algorithm>

namespace Runner
{

const SEngineKind& GetEngineKind(EEngine engine)
{
    // Complete: the options allow no other engine.
    static constexpr const SEngineKind* c_Kinds[] = {&c_LocalEngine, &c_SlurmEngine};
    return **std::ranges::find(c_Kinds, engine, &SEngineKind::engine);
}

} // namespace Runner
