/// Cases on worker threads.
#pragma once

#include <cstdint>
#include <vector>

#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/run/children/externalcontext.h"
#include "testing/lutestsuite/run/plan.h"

namespace LuTestSuiteRun
{

/// Number of workers for a wanted number of threads.
std::uint32_t GetWorkerCount(std::uint32_t wanted);

/// Runs the cases on worker threads and prints each as it has finished, on the calling thread. All workers have
/// ended when this returns, also by an exception: its own or the first that ended a worker.
void ExecuteInParallel(const LuTestSuiteSetup& setup, const std::vector<LuTestSuite::SUnitTest>& unitTests,
                       const SChildSettings& childSettings, PlannedCases planned);

} // namespace LuTestSuiteRun
