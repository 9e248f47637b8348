/// Runs cases on worker threads.
#pragma once

#include <cstdint>

#include "testing/lutestsuite/run/children/externalcontext.h"
#include "testing/lutestsuite/run/plan.h"
#include "testing/lutestsuite/run/runconsole.h"
#include "testing/lutestsuite/run/runevents.h"

namespace LuTestSuiteRun
{

/// The number of workers for a wanted number of threads: at least 1, at most 256, and fewer if the system allows the
/// user only few processes.
std::uint32_t GetWorkerCount(std::uint32_t wanted);

/// Runs the cases on worker threads and prints each finished case on the calling thread. All workers have ended when
/// the function returns or throws. Throws the first exception of a worker.
void ExecuteInParallel(const SParams& params, const SChildSettings& childSettings, PlannedCases planned,
                       CRunEvents& events, CRunConsole& console);

} // namespace LuTestSuiteRun
