/// The findings as one HTML file.
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuiterunner/history/analysis/analysis.h"
#include "testing/lutestsuiterunner/history/analysis/gates.h"

namespace Runner::History
{

/// UTF-8. Needs no other file, and shows everything even without scripts. `newest` as for GetFindings.
std::string MakePage(const std::vector<SAnalysis>& analyses, const SGateResults& gates, std::size_t newest);

} // namespace Runner::History
