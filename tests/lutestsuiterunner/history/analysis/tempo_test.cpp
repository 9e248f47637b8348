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

/// Makes `slowerOfTen` of each ten cases 10 % slower from run 40 on. Returns the tempo of these runs, relative to that
/// of the earlier runs.
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

TEST(HistoryTempo, ChangeOfAMinorityOfCasesDoesNotChangeTheTempo)
{
    EXPECT_NEAR(getLateTempo(0), 1.0, 0.004);
    EXPECT_NEAR(getLateTempo(1), 1.0, 0.004);
    EXPECT_NEAR(getLateTempo(3), 1.0, 0.004);
    EXPECT_NEAR(getLateTempo(4), 1.0, 0.004);
}

TEST(HistoryTempo, ChangeOfMostCasesChangesTheTempo)
{
    EXPECT_NEAR(getLateTempo(8), 1.1, 0.004);
    EXPECT_NEAR(getLateTempo(10), 1.1, 0.004);
}

TEST(HistoryTempo, TempoOfFewCasesIsOne)
{
    SyntheticRuns::SSettings settings;
    settings.cases = 7;
    settings.runs = 10;
    EXPECT_EQ(GetTempo(MakeArchive(settings).GetTable(), c_SmallestChange), std::vector<double>(10, 1.0));
}
