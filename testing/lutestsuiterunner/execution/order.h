/// The order of cases, and the cases of this run's shard.
#pragma once

#include <cstdint>
#include <vector>

#include "testing/lutestsuiterunner/execution/previous.h"
#include "testing/lutestsuiterunner/model/plan.h"
#include "testing/lutestsuiterunner/settings/options.h"

namespace Runner
{

/// The results of an earlier run, by case index; empty for cases that it did not run.
using PreviousCases = std::vector<std::optional<SPreviousCase>>;
PreviousCases FindPrevious(const SPlan& plan, const CPrevious& previous);

/// True if an earlier run measured the time of the case.
bool IsMeasured(const std::optional<SPreviousCase>& previous);

/// Returns the shard of each case, numbered from 0. To make all shards take about the same time, each case goes to the
/// shard with the shortest time so far, and to the first one if several have the same time. If the times are in
/// descending order, the longest shard takes at most a third longer than the best distribution allows.
std::vector<std::uint32_t> DealByTime(const std::vector<std::uint64_t>& times, std::uint32_t shards);

/// Sorts `cases`, which are in listed order. FailedFirst: failed, then new, then other cases. LongestFirst: cases
/// without a time, then the others, the longest first. Random: by the seed alone. Cases of equal rank keep the listed
/// order.
void SortCases(std::vector<std::uint32_t>& cases, EOrder order, const PreviousCases& previous, std::uint64_t seed);

/// Sets SPlannedCase::isInShard. Each case run is in exactly one shard; the order in which the file system lists the
/// cases and the place of the data directory do not matter. With times of an earlier run, the longest remaining case
/// goes to the shard with the shortest time so far; otherwise shards get the cases in turn, by name.
void SelectShard(SPlan& plan, const PreviousCases& previous);

} // namespace Runner
