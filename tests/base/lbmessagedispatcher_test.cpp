#include "base/lbmessagedispatcher.h"

#include <atomic>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbdiagnostics.h"
#include "base/lbevent.h"

namespace
{

/// Each test starts and ends without a dispatcher.
class LbMessageDispatcherTest : public testing::Test
{
protected:
    void SetUp() override { LbMessageDispatcher::Shutdown(); }
    void TearDown() override { LbMessageDispatcher::Shutdown(); }

    static LbMessageDispatcher& start()
    {
        EXPECT_TRUE(LbMessageDispatcher::GetInstance().Start());
        return LbMessageDispatcher::GetInstance();
    }
};

/// Returns the traces that a throwing message causes.
std::wstring getTraceOf(const std::function<void()>& message)
{
    std::mutex mutex;
    std::wstring text;
    const auto former = LbDiagnostics::SetListener([&mutex, &text](const std::wstring& line) {
        const std::lock_guard lock(mutex);
        text += line;
    });
    LbMessageDispatcher::GetInstance().Post(message);
    LbMessageDispatcher::GetInstance().Flush();
    LbDiagnostics::SetListener(former);
    const std::lock_guard lock(mutex);
    return text;
}

} // namespace

TEST_F(LbMessageDispatcherTest, DoesNotStartItsThreadOnFirstUse)
{
    EXPECT_FALSE(LbMessageDispatcher::GetInstance().IsRunning());
    EXPECT_TRUE(LbMessageDispatcher::Exists());
}

TEST_F(LbMessageDispatcherTest, RunsAfterStart)
{
    EXPECT_TRUE(start().IsRunning());
}

TEST_F(LbMessageDispatcherTest, KeepsOneThreadIfStartedTwice)
{
    std::vector<std::thread::id> threads;
    LbMessageDispatcher& dispatcher = start();
    dispatcher.Post([&threads] { threads.push_back(std::this_thread::get_id()); });
    EXPECT_TRUE(dispatcher.Start());
    dispatcher.Post([&threads] { threads.push_back(std::this_thread::get_id()); });
    dispatcher.Flush();
    ASSERT_EQ(threads.size(), 2U);
    EXPECT_EQ(threads[0], threads[1]);
    EXPECT_NE(threads[0], std::this_thread::get_id());
}

TEST_F(LbMessageDispatcherTest, DropsMessagesWhileItIsNotRunning)
{
    bool isHandled = false;
    EXPECT_FALSE(LbMessageDispatcher::GetInstance().Post([&isHandled] { isHandled = true; }));
    start().Flush();
    EXPECT_FALSE(isHandled);
}

TEST_F(LbMessageDispatcherTest, HandlesMessagesInPostingOrder)
{
    LbMessageDispatcher& dispatcher = start();
    std::vector<int> handled;
    std::vector<int> expected;
    for (int i = 0; i < 200; ++i)
    {
        expected.push_back(i);
        EXPECT_TRUE(dispatcher.Post([i, &handled] { handled.push_back(i); }));
    }
    dispatcher.Flush();
    EXPECT_EQ(handled, expected);
}

TEST_F(LbMessageDispatcherTest, FlushReturnsAtOnceWhenNotRunning)
{
    LbMessageDispatcher::GetInstance().Flush();
    EXPECT_FALSE(LbMessageDispatcher::GetInstance().IsRunning());
}

TEST_F(LbMessageDispatcherTest, FlushInsideAMessageReturnsAtOnce)
{
    LbMessageDispatcher& dispatcher = start();
    bool hasReturned = false;
    dispatcher.Post([&dispatcher, &hasReturned] {
        dispatcher.Flush();
        hasReturned = true;
    });
    dispatcher.Flush();
    EXPECT_TRUE(hasReturned);
}

TEST_F(LbMessageDispatcherTest, LetsAMessagePostAnother)
{
    LbMessageDispatcher& dispatcher = start();
    LbEvent handled;
    dispatcher.Post([&dispatcher, &handled] { dispatcher.Post([&handled] { handled.Set(); }); });
    EXPECT_TRUE(handled.Wait());
}

TEST_F(LbMessageDispatcherTest, TracesAStandardExceptionWithItsText)
{
    start();
    EXPECT_NE(getTraceOf([] { throw std::runtime_error("broken message"); }).find(L"broken message"),
              std::wstring::npos);
}

TEST_F(LbMessageDispatcherTest, TracesAnUnknownException)
{
    start();
    EXPECT_FALSE(getTraceOf([] { throw 1; }).empty());
}

TEST_F(LbMessageDispatcherTest, HandlesFurtherMessagesAfterAnException)
{
    LbMessageDispatcher& dispatcher = start();
    bool isHandled = false;
    dispatcher.Post([] { throw 1; });
    dispatcher.Post([&isHandled] { isHandled = true; });
    dispatcher.Flush();
    EXPECT_TRUE(isHandled);
}

TEST_F(LbMessageDispatcherTest, ReleasesTheCapturesOfAHandledMessage)
{
    auto captured = std::make_shared<int>(1);
    LbMessageDispatcher& dispatcher = start();
    dispatcher.Post([captured] { static_cast<void>(captured); });
    dispatcher.Flush();
    EXPECT_EQ(captured.use_count(), 1);
}

TEST_F(LbMessageDispatcherTest, ShutdownHandlesAllPostedMessages)
{
    LbMessageDispatcher& dispatcher = start();
    int handledCount = 0;
    for (int i = 0; i < 100; ++i)
    {
        dispatcher.Post([&handledCount] { ++handledCount; });
    }
    LbMessageDispatcher::Shutdown();
    EXPECT_EQ(handledCount, 100);
    EXPECT_FALSE(LbMessageDispatcher::Exists());
}

TEST_F(LbMessageDispatcherTest, ShutdownDoesNotCreateADispatcher)
{
    LbMessageDispatcher::Shutdown();
    EXPECT_FALSE(LbMessageDispatcher::Exists());
}

TEST_F(LbMessageDispatcherTest, IsCreatedAgainAfterAShutdown)
{
    for (int i = 0; i < 10; ++i)
    {
        EXPECT_FALSE(LbMessageDispatcher::GetInstance().IsRunning());
        bool isHandled = false;
        start().Post([&isHandled] { isHandled = true; });
        LbMessageDispatcher::Shutdown();
        EXPECT_TRUE(isHandled);
    }
}

TEST_F(LbMessageDispatcherTest, AcceptsMessagesFromManyThreadsDuringShutdown)
{
    LbMessageDispatcher& dispatcher = start();
    std::atomic<int> takenCount = 0;
    int handledCount = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 3; ++i)
        {
            threads.emplace_back([&dispatcher, &takenCount, &handledCount] {
                for (int k = 0; k < 300; ++k)
                {
                    takenCount += dispatcher.Post([&handledCount] { ++handledCount; }) ? 1 : 0;
                }
            });
        }
        LbMessageDispatcher::Shutdown();
    }
    EXPECT_EQ(handledCount, takenCount);
}

TEST(LbMessageDispatcherDeathTest, ProcessExitsWhileAMessageIsHandled)
{
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(
        {
            LbEvent started;
            LbEvent never;
            LbMessageDispatcher::GetInstance().Start();
            LbMessageDispatcher::GetInstance().Post([&started, &never] {
                started.Set();
                never.Wait();
            });
            started.Wait();
            std::exit(7);
        },
        testing::ExitedWithCode(7), "");
}
