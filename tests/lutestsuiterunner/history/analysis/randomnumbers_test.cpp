#include "testing/lutestsuiterunner/history/analysis/randomnumbers.h"

#include <gtest/gtest.h>

using namespace Runner::History;

TEST(HistoryRandomNumbers, SampleIsNotTakenAtRegularIntervals)
{
    constexpr std::uint64_t c_Step = 10;
    std::size_t chosen = 0;
    std::size_t chosenTenths = 0;
    for (std::uint64_t index = 0; index < 10000; ++index)
    {
        const bool isChosen = IsInSample(index, c_Step);
        chosen += isChosen ? 1 : 0;
        chosenTenths += isChosen && index % c_Step == 0 ? 1 : 0;
    }
    EXPECT_NEAR(static_cast<double>(chosen), 1000.0, 100.0);
    EXPECT_NEAR(static_cast<double>(chosenTenths), 100.0, 30.0);
}

TEST(HistoryRandomNumbers, SampleWithStepOneContainsEveryIndex)
{
    for (std::uint64_t index = 0; index < 100; ++index)
    {
        EXPECT_TRUE(IsInSample(index, 1));
    }
}
