/// Cases on worker threads.
#pragma once

#include <cstdint>

#include "testing/lutestsuite/run/children/externalcontext.h"
#include "testing/lutestsuite/run/plan.h"
#include "testing/lutestsuite/run/runconsole.h"
#include "testing/lutestsuite/run/runevents.h"

namespace LuTestSuiteRun
{

/// Number of workers for a wanted number of threads. Fewer where the system lets the user have few processes.
std::uint32_t GetWorkerCount(std::uint32_t wanted);

/// Runs the cases on worker threads and prints each finished case on the calling thread. All workers have ended when it
/// returns or throws. Rethrows a worker's first exception.
void ExecuteInParallel(const SParams& params, const SChildSettings& childSettings, PlannedCases planned,
                       CRunEvents& events, CRunConsole& console);

} // namespace LuTestSuiteRun
