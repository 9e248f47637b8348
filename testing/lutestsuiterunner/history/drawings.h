/// Small drawings of the page: SVG inside of HTML, in UTF-8.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/history/table.h"

namespace Runner::History
{

/// One mark for each run, the newest on the right: low for passed, high for failed, a dot for canceled, nothing for
/// absent. The text for readers that see no drawing counts them.
std::string DrawOutcomes(std::span<const EOutcome> outcomes);

/// A line through the values; nothing breaks it. `marks` are the runs at which the level changed, and `intervals` where
/// these may lie.
struct SLine
{
    std::span<const std::optional<double>> values; ///< of each run
    std::vector<std::size_t> marks;
    std::size_t intervalFirst = 0; ///< shaded if it ends behind its first run
    std::size_t intervalLast = 0;
    std::string label; ///< for readers that see no drawing; markup
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
