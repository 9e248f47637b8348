/// The tables of the page about the suite as a whole.
#pragma once

#include <string>

#include "testing/lutestsuiterunner/history/analysis/analysis.h"

namespace Runner::History
{

/// Total time and failures of each run, and the steps of the tempo.
std::string MakeTrend(const SAnalysis& analysis);

/// The classes that take most of the newest run's time.
std::string MakeClassTable(const SAnalysis& analysis);

/// All runs, the newest first, with what began in each.
std::string MakeRunTable(const SAnalysis& analysis);

/// How steps are found, and how many alarms the same runs cause in random orders.
std::string MakeMethod(const SAnalysis& analysis);

} // namespace Runner::History
