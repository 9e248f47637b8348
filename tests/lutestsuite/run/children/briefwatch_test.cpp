#include "testing/lutestsuite/run/children/briefwatch.h"

#include <gtest/gtest.h>

namespace
{

using LuTestSuiteRun::CBriefWatch;

bool isDone()
{
    return true;
}

bool isNotDone()
{
    return false;
}

/// The number of waits without a watch before the next one with a watch.
std::uint32_t CountPause(CBriefWatch& watch)
{
    std::uint32_t pause = 0;
    while (!watch.Watch(isDone))
    {
        ++pause;
    }
    return pause;
}

TEST(BriefWatch, SkipsTheFirstWait)
{
    CBriefWatch watch;

    EXPECT_EQ(CountPause(watch), 1U);
    EXPECT_EQ(CountPause(watch), 0U);
}

TEST(BriefWatch, AsksUntilTheChange)
{
    CBriefWatch watch;
    CountPause(watch);
    int questions = 0;

    EXPECT_TRUE(watch.Watch([&questions] { return ++questions == 3; }));
    EXPECT_EQ(questions, 3);
}

TEST(BriefWatch, EndsWithoutAChange)
{
    CBriefWatch watch;
    CountPause(watch);

    EXPECT_FALSE(watch.Watch(isNotDone));
}

TEST(BriefWatch, DoesNotAskDuringAPause)
{
    CBriefWatch watch;
    int questions = 0;

    watch.Watch([&questions] { return ++questions > 0; });

    EXPECT_EQ(questions, 0);
}

TEST(BriefWatch, PausesLongerAfterEachLateChangeUpToALimit)
{
    CBriefWatch watch;
    CountPause(watch);
    for (std::uint32_t expected = 0; expected < CBriefWatch::sc_uiLongestPause; expected = 2 * expected + 1)
    {
        EXPECT_FALSE(watch.Watch(isNotDone));
        for (std::uint32_t wait = 0; wait < expected; ++wait)
        {
            EXPECT_FALSE(watch.Watch(isDone));
        }
    }
    EXPECT_FALSE(watch.Watch(isNotDone));

    EXPECT_EQ(CountPause(watch), CBriefWatch::sc_uiLongestPause);
}

TEST(BriefWatch, ForgetsLateChangesAfterAQuickOne)
{
    CBriefWatch watch;
    CountPause(watch);
    watch.Watch(isNotDone);
    watch.Watch(isNotDone);
    EXPECT_EQ(CountPause(watch), 1U);

    watch.Watch(isNotDone);

    EXPECT_EQ(CountPause(watch), 0U);
}

} // namespace
