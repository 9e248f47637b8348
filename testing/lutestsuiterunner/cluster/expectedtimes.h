/// How long the cases of a run will probably take.
#pragma once

#include "testing/lutestsuiterunner/execution/order.h"
#include "testing/lutestsuiterunner/model/plan.h"

namespace Runner
{

/// Sets SPlannedCase::expected from an earlier run. A case without a time in that run gets the mean of the longest
/// tenth of all times. If no case has a time, sets nothing.
void SetExpectedTimes(SPlan& plan, const PreviousCases& previous);

} // namespace Runner
