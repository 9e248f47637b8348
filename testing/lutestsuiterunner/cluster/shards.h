/// The shards of a distributed run: which has which cases, and their plans.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/execution/order.h"
#include "testing/lutestsuiterunner/model/plan.h"

namespace Runner
{

/// Sets SPlannedCase::expected from an earlier run. A case that it does not know counts as long: as the mean of the
/// longest tenth of those that it knows. If it knows no case, nothing is expected of any.
void SetExpectedTimes(SPlan& plan, const PreviousCases& previous);

/// The case runs of each shard, ascending. All shards take about the same time. Without times they have the same number
/// of cases, and of each class about the same: small and large data files.
std::vector<std::vector<std::uint32_t>> DealOut(const SPlan& plan, std::uint32_t shards);

/// The plan of one shard: only its cases, with their places in the whole. `arguments` are those of its host.
SPlan MakeShardPlan(const SPlan& whole, const std::vector<std::uint32_t>& cases, const SShard& shard,
                    std::vector<std::wstring> arguments);

/// A shard as the run's folder lists it.
struct SShardEntry
{
    std::string digest;       ///< of its plan
    std::uint32_t cases = 0;  ///< that it runs
    std::uint32_t places = 0; ///< cases in its plan, with those that other shards run
};

/// Freezes a distributed run: replaces what the folder holds by the whole plan, the plans of the shards and their list.
/// `taskOptions` are the options of the shards' hosts beside the shard. Sets digest and number of parts of the plan.
/// Throws LbException with a German message.
void WriteShards(const std::wstring& folder, SPlan& plan, std::uint32_t shards,
                 const std::vector<std::wstring>& taskOptions);

/// The list of the shards, by number - 1. Throws LbException with a German message.
std::vector<SShardEntry> ReadShards(const std::wstring& folder);

} // namespace Runner
