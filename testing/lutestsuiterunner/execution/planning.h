/// Makes the plan of a run from the user's options.
#pragma once

#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuiterunner/execution/previous.h"
#include "testing/lutestsuiterunner/execution/selection.h"
#include "testing/lutestsuiterunner/model/plan.h"
#include "testing/lutestsuiterunner/settings/options.h"

namespace Runner
{

/// The plan of the whole selection, without shards and quarantine.
SPlan MakePlan(const SRunOptions& options, const LuTestSuiteSetup& setup, SSelection selection);

/// Keeps only the cases that failed in an earlier run.
void KeepFailed(SPlan& plan, const CPrevious& previous);

} // namespace Runner
