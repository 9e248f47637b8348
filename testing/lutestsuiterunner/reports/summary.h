/// The summary of a run for programs: summary.json.
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuiterunner/model/runstate.h"
#include "testing/lutestsuiterunner/reports/opencases.h"

namespace Runner
{

/// The path of a file in the folder of a distributed run: in UTF-8, a line for each loss of shards that were submitted
/// again.
std::wstring GetLossesPath(const std::wstring& folder);

/// The text of the summary, JSON in UTF-8. `losses` are German lines.
std::string MakeSummary(const CRunState& state, const std::vector<std::wstring>& losses = {},
                        const SOpenCases& open = {});

/// Writes the summary of the run in a folder. Throws LbException with a German message.
void WriteSummary(const std::wstring& folder, const CRunState& state, const SOpenCases& open);

} // namespace Runner
