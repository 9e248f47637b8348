/// How slow the runs of an archive were as a whole.
#pragma once

#include <vector>

#include "testing/lutestsuiterunner/history/analysis/table.h"

namespace Runner::History
{

/// For each run 1 for the usual tempo, 1.1 if the cases took 10 % longer than usual. 1 for all runs if there are too
/// few cases to tell. Cases that probably have changed by themselves, by `smallestChange` or more, do not count.
std::vector<double> GetTempo(const CTable& table, double smallestChange);

} // namespace Runner::History
