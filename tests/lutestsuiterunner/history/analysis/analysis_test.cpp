// The guarantees of the search for changes, checked with few enough cases for a test. benchmarks/history_simulation.cpp
// measures the same at full size and with many more kinds of noise.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "testing/lutestsuiterunner/history/analysis/analysis.h"
#include "testing/lutestsuiterunner/history/analysis/findings.h"
#include "tests/support/syntheticruns.h"

using namespace Runner::History;
using SyntheticRuns::ENoise;
using SyntheticRuns::SSettings;

namespace
{

SAnalysis analyze(const SyntheticRuns::SArchive& archive, const SStepRules& rules = {})
{
    return Analyze(L"Release x64", archive.GetTable(), rules, AnalyzeSteps(archive.GetTable(), rules));
}

std::size_t countStepped(const SAnalysis& analysis)
{
    std::size_t count = 0;
    for (const SCaseFindings& findings : analysis.cases)
    {
        count += findings.times.empty() ? 0 : 1;
    }
    return count;
}

std::string toName(const testing::TestParamInfo<ENoise>& noise)
{
    switch (noise.param)
    {
    case ENoise::Normal:
        return "Normal";
    case ENoise::LogNormal:
        return "LogNormal";
    case ENoise::HeavyTailed:
        return "HeavyTailed";
    case ENoise::Spiky:
        return "Spiky";
    case ENoise::TwoSpeeds:
        return "TwoSpeeds";
    case ENoise::Sluggish:
        return "Sluggish";
    default:
        return "Mixed";
    }
}

} // namespace

class HistoryWithoutChange : public testing::TestWithParam<ENoise>
{
};

TEST_P(HistoryWithoutChange, CausesAtMostOneFalseAlarm)
{
    SSettings settings;
    settings.cases = 500;
    settings.noise = GetParam();
    settings.seed = 41;
    for (const std::size_t runs : {20, 30, 100})
    {
        settings.runs = runs;
        EXPECT_LE(countStepped(analyze(MakeArchive(settings))), 1U) << runs << " runs";
    }
}

INSTANTIATE_TEST_SUITE_P(, HistoryWithoutChange,
                         testing::Values(ENoise::Normal, ENoise::LogNormal, ENoise::HeavyTailed, ENoise::Spiky,
                                         ENoise::TwoSpeeds, ENoise::Sluggish, ENoise::Mixed),
                         toName);

TEST(HistoryStatistics, TenPercentMoreTimeIsFoundWithinEightRuns)
{
    constexpr std::size_t c_Changed = 100;
    constexpr std::size_t c_Change = 50;
    SSettings settings;
    settings.runs = c_Change + 8;
    settings.cases = 2000;
    settings.seed = 42;
    settings.factor = [](std::size_t testCase, std::size_t run) {
        return testCase < c_Changed && run >= c_Change ? 1.1 : 1.0;
    };
    const SyntheticRuns::SArchive archive = MakeArchive(settings);
    const SAnalysis analysis = analyze(archive);
    std::size_t found = 0;
    std::size_t inInterval = 0;
    std::size_t alarms = 0;
    for (const SCaseFindings& findings : analysis.cases)
    {
        if (findings.caseIndex >= c_Changed)
        {
            ++alarms;
            continue;
        }
        ++found;
        const SStep& step = findings.times.back();
        inInterval += step.first <= c_Change && c_Change <= step.last ? 1 : 0;
    }
    EXPECT_GE(found, 95U);
    EXPECT_GE(inInterval * 100, found * 98);
    EXPECT_LE(alarms, 1U);
}

TEST(HistoryStatistics, TenPercentMoreTimeIsFoundLongAfterASlowPeriod)
{
    constexpr std::size_t c_Changed = 40;
    constexpr std::size_t c_Change = 92;
    SSettings settings;
    settings.runs = 100;
    settings.cases = 2000;
    settings.seed = 47;
    settings.factor = [](std::size_t testCase, std::size_t run) {
        if (testCase >= c_Changed)
        {
            return 1.0;
        }
        return run >= c_Change ? 1.1 : run >= 60 && run < 70 ? 1.3 : 1.0;
    };
    const SAnalysis analysis = analyze(MakeArchive(settings));
    std::size_t found = 0;
    std::size_t alarms = 0;
    for (const SCaseFindings& findings : analysis.cases)
    {
        if (findings.caseIndex >= c_Changed)
        {
            ++alarms;
            continue;
        }
        const SStep& step = findings.times.back();
        found += step.IsUp() && step.first <= c_Change && c_Change <= step.last ? 1 : 0;
    }
    EXPECT_GE(found, 36U);
    EXPECT_LE(alarms, 1U);
}

TEST(HistoryStatistics, TwoChangesLieWithinTheIntervalsFoundForThem)
{
    constexpr std::size_t c_Changed = 100;
    SSettings settings;
    settings.runs = 100;
    settings.cases = 1000;
    settings.seed = 48;
    settings.factor = [](std::size_t testCase, std::size_t run) {
        return testCase >= c_Changed || run < 40 ? 1.0 : run < 70 ? 1.1 : 1.21;
    };
    const SAnalysis analysis = analyze(MakeArchive(settings));
    std::size_t intervals = 0;
    std::size_t covered = 0;
    std::size_t width = 0;
    for (const SCaseFindings& findings : analysis.cases)
    {
        for (std::size_t number = 0; findings.times.size() == 2 && number < 2; ++number)
        {
            const std::size_t change = number == 0 ? 40 : 70;
            const SStep& step = findings.times[number];
            ++intervals;
            covered += step.first <= change && change <= step.last ? 1 : 0;
            width += step.last - step.first + 1;
        }
    }
    EXPECT_GE(intervals, 180U);
    EXPECT_GE(covered * 100, intervals * 98);
    EXPECT_LE(width, intervals * 12);
}

