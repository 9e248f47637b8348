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
    std::vector<std::uint32_t> cases; ///< case runs of the plan that the pattern matches; ascending
    std::uint32_t passedRuns = 0;     ///< in a row, see CountPassedRuns
    std::uint32_t earlierRuns = 0;    ///< passedRuns before this run
};

using Quarantine = std::vector<SQuarantineEntry>;

/// After this number of passed runs in a row, the user is told that the entry can be removed.
inline constexpr std::uint32_t c_RunsUntilRelease = 20;

/// Reads the file: UTF-8, one pattern per line, with the syntax of the option -i. Blanks around a pattern, empty lines
/// and lines that begin with "#" are ignored. Matches the patterns with the plan's cases and sets
/// SPlannedCase::isQuarantined. Throws a German message as std::wstring for a wrong pattern, LbException if the file
/// cannot be read.
Quarantine ReadQuarantine(const std::wstring& path, const LuTestSuiteSetup& setup, SPlan& plan);

/// The patterns of the entries that match no case.
std::vector<std::wstring> FindIdleEntries(const Quarantine& quarantine);

/// Sets the counts of passed runs. An entry continues the count in the earlier run's folder: plus one if all its cases
/// that ran passed at the first attempt, 0 if one did not, unchanged if none ran. The folder may be that of this run: a
/// resumed run counts once.
void CountPassedRuns(Quarantine& quarantine, const CRunState& state, const std::wstring& earlierFolder);

/// Writes the counts after the run `runId` into its folder. Throws LbException with a German message.
void WritePassedRuns(const Quarantine& quarantine, const std::string& runId, const std::wstring& folder);

} // namespace Runner
