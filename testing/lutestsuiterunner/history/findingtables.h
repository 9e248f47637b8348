/// The tables of findings in the page.
#pragma once

#include <string>

#include "testing/lutestsuiterunner/history/findings.h"

namespace Runner::History
{

/// All kinds that have findings, each a section with a heading. `prefix` makes their marks unique in the page.
std::string MakeFindingTables(const SAnalysis& analysis, std::size_t newest, const std::string& prefix);

/// The name of a run in the page: its start, or its name if the start is unknown. Markup.
std::string GetRunLabel(const SRun& run);

} // namespace Runner::History
