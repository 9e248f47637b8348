/// The findings as JSON.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/history/analysis/analysis.h"
#include "testing/lutestsuiterunner/history/analysis/gates.h"

namespace Runner::History
{

/// UTF-8, indented, ended by a line feed. `newest` as for GetFindings. For the cases with the indices `shown`, also
/// contains the values of all runs.
std::string MakeJson(const std::vector<SAnalysis>& analyses, const SGateResults& gates, std::size_t newest,
                     const std::vector<std::uint32_t>& shown = {});

} // namespace Runner::History
