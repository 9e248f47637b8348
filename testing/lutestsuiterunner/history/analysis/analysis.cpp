#include "testing/lutestsuiterunner/history/analysis/analysis.h"

#include <limits>
#include <map>
#include <utility>

#include "base/lbparallel.h"
#include "testing/lutestsuiterunner/history/analysis/randomnumbers.h"
#include "testing/lutestsuiterunner/history/analysis/tempo.h"

namespace Runner::History
{

namespace
{

/// Converts indices of values to numbers of runs. The case did not pass in the runs between two of its values, so a
/// change between these values may be in any of these runs.
void toRuns(std::vector<SStep>& steps, std::span<const std::uint16_t> runs)
{
    for (SStep& step : steps)
    {
        step.first = runs[step.first - 1] + 1U;
        step.index = runs[step.index];
        step.last = runs[step.last];
    }
}

using StepsOfCases = SStepAnalysis::StepsOfCases;

StepsOfCases findSteps(const SMeasure& measure, const CCalibration& calibration, const SStepRules& rules)
{
    const SCommonNoise noise = calibration.GetNoise(measure);
    std::vector<StepsOfCases> parts(measure.blocks.size());
    LbParallel::ForRanges(0, static_cast<std::int64_t>(parts.size()), [&](std::int64_t first, std::int64_t last) {
        CStepFinder finder(rules.smallestChange, noise);
        for (std::int64_t number = first; number < last; ++number)
        {
            const CSeriesBlock& block = measure.blocks[static_cast<std::size_t>(number)];
            for (std::size_t index = 0; index < block.GetCount(); ++index)
            {
                const SSeries series = block.Get(index);
                std::vector<SStep> steps = finder.FindSteps(series.values, series.seed, calibration.GetThresholds());
                if (!steps.empty())
                {
                    toRuns(steps, series.runs);
                    parts[static_cast<std::size_t>(number)].emplace_back(series.caseIndex, std::move(steps));
                }
            }
        }
    });
    StepsOfCases all;
    for (StepsOfCases& part : parts)
    {
        std::ranges::move(part, std::back_inserter(all));
    }
    return all;
}

std::optional<SCountChange> findCountChange(const CTable& table, std::size_t testCase)
{
    std::vector<std::uint64_t> counts;
    std::vector<std::size_t> runs;
    const std::span<const std::uint64_t> all = table.GetAllocations(testCase);
    const std::span<const EOutcome> outcomes = table.GetOutcomes(testCase);
    for (std::size_t run = 0; run < all.size(); ++run)
    {
        if (outcomes[run] == EOutcome::Passed && all[run] != c_UnknownCount)
        {
            counts.push_back(all[run]);
            runs.push_back(run);
        }
    }
    std::optional<SCountChange> change = FindCountChange(counts);
    if (change)
    {
        change->index = runs[change->index];
    }
    return change;
}

/// Finds the steps of the tempo, the common pace of all cases of a run. The tempo is a single series with an alarm rate
/// of its own; the series of the cases share one.
std::vector<SStep> findWholeSteps(std::span<const double> tempo, const SStepRules& rules)
{
    CStepFinder finder(rules.smallestChange, {});
    const double tests = static_cast<double>(std::max<std::size_t>(finder.GetTestCount(tempo.size()), 1));
    return finder.FindSteps(tempo, MixBits(0),
                            {GetLog2(tests / rules.alarmRate), std::numeric_limits<double>::infinity()});
}

void addSteps(const StepsOfCases& steps, std::vector<SStep> SCaseFindings::*member,
              std::map<std::uint32_t, SCaseFindings>& cases)
{
    for (const auto& [caseIndex, stepsOfCase] : steps)
    {
        cases[caseIndex].*member = stepsOfCase;
    }
}

std::map<std::uint32_t, SCaseFindings> findByCase(const CTable& table)
{
    std::map<std::uint32_t, SCaseFindings> cases;
    for (std::size_t testCase = 0; testCase < table.GetCaseCount(); ++testCase)
    {
        SCaseFindings findings;
        findings.outcomes = FindOutcomes(table, testCase);
        findings.allocations = findCountChange(table, testCase);
        if (!findings.IsEmpty())
        {
            cases.emplace(static_cast<std::uint32_t>(testCase), std::move(findings));
        }
    }
    return cases;
}

} // namespace

SStepAnalysis AnalyzeSteps(const CTable& table, const SStepRules& rules)
{
    SStepAnalysis analysis;
    analysis.tempo = GetTempo(table, rules.smallestChange);
    analysis.whole = findWholeSteps(analysis.tempo, rules);
    const std::vector<SMeasure> measures = {GetTimes(table, analysis.tempo, rules.smallestChange),
                                            GetMemory(table, rules.smallestChange)};
    const CCalibration calibration(measures, table.GetRunCount(), rules);
    analysis.times = findSteps(measures[0], calibration, rules);
    analysis.memory = findSteps(measures[1], calibration, rules);
    analysis.thresholds = calibration.GetThresholds();
    analysis.seriesCount = measures[0].count + measures[1].count;
    analysis.testCount = calibration.GetTestCount();
    analysis.shuffleCount = calibration.GetShuffleCount();
    analysis.check = calibration.Check();
    return analysis;
}

SAnalysis Analyze(std::wstring configuration, CTable table, const SStepRules& rules, SStepAnalysis steps)
{
    std::map<std::uint32_t, SCaseFindings> cases = findByCase(table);
    addSteps(steps.times, &SCaseFindings::times, cases);
    addSteps(steps.memory, &SCaseFindings::memory, cases);
    SAnalysis analysis{std::move(configuration), std::move(table), rules, std::move(steps), {}};
    for (auto& [caseIndex, findings] : cases)
    {
        findings.caseIndex = caseIndex;
        analysis.cases.push_back(std::move(findings));
    }
    return analysis;
}

std::wstring GetConfigurationName(const SAnalysis& analysis)
{
    return GetConfigurationName(analysis.configuration);
}

std::wstring GetConfigurationName(const std::wstring& configuration)
{
    return configuration.empty() ? std::wstring(L"Ohne Konfiguration") : configuration;
}

} // namespace Runner::History
