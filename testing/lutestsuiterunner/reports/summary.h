/// The run in short, for programs: summary.json.
#pragma once

#include <string>

#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// The text of the summary, JSON in UTF-8.
std::string MakeSummary(const CRunState& state);

/// Throws LbException with a German message.
void WriteSummary(const std::wstring& path, const CRunState& state);

} // namespace Runner
