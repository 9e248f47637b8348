/// The findings as JSON.
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuiterunner/history/analysis/analysis.h"
#include "testing/lutestsuiterunner/history/analysis/gates.h"

namespace Runner::History
{

/// UTF-8, indented, ended by a line feed. `newest` as for GetFindings.
std::string MakeJson(const std::vector<SAnalysis>& analyses, const std::vector<SGateResult>& gates, std::size_t newest);

} // namespace Runner::History
