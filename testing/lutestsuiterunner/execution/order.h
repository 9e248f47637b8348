/// In which order cases run, and which of them this run's shard has.
#pragma once

#include <cstdint>
#include <vector>

#include "testing/lutestsuiterunner/execution/previous.h"
#include "testing/lutestsuiterunner/model/plan.h"
#include "testing/lutestsuiterunner/settings/options.h"

namespace Runner
{

/// By case index: what is known of the case from an earlier run.
using PreviousCases = std::vector<std::optional<SPreviousCase>>;
PreviousCases FindPrevious(const SPlan& plan, const CPrevious& previous);

/// Sorts `cases`, which are in listed order. FailedFirst: failed, then new, then other cases. LongestFirst: cases
/// without a time, then by time. Random: by the seed alone. Cases of equal rank keep the listed order.
void SortCases(std::vector<std::uint32_t>& cases, EOrder order, const PreviousCases& previous, std::uint64_t seed);

/// Sets SPlannedCase::isInShard. Each case run is in one shard, whatever the order in which the file system lists them
/// and wherever the data directory is: with times of an earlier run the longest case goes to the shard that has least
/// to do so far, else the cases are dealt out by name.
void SelectShard(SPlan& plan, const PreviousCases& previous);

} // namespace Runner
