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
    std::uint64_t time = 0; ///< nanoseconds; 0 if nobody has measured it
    bool hasFailed = false; ///< or has not been run to its end
};

/// Read once; a plain value afterwards.
class CPrevious
{
public:
    /// Knows no case.
    CPrevious() = default;

    /// From the folder of a run, or from an XML report. Throws LbException with a German message, or such a message as
    /// std::wstring, if it cannot be read.
    explicit CPrevious(const std::wstring& path);

    /// By folder, class, case and repetition; from an XML report, which holds no folders, by class and case.
    std::optional<SPreviousCase> Find(const SPlan& plan, std::uint32_t caseIndex) const;

private:
    void readRun(const std::wstring& folder);
    void readReport(const std::wstring& path);

    std::unordered_map<std::wstring, SPreviousCase> m_cases;
    bool m_hasFolders = true;
};

} // namespace Runner
