/// Conditions that an archive must meet, for build servers: "new-failures=0", "slower<5".
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/history/analysis/findings.h"

namespace Runner::History
{

struct SGate
{
    enum class EComparison
    {
        Equal,
        Less,
        LessOrEqual
    };

    std::wstring rule; ///< as written
    std::string kind;  ///< a name of GetFindingKinds, or "whole-slower"
    EComparison comparison = EComparison::Equal;
    std::size_t limit = 0;

    bool Holds(std::size_t count) const;
};

/// Throws a German message as std::wstring if the rule cannot be read, or its kind is unknown.
SGate ReadGate(const std::wstring& rule);

struct SGateResult
{
    SGate gate;
    std::size_t count = 0; ///< over all configurations
    bool holds = true;
    std::vector<std::wstring> cases; ///< that were counted, one line each, with configuration where there are several
};

SGateResult CheckGate(const SGate& gate, const std::vector<SAnalysis>& analyses, std::size_t newest);

struct SGateResults
{
    std::vector<SGateResult> results;
    /// Names of runs that cannot be read and may be the newest. If there is such a run, no gate holds, because the
    /// gates would judge the run before it.
    std::vector<std::wstring> unreadable;
};

SGateResults CheckGates(const std::vector<SGate>& gates, const std::vector<SAnalysis>& analyses, std::size_t newest,
                        std::vector<std::wstring> unreadable);

} // namespace Runner::History
