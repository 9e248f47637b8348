/// The shards of a distributed run: which has which cases, and their plans.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/model/plan.h"

namespace Runner
{

/// The case runs of each shard, ascending. All shards take about the same time. Without times, each shard gets the same
/// number of cases, and from each class a similar mixture of small and large data files.
std::vector<std::vector<std::uint32_t>> DealOut(const SPlan& plan, std::uint32_t shards);

/// The plan of one shard: only its cases, with their places in the whole plan. `arguments` are those of its host.
SPlan MakeShardPlan(const SPlan& whole, const std::vector<std::uint32_t>& cases, const SShard& shard,
                    std::vector<std::wstring> arguments);

/// A shard as the run's folder lists it.
struct SShardEntry
{
    std::string digest;       ///< of its plan
    std::uint32_t cases = 0;  ///< that it runs
    std::uint32_t places = 0; ///< cases in its plan, with those that other shards run
};

/// Fixes the content of a distributed run: replaces the content of the folder by the whole plan, the plans of the
/// shards and their list. `taskOptions` are the options of the shards' hosts other than the shard. `problems` make the
/// run red whatever its shards do. Sets the plan's digest and number of parts. Throws LbException with a German
/// message.
void WriteShards(const std::wstring& folder, SPlan& plan, std::uint32_t shards,
                 const std::vector<std::wstring>& taskOptions, const std::vector<std::wstring>& problems = {});

/// Afterwards the folder holds no run, and another one may replace its content unasked.
void ForgetShards(const std::wstring& folder);

/// The list of the shards, by number - 1. Throws LbException with a German message.
std::vector<SShardEntry> ReadShards(const std::wstring& folder);

/// The problems with which the run was planned. Throws as ReadShards.
std::vector<std::wstring> ReadPlannedProblems(const std::wstring& folder);

} // namespace Runner
