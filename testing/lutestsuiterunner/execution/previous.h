/// An earlier run, or an archive of runs: how long its cases took, and which failed.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>

#include "testing/lutestsuiterunner/model/plan.h"

namespace Runner
{

struct SPreviousCase
{
    std::uint64_t time = 0; ///< nanoseconds; 0 if unknown
    bool hasFailed = false; ///< or did not finish
};

/// Read once; the values do not change afterwards.
class CPrevious
{
public:
    /// An earlier run without cases.
    CPrevious() = default;

    /// Reads the folder of a run, an archive of runs, or an XML report. A case of an archive has the median of its
    /// newest times, and has failed if it failed in its newest run. On failure throws LbException with a German
    /// message, or that message as std::wstring.
    explicit CPrevious(const std::wstring& path);

    /// Finds a case by folder, class, case and repetition; in an XML report and in an archive, which have no folders,
    /// by class and case. In an archive, only the runs of the plan's build configuration count, if there are any.
    std::optional<SPreviousCase> Find(const SPlan& plan, std::uint32_t caseIndex) const;

private:
    using Cases = std::unordered_map<std::wstring, SPreviousCase>;

    void readRun(const std::wstring& folder);
    void readArchive(const std::wstring& directory);
    void readReport(const std::wstring& path);

    Cases m_cases;
    std::map<std::wstring, Cases> m_configurations; ///< of an archive
    bool m_hasFolders = true;
};

} // namespace Runner
