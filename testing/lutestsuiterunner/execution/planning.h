/// The plan of a run from what the user asks for.
#pragma once

#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuiterunner/execution/previous.h"
#include "testing/lutestsuiterunner/execution/selection.h"
#include "testing/lutestsuiterunner/model/plan.h"
#include "testing/lutestsuiterunner/settings/options.h"

namespace Runner
{

/// The whole selection; neither shard nor quarantine are applied.
SPlan MakePlan(const SRunOptions& options, const LuTestSuiteSetup& setup, SSelection selection);

/// Leaves only the cases of which a run failed before.
void KeepFailed(SPlan& plan, const CPrevious& previous);

} // namespace Runner
