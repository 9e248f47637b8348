#include "testing/lutestsuiterunner/history/analysis/steps.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/syntheticruns.h"

using namespace Runner::History;

namespace
{

constexpr SThresholds c_Thresholds{24.0, 6.0};
constexpr SThresholds c_LowThresholds{12.0, 6.0};
constexpr SCommonNoise c_Noise{0.03, 0.0, 0.0};

/// One value for each run: its level, with normally distributed noise relative to the level.
template<typename GetLevel>
std::vector<double> makeSeries(std::size_t length, std::uint64_t seed, const GetLevel& getLevel, double noise = 0.03)
{
    SyntheticRuns::CRandomDeviates deviates(seed);
    std::vector<double> values;
    for (std::size_t run = 0; run < length; ++run)
    {
        values.push_back(getLevel(run) * (1.0 + noise * deviates.Normal()));
    }
    return values;
}

std::vector<SStep> findSteps(const std::vector<double>& values, double smallestChange = 0.03,
                             const SThresholds& thresholds = c_Thresholds)
{
    return CStepFinder(smallestChange, c_Noise).FindSteps(values, 7, thresholds);
}

} // namespace

TEST(HistorySteps, NoStepIsFoundInASteadySeries)
{
    EXPECT_TRUE(findSteps(makeSeries(100, 1, [](std::size_t) { return 1.0; })).empty());
}

TEST(HistorySteps, NoStepIsFoundInATooShortSeries)
{
    EXPECT_TRUE(findSteps({}).empty());
    EXPECT_TRUE(findSteps({1.0}).empty());
    EXPECT_TRUE(findSteps({1.0, 1.0, 1.0, 2.0, 2.0, 2.0}).empty());
}

TEST(HistorySteps, StepUpIsFoundWithItsLevelsAndInterval)
{
    const std::vector<SStep> steps = findSteps(makeSeries(80, 2, [](std::size_t run) { return run < 60 ? 1.0 : 1.2; }));
    ASSERT_EQ(steps.size(), 1U);
    EXPECT_TRUE(steps[0].IsUp());
    EXPECT_LE(steps[0].first, 60U);
    EXPECT_GE(steps[0].last, 60U);
    EXPECT_NEAR(steps[0].before, 1.0, 0.02);
    EXPECT_NEAR(steps[0].after, 1.2, 0.02);
}

TEST(HistorySteps, LevelThatRisesTwiceHasTwoSteps)
{
    const std::vector<SStep> steps = findSteps(makeSeries(90, 3, [](std::size_t run) {
        return run < 30 ? 1.0 : run < 60 ? 1.3 : 1.7;
    }));
    ASSERT_EQ(steps.size(), 2U);
    EXPECT_TRUE(steps[0].IsUp());
    EXPECT_TRUE(steps[1].IsUp());
    EXPECT_NEAR(steps[0].after, 1.3, 0.02);
    EXPECT_NEAR(steps[1].after, 1.7, 0.02);
}

TEST(HistorySteps, LevelThatRisesAndReturnsHasTwoSteps)
{
    const std::vector<SStep> steps =
        findSteps(makeSeries(90, 3, [](std::size_t run) { return run >= 30 && run < 60 ? 1.3 : 1.0; }));
    ASSERT_EQ(steps.size(), 2U);
    EXPECT_EQ(steps[0].index, 30U);
    EXPECT_TRUE(steps[0].IsUp());
    EXPECT_EQ(steps[1].index, 60U);
    EXPECT_FALSE(steps[1].IsUp());
}

TEST(HistorySteps, SlowPeriodDoesNotHideALaterStep)
{
    const std::vector<SStep> steps = findSteps(makeSeries(100, 3, [](std::size_t run) {
        return run >= 92 ? 1.15 : run >= 60 && run < 70 ? 1.3 : 1.0;
    }));
    ASSERT_FALSE(steps.empty());
    EXPECT_TRUE(steps.back().IsUp());
    EXPECT_LE(steps.back().first, 92U);
    EXPECT_GE(steps.back().last, 92U);
    EXPECT_NEAR(steps.back().before, 1.0, 0.03);
}

TEST(HistorySteps, IntervalOfAStepEndsBeforeTheNextStep)
{
    for (const double second : {1.25, 3.0})
    {
        SCOPED_TRACE("level from run 60 on: " + std::to_string(second));
        const std::vector<SStep> steps = findSteps(makeSeries(90, 8, [second](std::size_t run) {
            return run < 30 ? 1.0 : run < 60 ? 1.1 : second;
        }));
        ASSERT_EQ(steps.size(), 2U);
        EXPECT_LT(steps[0].first, 30U);
        EXPECT_GE(steps[0].last, 30U);
        EXPECT_LE(steps[0].last, 40U);
        EXPECT_LE(steps[1].first, 60U);
        EXPECT_GE(steps[1].last, 60U);
        EXPECT_GE(steps[1].first, 50U);
    }
}

