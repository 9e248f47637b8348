/// Cases that are run and reported, but never make a run red.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// A line of the quarantine's file.
struct SQuarantineEntry
{
    std::wstring pattern;
    std::vector<std::uint32_t> cases; ///< case runs of the plan that it matches; ascending
    std::uint32_t passedRuns = 0;     ///< in a row, see CountPassedRuns
    std::uint32_t earlierRuns = 0;    ///< of these, without this run
};

using Quarantine = std::vector<SQuarantineEntry>;

/// From so many runs on, an entry is named as one that can go.
inline constexpr std::uint32_t c_RunsUntilRelease = 20;

/// Reads the file: a pattern a line, as that of the option -i; blanks around it, empty lines and lines that begin with
/// "#" do not count. UTF-8. Matches the patterns with the plan's cases and sets SPlannedCase::isQuarantined. Throws a
/// German message as std::wstring for a wrong pattern, LbException if the file cannot be read.
Quarantine ReadQuarantine(const std::wstring& path, const LuTestSuiteSetup& setup, SPlan& plan);

/// The patterns of the entries that match no case.
std::vector<std::wstring> FindIdleEntries(const Quarantine& quarantine);

/// Brings the numbers of passed runs to this run: those of the earlier run's folder and one more if all cases of an
/// entry that ran have passed at once; 0 if one has not. An entry whose cases did not run keeps its number. The folder
/// may be this run's own: a run that is resumed counts once.
void CountPassedRuns(Quarantine& quarantine, const CRunState& state, const std::wstring& earlierFolder);

/// Writes the numbers after the run of this id into its folder. Throws LbException with a German message.
void WritePassedRuns(const Quarantine& quarantine, const std::string& runId, const std::wstring& folder);

} // namespace Runner