TEST(HistoryStatistics, FlakeRateOfFivePercentIsFoundWithinSixtyRuns)
{
    SSettings settings;
    settings.runs = 60;
    settings.cases = 1000;
    SyntheticRuns::CRandomDeviates deviates(43);
    settings.fails = [&deviates](std::size_t, std::size_t) { return deviates.Uniform() < 0.05; };
    const SyntheticRuns::SArchive archive = MakeArchive(settings);
    const SAnalysis analysis = analyze(archive);
    const auto flaky = std::ranges::find(GetFindingKinds(), std::string_view("flaky"), &SFindingKind::name);
    EXPECT_GE(GetFindings(analysis, *flaky, 0).size(), 900U);
}

TEST(HistoryStatistics, SlowerMachineChangesTheTempoButNoSingleCase)
{
    SSettings settings;
    settings.cases = 500;
    settings.seed = 44;
    // The machine is slower from run 60 on.
    settings.factor = [](std::size_t, std::size_t run) { return run >= 60 ? 1.5 : 1.0; };
    const SyntheticRuns::SArchive archive = MakeArchive(settings);
    const SAnalysis analysis = analyze(archive);
    EXPECT_EQ(countStepped(analysis), 0U);
    ASSERT_EQ(analysis.steps.whole.size(), 1U);
    EXPECT_NEAR(analysis.steps.whole[0].after / analysis.steps.whole[0].before, 1.5, 0.1);
}

TEST(HistoryStatistics, CasesThatOnlyWaitHaveNoStepOnASlowerMachine)
{
    constexpr std::size_t c_Waiting = 20;
    SSettings settings;
    settings.cases = 500;
    settings.seed = 45;
    // One case of 25 waits for a fixed time. The others have been slower since run 60.
    settings.factor = [](std::size_t testCase, std::size_t run) {
        return testCase >= c_Waiting && run >= 60 ? 1.5 : 1.0;
    };
    settings.tempoDeviation = 0.0;
    EXPECT_EQ(countStepped(analyze(MakeArchive(settings))), 0U);
}

TEST(HistoryStatistics, ShuffledRunsCauseNoMoreAlarmsThanTheRateAllows)
{
    SSettings settings;
    settings.cases = 1000;
    settings.runs = 60;
    settings.seed = 46;
    // Half of the cases have changed, but random orders of the runs must not show that change.
    settings.factor = [](std::size_t testCase, std::size_t run) { return testCase % 2 == 0 && run >= 30 ? 1.5 : 1.0; };
    SStepRules rules;
    rules.checks = 40;
    const SyntheticRuns::SArchive archive = MakeArchive(settings);
    const SAnalysis analysis = analyze(archive, rules);
    EXPECT_EQ(analysis.steps.check.archives, 40U);
    // Two alarms are expected; more than eight are practically impossible.
    EXPECT_LE(analysis.steps.check.archivesWithAlarm, 8U);
}

TEST(HistoryStatistics, SeriesWithAStepCauseNoAlarmInRandomOrders)
{
    SSettings settings;
    settings.cases = 4;
    settings.runs = 60;
    settings.tempoDeviation = 0.0;
    settings.factor = [](std::size_t testCase, std::size_t run) { return run >= 15 + 10 * testCase ? 2.0 : 1.0; };
    SStepRules rules;
    rules.alarmRate = 0.5;
    rules.checks = 100;
    const SyntheticRuns::SArchive archive = MakeArchive(settings);
    const SAnalysis analysis = analyze(archive, rules);

    EXPECT_EQ(countStepped(analysis), 4U);
    EXPECT_EQ(analysis.steps.check.alarms, 0U);
}

TEST(HistoryStatistics, SmallerAlarmRateRaisesTheThresholds)
{
    SSettings settings;
    settings.cases = 300;
    settings.runs = 40;
    const SyntheticRuns::SArchive archive = MakeArchive(settings);
    SStepRules strict;
    strict.alarmRate = 0.01;
    const SAnalysis usual = analyze(archive);
    const SAnalysis careful = analyze(archive, strict);
    EXPECT_GT(careful.steps.thresholds.bits, usual.steps.thresholds.bits);
    EXPECT_GE(careful.steps.thresholds.deviations, usual.steps.thresholds.deviations);
    EXPECT_EQ(usual.steps.shuffleCount, 79U);
    EXPECT_EQ(careful.steps.shuffleCount, 399U);
}

TEST(HistoryStatistics, SameArchiveHasTheSameResult)
{
    SSettings settings;
    settings.cases = 300;
    settings.runs = 60;
    settings.factor = [](std::size_t testCase, std::size_t run) { return testCase < 9 && run >= 30 ? 1.3 : 1.0; };
    const SyntheticRuns::SArchive archive = MakeArchive(settings);
    const SAnalysis first = analyze(archive);
    const SAnalysis second = analyze(archive);
    EXPECT_EQ(first.steps.thresholds.deviations, second.steps.thresholds.deviations);
    ASSERT_EQ(first.cases.size(), second.cases.size());
    ASSERT_FALSE(first.cases.empty());
    EXPECT_EQ(first.cases[0].times.back().bits, second.cases[0].times.back().bits);
}