TEST(HistorySteps, StepBelowTheSmallestChangeIsNotReported)
{
    const std::vector<double> values = makeSeries(100, 4, [](std::size_t run) { return run < 50 ? 1.0 : 1.1; });
    EXPECT_EQ(findSteps(values).size(), 1U);
    EXPECT_TRUE(findSteps(values, 0.2).empty());
}

/// The search first divides runs 0 to 119 at run 80, because the low runs 0 to 29 lower the level before run 80.
TEST(HistorySteps, StepThatIsTooSmallBetweenItsNeighboursIsDropped)
{
    const auto getLevel = [](std::size_t run) { return run < 30 || run >= 120 ? 1.0 : run < 80 ? 1.2 : 1.22; };
    const std::vector<double> values = makeSeries(126, 1, getLevel, 0.003);
    const std::vector<SStep> steps = findSteps(values, 0.03, c_LowThresholds);
    ASSERT_EQ(steps.size(), 2U);
    EXPECT_EQ(steps[0].index, 30U);
    EXPECT_LE(steps[0].last, 32U);
    EXPECT_NEAR(steps[0].before, 1.0, 0.005);
    EXPECT_EQ(steps[1].index, 120U);
    EXPECT_NEAR(steps[1].after, 1.0, 0.005);
    // The runs on both sides of the dropped step have one common level.
    EXPECT_GT(steps[0].after, 1.2);
    EXPECT_LT(steps[0].after, 1.22);
    EXPECT_EQ(steps[1].before, steps[0].after);

    // The dropped step is reported if smaller changes are reported.
    EXPECT_EQ(findSteps(values, 0.01, c_LowThresholds).size(), 3U);
}

TEST(HistorySteps, DroppedStepEnlargesItsNeighbourInTheSameDirection)
{
    const auto getLevel = [](std::size_t run) { return run >= 80 ? 1.05 : run >= 70 ? 1.14 : run >= 50 ? 1.1 : 1.07; };
    const std::vector<double> values = makeSeries(120, 3, getLevel, 0.003);
    const std::vector<SStep> steps = findSteps(values, 0.03, c_LowThresholds);
    ASSERT_EQ(steps.size(), 2U);
    EXPECT_EQ(steps[0].index, 70U);
    EXPECT_NEAR(steps[0].before, 1.07, 0.005);
    EXPECT_NEAR(steps[0].after, 1.14, 0.005);
    EXPECT_EQ(steps[1].index, 80U);
}

TEST(HistorySteps, StepBetweenConstantValuesIsFound)
{
    std::vector<double> values(40, 1000.0);
    std::fill(values.begin() + 32, values.end(), 1100.0);
    const std::vector<SStep> steps = findSteps(values);
    ASSERT_EQ(steps.size(), 1U);
    EXPECT_EQ(steps[0].index, 32U);
}

TEST(HistorySteps, SingleOutliersAreNotSteps)
{
    std::vector<double> values = makeSeries(60, 5, [](std::size_t) { return 1.0; });
    values[20] = 50.0;
    values[58] = 80.0;
    values[59] = 0.01;
    EXPECT_TRUE(findSteps(values).empty());
}

TEST(HistorySteps, ScaleOfTheValuesDoesNotMatter)
{
    const std::vector<double> values = makeSeries(70, 6, [](std::size_t run) { return run < 60 ? 1.0 : 1.15; });
    std::vector<double> scaled(values);
    for (double& value : scaled)
    {
        value *= 1024.0;
    }
    const std::vector<SStep> steps = findSteps(values);
    const std::vector<SStep> scaledSteps = findSteps(scaled);
    ASSERT_EQ(steps.size(), 1U);
    ASSERT_EQ(scaledSteps.size(), 1U);
    EXPECT_EQ(steps[0].index, scaledSteps[0].index);
    EXPECT_EQ(steps[0].bits, scaledSteps[0].bits);
}

TEST(HistorySteps, RunsThatResembleTheirNeighboursAreWeakerEvidence)
{
    std::vector<double> alternating;
    std::vector<double> sluggish;
    for (std::size_t run = 0; run < 60; ++run)
    {
        const double level = run < 30 ? 1.0 : 1.1;
        alternating.push_back(level + (run % 2 == 0 ? 0.01 : -0.01));
        sluggish.push_back(level + (run / 5 % 2 == 0 ? 0.01 : -0.01));
    }
    const SStepSize plain = MeasureStep(alternating, 30, {});
    const SStepSize inflated = MeasureStep(sluggish, 30, {});
    EXPECT_EQ(plain.inflation, 1.0);
    EXPECT_GT(inflated.inflation, 2.0);
    EXPECT_LT(inflated.deviations, plain.deviations);
}
