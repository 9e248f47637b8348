/// A distributed run, as read from its folder.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/cluster/engine.h"
#include "testing/lutestsuiterunner/cluster/shards.h"
#include "testing/lutestsuiterunner/model/plan.h"
#include "testing/lutestsuiterunner/settings/options.h"

namespace Runner
{

/// A distributed run, as read from its folder.
struct SDistributedRun
{
    std::wstring folder; ///< with separator at its end
    SPlan plan;          ///< plan of the whole run
    SSubmitOptions options;
    std::vector<SShardEntry> shards;
    const SEngineKind* kind = nullptr; ///< of the engine
    std::unique_ptr<IEngine> engine;

    /// The time between two steps that read the journals of all shards. It grows with the number of shards.
    std::chrono::milliseconds GetInterval() const;
};

/// Throws a German message as std::wstring, or LbException, if the directory holds no distributed run.
SDistributedRun OpenDistributedRun(const std::wstring& directory);

} // namespace Runner
