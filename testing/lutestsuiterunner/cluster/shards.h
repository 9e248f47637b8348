/// Divides the cases of a distributed run among its shards, and stores the plans of the shards.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/model/plan.h"

namespace Runner
{

/// Returns the case runs of each shard, ascending. If the plan has expected times, all shards take about the same time.
/// Otherwise each shard gets about the same number of cases, and from each class a similar mixture of small and large
/// data files.
std::vector<std::vector<std::uint32_t>> DealOut(const SPlan& plan, std::uint32_t shards);

/// Makes the plan of one shard: only its cases, with their indices in the whole plan. `arguments` is the command line
/// of the shard's host.
SPlan MakeShardPlan(const SPlan& whole, const std::vector<std::uint32_t>& cases, const SShard& shard,
                    std::vector<std::wstring> arguments);

/// A shard as the run's folder lists it.
struct SShardEntry
{
    std::string digest;       ///< digest of the shard's plan
    std::uint32_t cases = 0;  ///< number of case runs that the shard executes
    std::uint32_t places = 0; ///< number of case runs in its plan, including repetitions that other shards execute
};

/// Replaces the content of the folder by the whole plan, the plans of the shards, and the list of the shards.
/// `taskOptions` are the options of the shards' hosts apart from --shard. `problems` make the run red, whatever the
/// results of the shards are. Sets the plan's digest and number of parts. Throws LbException with a German message.
void WriteShards(const std::wstring& folder, SPlan& plan, std::uint32_t shards,
                 const std::vector<std::wstring>& taskOptions, const std::vector<std::wstring>& problems = {});

/// Removes the list of the shards. Afterwards the folder counts as a folder without a run, so that a new run replaces
/// its content without --force.
void ForgetShards(const std::wstring& folder);

/// Reads the list of the shards, indexed by shard number - 1. Throws LbException with a German message.
std::vector<SShardEntry> ReadShards(const std::wstring& folder);

/// The problems with which the run was planned. Throws as ReadShards.
std::vector<std::wstring> ReadPlannedProblems(const std::wstring& folder);

} // namespace Runner
