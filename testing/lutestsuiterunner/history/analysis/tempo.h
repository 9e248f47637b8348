/// How slow the runs of an archive were as a whole.
#pragma once

#include <vector>

#include "testing/lutestsuiterunner/history/analysis/table.h"

namespace Runner::History
{

/// The tempo of each run: 1 is usual, at 1.1 the cases took 10 % longer. All runs have 1 if there are too few cases to
/// tell. Cases that probably changed independently of the others, by `smallestChange` or more, do not count.
std::vector<double> GetTempo(const CTable& table, double smallestChange);

} // namespace Runner::History
