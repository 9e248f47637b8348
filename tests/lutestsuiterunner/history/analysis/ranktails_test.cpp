#include "testing/lutestsuiterunner/history/analysis/ranktails.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

using namespace Runner::History;

TEST(HistoryRankTails, Log2MatchesTheStandardLibrary)
{
    for (const double number : {1e-300, 0.1, 0.5, 0.7071, 1.0, 1.5, 2.0, 3.0, 1e10, 9.05e58})
    {
        EXPECT_NEAR(GetLog2(number), std::log2(number), 1e-12 * std::max(1.0, std::abs(std::log2(number)))) << number;
    }
}

TEST(HistoryRankTails, ProbabilityWithoutInversionsIsOneOutOfAllOrders)
{
    CRankTails tails;
    EXPECT_NEAR(tails.GetBits(2, 2, 0), std::log2(6.0), 1e-12);
    EXPECT_NEAR(tails.GetBits(92, 8, 0), std::log2(186087894300.0), 1e-9);
    EXPECT_NEAR(tails.GetBits(8, 92, 0), std::log2(186087894300.0), 1e-9);
}

/// Goes through all orders of two groups and counts the inversions of each.
TEST(HistoryRankTails, ProbabilitiesMatchAnEnumerationOfAllOrders)
{
    constexpr std::size_t c_First = 5;
    constexpr std::size_t c_Second = 4;
    std::vector<int> isSecond(c_First + c_Second, 0);
    std::fill(isSecond.begin() + c_First, isSecond.end(), 1);
    std::vector<double> counts(c_First * c_Second + 1, 0.0);
    double total = 0.0;
    do
    {
        std::size_t inversions = 0;
        std::size_t secondBefore = 0;
        for (const int second : isSecond)
        {
            inversions += second == 1 ? 0 : secondBefore;
            secondBefore += second == 1 ? 1 : 0;
        }
        ++counts[inversions];
        ++total;
    }
    while (std::next_permutation(isSecond.begin(), isSecond.end()));
    CRankTails tails;
    double sum = 0.0;
    for (std::size_t inversions = 0; inversions <= c_First * c_Second / 2; ++inversions)
    {
        sum += counts[inversions];
        EXPECT_NEAR(tails.GetBits(c_First, c_Second, inversions), -std::log2(sum / total), 1e-12)
            << inversions << " inversions";
    }
}

TEST(HistoryRankTails, InversionsOfHalfThePairsGiveOneBitAndMoreGiveZero)
{
    CRankTails tails;
    EXPECT_NEAR(tails.GetBits(100, 100, 5000), 1.0, 0.01);
    EXPECT_EQ(tails.GetBits(100, 100, 5001), 0.0);
}

TEST(HistoryRankTails, LimitIsTheLargestNumberOfInversionsWithTheEvidence)
{
    CRankTails tails;
    const std::int64_t limit = tails.GetLimit(40, 10, 14.0);
    ASSERT_GE(limit, 0);
    EXPECT_GE(tails.GetBits(40, 10, static_cast<std::size_t>(limit)), 14.0);
    EXPECT_LT(tails.GetBits(40, 10, static_cast<std::size_t>(limit) + 1), 14.0);
    EXPECT_EQ(tails.GetLimit(3, 3, 14.0), -1);
}
