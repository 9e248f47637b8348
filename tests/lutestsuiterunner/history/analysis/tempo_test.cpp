#include "testing/lutestsuiterunner/history/analysis/tempo.h"

#include <numeric>

#include <gtest/gtest.h>

#include "tests/support/syntheticruns.h"

using namespace Runner::History;

namespace
{

constexpr std::size_t c_Runs = 60;
constexpr std::size_t c_Change = 40;
constexpr double c_SmallestChange = 0.03;

/// The tempo from run 40 on, relative to the runs before, if this many of ten cases take 10 % longer from run 40 on.
double getLateTempo(std::size_t slowerOfTen)
{
    SyntheticRuns::SSettings settings;
    settings.cases = 400;
    settings.runs = c_Runs;
    settings.tempoDeviation = 0.0;
    settings.factor = [slowerOfTen](std::size_t testCase, std::size_t run) {
        return testCase % 10 < slowerOfTen && run >= c_Change ? 1.1 : 1.0;
    };
    const std::vector<double> tempo = GetTempo(MakeArchive(settings).GetTable(), c_SmallestChange);
    const auto change = tempo.begin() + c_Change;
    const double before = std::accumulate(tempo.begin(), change, 0.0) / c_Change;
    const double after = std::accumulate(change, tempo.end(), 0.0) / (c_Runs - c_Change);
    return after / before;
}

} // namespace

TEST(HistoryTempo, CasesThatChangedByThemselvesAreNoPartOfIt)
{
    EXPECT_NEAR(getLateTempo(0), 1.0, 0.004);
    EXPECT_NEAR(getLateTempo(1), 1.0, 0.004);
    EXPECT_NEAR(getLateTempo(3), 1.0, 0.004);
    EXPECT_NEAR(getLateTempo(4), 1.0, 0.004);
}

TEST(HistoryTempo, ChangeOfMostCasesIsAChangeOfTheWhole)
{
    EXPECT_NEAR(getLateTempo(8), 1.1, 0.004);
    EXPECT_NEAR(getLateTempo(10), 1.1, 0.004);
}

TEST(HistoryTempo, FewCasesHaveNoTempo)
{
    SyntheticRuns::SSettings settings;
    settings.cases = 7;
    settings.runs = 10;
    EXPECT_EQ(GetTempo(MakeArchive(settings).GetTable(), c_SmallestChange), std::vector<double>(10, 1.0));
}
