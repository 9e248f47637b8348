/// The analysis of an archive's cases.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "testing/lutestsuiterunner/history/analysis/allocations.h"
#include "testing/lutestsuiterunner/history/analysis/calibration.h"
#include "testing/lutestsuiterunner/history/analysis/outcomes.h"
#include "testing/lutestsuiterunner/history/analysis/steps.h"
#include "testing/lutestsuiterunner/history/analysis/table.h"

namespace Runner::History
{

/// A case with findings. All indices in the findings are those of runs.
struct SCaseFindings
{
    std::uint32_t caseIndex = 0;
    SOutcomeFindings outcomes;
    std::vector<SStep> times; ///< levels in seconds at the usual tempo
    std::vector<SStep> memory;
    std::optional<SCountChange> allocations;

    bool IsEmpty() const { return outcomes.IsEmpty() && times.empty() && memory.empty() && !allocations; }
};

/// The steps in the measurements of one build configuration, and how they were found.
struct SStepAnalysis
{
    using StepsOfCases = std::vector<std::pair<std::uint32_t, std::vector<SStep>>>; ///< by index of the case

    std::vector<double> tempo; ///< of each run
    std::vector<SStep> whole;  ///< steps of the tempo
    StepsOfCases times;
    StepsOfCases memory;
    SThresholds thresholds;
    std::uint64_t seriesCount = 0; ///< of the series that were searched
    std::uint64_t testCount = 0;
    std::uint64_t shuffleCount = 0; ///< of the shuffled orders that determined the threshold
    SShuffleCheck check;
};

SStepAnalysis AnalyzeSteps(const CTable& table, const SStepRules& rules);

/// The analysis of one build configuration.
struct SAnalysis
{
    std::wstring configuration;
    CTable table;
    SStepRules rules;
    SStepAnalysis steps;
    std::vector<SCaseFindings> cases; ///< in the order of the table
};

/// The name of the build configuration for readers; a German text if the reports contain no configuration.
std::wstring GetConfigurationName(const std::wstring& configuration);
std::wstring GetConfigurationName(const SAnalysis& analysis);

/// `steps` are the steps of this table, found with these rules.
SAnalysis Analyze(std::wstring configuration, CTable table, const SStepRules& rules, SStepAnalysis steps);

} // namespace Runner::History
