/// The tables of findings in the page.
#pragma once

#include <string>

#include "testing/lutestsuiterunner/history/analysis/findings.h"

namespace Runner::History
{

/// All kinds that have findings, each a section with a heading. `prefix` makes the sections' identifiers unique in the
/// page.
std::string MakeFindingTables(const SAnalysis& analysis, std::size_t newest, const std::string& prefix);

/// The name of a run in the page: its start, or its name if the start is unknown. Markup.
std::string GetRunLabel(const SRun& run);

/// "zwischen ... und ...", the runs in which a change may have begun; empty if there is only one.
std::string GetInterval(const CTable& table, std::size_t first, std::size_t last);

} // namespace Runner::History
