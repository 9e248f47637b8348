/// Small drawings of the page: SVG inside HTML, in UTF-8.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/history/analysis/table.h"

namespace Runner::History
{

/// One mark for each run, the newest on the right: low for passed, high for failed, a dot for canceled, no mark for
/// absent. Screen readers get the counts as text.
std::string DrawOutcomes(std::span<const EOutcome> outcomes);

/// A line through the values, without gaps. `marks` are the runs at which the level changed; the last change is
/// somewhere in the interval.
struct SLine
{
    std::span<const std::optional<double>> values; ///< of each run
    std::vector<std::size_t> marks;
    std::size_t intervalFirst = 0; ///< the interval is shaded if it has more than one run
    std::size_t intervalLast = 0;
    std::string label; ///< for screen readers; markup
};

std::string DrawLine(const SLine& line);

/// The suite over all runs.
struct STrend
{
    std::vector<double> seconds;
    std::vector<std::size_t> failed;
    std::vector<std::string> titles; ///< of the runs, markup
};

std::string DrawTrend(const STrend& trend);

} // namespace Runner::History
