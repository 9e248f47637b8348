#include "base/lbevent.h"

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

TEST(LbEvent, IsNotSetAtFirst)
{
    LbEvent event;
    EXPECT_FALSE(event.Wait(0));
}

TEST(LbEvent, SetReleasesALaterWait)
{
    LbEvent event;
    event.Set();
    EXPECT_TRUE(event.Wait());
}

TEST(LbEvent, WaitResetsTheEvent)
{
    LbEvent event;
    event.Set();
    ASSERT_TRUE(event.Wait(0));
    EXPECT_FALSE(event.Wait(0));
}

TEST(LbEvent, ReleasesOneWaitIfSetTwice)
{
    LbEvent event;
    event.Set();
    event.Set();
    ASSERT_TRUE(event.Wait(0));
    EXPECT_FALSE(event.Wait(0));
}

TEST(LbEvent, IsNotSetAfterReset)
{
    LbEvent event;
    event.Set();
    event.Reset();
    EXPECT_FALSE(event.Wait(0));
}

TEST(LbEvent, WaitTimesOut)
{
    LbEvent event;
    EXPECT_FALSE(event.Wait(5));
}

TEST(LbEvent, SetReleasesAWaitingThread)
{
    LbEvent question;
    LbEvent answer;
    std::jthread other([&question, &answer] {
        question.Wait();
        answer.Set();
    });
    question.Set();
    EXPECT_TRUE(answer.Wait());
}

TEST(LbEvent, EachSetReleasesOneOfManyThreads)
{
    constexpr int threadCount = 4;
    LbEvent event;
    LbEvent released;
    std::atomic<int> releasedCount = 0;
    std::vector<std::jthread> threads;
    for (int i = 0; i < threadCount; ++i)
    {
        threads.emplace_back([&event, &released, &releasedCount] {
            event.Wait();
            ++releasedCount;
            released.Set();
        });
    }
    for (int i = 1; i <= threadCount; ++i)
    {
        event.Set();
        released.Wait();
        EXPECT_EQ(releasedCount, i);
    }
}

TEST(LbEvent, CanBeDestroyedByAReleasedWaiter)
{
    for (int i = 0; i < 200; ++i)
    {
        auto event = std::make_unique<LbEvent>();
        std::jthread setter([&event = *event] { event.Set(); });
        ASSERT_TRUE(event->Wait());
        event.reset();
    }
}
