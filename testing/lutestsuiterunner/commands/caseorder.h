/// The cases that a run still has to execute, in their order.
#pragma once

#include <cstdint>
#include <vector>

#include "testing/lutestsuiterunner/execution/order.h"
#include "testing/lutestsuiterunner/model/runstate.h"
#include "testing/lutestsuiterunner/settings/options.h"

namespace Runner
{

/// The cases that have no result yet, in the order that the options ask for.
std::vector<std::uint32_t> OrderMissingCases(const CRunState& state, const SRunOptions& options,
                                             const PreviousCases& previous);

/// Expected times by case index; empty if nothing is known.
std::vector<std::uint64_t> GetExpectedTimes(const PreviousCases& previous);

} // namespace Runner
