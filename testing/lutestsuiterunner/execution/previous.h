/// An earlier run: how long its cases took, and which failed.
#pragma once

#include <cstdint>
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

    /// Reads the folder of a run, or an XML report. On failure throws LbException with a German message, or that
    /// message as std::wstring.
    explicit CPrevious(const std::wstring& path);

    /// Finds a case by folder, class, case and repetition; in an XML report, which has no folders, by class and case.
    std::optional<SPreviousCase> Find(const SPlan& plan, std::uint32_t caseIndex) const;

private:
    void readRun(const std::wstring& folder);
    void readReport(const std::wstring& path);

    std::unordered_map<std::wstring, SPreviousCase> m_cases;
    bool m_hasFolders = true;
};

} // namespace Runner
