/// Reads a distributed run, and tells how far its journals were read.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// What was read of one shard.
struct SReadPart
{
    /// How many records were read of each journal, by its number - 1. The state lacks later ones.
    std::vector<std::uint64_t> records;
    std::uint32_t verdicts = 0; ///< case runs with a verdict
};

/// As LoadRun, for a distributed run. `parts` receives the shards by number - 1.
std::unique_ptr<CRunState> LoadDistributedRun(const std::wstring& folder, std::vector<SReadPart>& parts);

} // namespace Runner
