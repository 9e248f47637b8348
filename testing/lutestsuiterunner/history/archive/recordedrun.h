/// The data of a run that the history uses, from any kind of file.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "testing/lutestsuite/lutestsuiterun.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace Runner::History
{

using ECaseRunResult = LuTestSuiteRun::ECaseRunResult;

/// The value of a count that the file does not contain.
inline constexpr std::uint64_t c_UnknownCount = std::numeric_limits<std::uint64_t>::max();

/// The measurements of a case in a run.
struct SMeasured
{
    ECaseRunResult result = ECaseRunResult::Ok;
    bool hasBoth = false; ///< it failed, and passed at another attempt of the same run
    float seconds = 0.0F;
    std::uint64_t memory = 0; ///< highest heap use, bytes; 0 if heap use was not tracked
    std::uint64_t allocations = c_UnknownCount;

    bool HasPassed() const { return result == ECaseRunResult::Ok; }
    /// A canceled case has no outcome.
    bool HasVerdict() const { return result != ECaseRunResult::Canceled; }

    bool operator==(const SMeasured&) const = default;
};

struct SRecordedCase
{
    std::wstring className;
    std::wstring caseName;
    SMeasured measured;
    std::wstring message; ///< the first error line of a case that failed
};

/// Identifies a run.
struct SRunLabel
{
    std::wstring name;          ///< of its file or folder, below the archive
    std::wstring configuration; ///< of the build
    std::wstring build;         ///< identifies the build; empty when unknown
    std::wstring machine;
    std::wstring begin; ///< local time, "Y-m-d H:i:s"

    bool operator==(const SRunLabel&) const = default;
};

struct SRecordedRun
{
    SRunLabel label;
    std::vector<SRecordedCase> cases; ///< in the order of the run; a name may occur several times
};

/// The name of the revision that was built; empty if it is unknown, or if the working copy had local changes or
/// contained several revisions.
std::wstring GetBuildName(const LuTestSuiteUtils::SSvnInfo* svn, const LuTestSuiteUtils::SPscmInfo* pscm);

/// Reads an XML report. False, after a line of output, if it cannot be read.
bool ReadReport(const std::wstring& path, SRecordedRun& run);

/// Reads plan and journals of a run's folder, also of a distributed run. If they cannot be read, prints a line and
/// reads the folder's XML report instead. False, after a line of output, if there is no such report either.
bool ReadJournals(const std::wstring& path, SRecordedRun& run);

} // namespace Runner::History
