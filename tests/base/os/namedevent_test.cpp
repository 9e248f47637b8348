#include "base/os/namedevent.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbuniqueid.h"
#include "base/os/console.h"
#include "tests/support/os/testaids.h"
#include "tests/support/probe.h"

namespace
{

using LbOs::CNamedEvent;
using LbOs::EEventWait;

constexpr std::uint32_t c_Long = 60000;

class OsNamedEvent : public testing::Test
{
protected:
    std::wstring m_name = LbUniqueId::Generate();
    std::unique_ptr<CNamedEvent> m_event = CNamedEvent::Create(m_name);
};

TEST_F(OsNamedEvent, IsNotSetAtFirst)
{
    EXPECT_EQ(m_event->Wait(0), EEventWait::TimedOut);
}

TEST_F(OsNamedEvent, ReleasesOneWaitForEachSet)
{
    EXPECT_TRUE(m_event->Set());
    EXPECT_EQ(m_event->Wait(c_Long), EEventWait::Signaled);
    EXPECT_EQ(m_event->Wait(0), EEventWait::TimedOut);
}

TEST_F(OsNamedEvent, DoesNotCountSets)
{
    for (int count = 0; count < 200; ++count)
    {
        m_event->Set();
    }

    EXPECT_EQ(m_event->Wait(0), EEventWait::Signaled);
    EXPECT_EQ(m_event->Wait(0), EEventWait::TimedOut);
}

TEST_F(OsNamedEvent, CanBeSetAnyNumberOfTimes)
{
    bool isSet = true;
    for (int count = 0; count < 70000; ++count)
    {
        isSet = m_event->Set() && isSet;
    }

    EXPECT_TRUE(isSet);
    EXPECT_TRUE(m_event->Reset());
    EXPECT_EQ(m_event->Wait(0), EEventWait::TimedOut);
}

TEST_F(OsNamedEvent, TreatsAnyNumberOfStoredSignalsAsOne)
{
    if (!LbOs::FloodEvent(m_name))
    {
        GTEST_SKIP() << "events do not count signals here";
    }
    EXPECT_EQ(m_event->Wait(0), EEventWait::Signaled);
    EXPECT_EQ(m_event->Wait(0), EEventWait::TimedOut);

    LbOs::FloodEvent(m_name);
    EXPECT_TRUE(m_event->Reset());
    EXPECT_FALSE(m_event->Reset());
    EXPECT_TRUE(m_event->Set());
    EXPECT_EQ(m_event->Wait(0), EEventWait::Signaled);
}

TEST_F(OsNamedEvent, CanBeReset)
{
    EXPECT_FALSE(m_event->Reset());
    m_event->Set();
    EXPECT_TRUE(m_event->Reset());
    EXPECT_EQ(m_event->Wait(0), EEventWait::TimedOut);
}

TEST_F(OsNamedEvent, IsOpenedByItsName)
{
    const auto other = CNamedEvent::Open(m_name);
    ASSERT_NE(other, nullptr);

    other->Set();
    EXPECT_EQ(m_event->Wait(c_Long), EEventWait::Signaled);
    m_event->Set();
    EXPECT_EQ(other->Wait(c_Long), EEventWait::Signaled);
}

TEST_F(OsNamedEvent, IsNotCreatedTwice)
{
    std::wstring failure;
    EXPECT_EQ(CNamedEvent::Create(m_name, &failure), nullptr);
    EXPECT_NE(failure, L"");
    EXPECT_NE(CNamedEvent::Open(m_name), nullptr);
}

TEST_F(OsNamedEvent, ReportsThatTheKeeperHasNoFreeEntry)
{
    constexpr std::size_t c_MoreThanItKeeps = 4097;
    std::vector<std::unique_ptr<CNamedEvent>> events;
    std::wstring failure;
    while (failure.empty() && events.size() < c_MoreThanItKeeps)
    {
        events.push_back(CNamedEvent::Create(m_name + L"-" + std::to_wstring(events.size()), &failure));
    }
    if (failure.empty() || failure.starts_with(L"open"))
    {
        GTEST_SKIP() << "the number of events is unlimited, or the limit of open files is lower";
    }

    EXPECT_EQ(failure, L"der Prozess LuKeeper fehlt oder führt schon zu viele Einträge");
    EXPECT_EQ(events.back(), nullptr);
    EXPECT_GT(events.size(), 4000U);
}

TEST_F(OsNamedEvent, IsAccessibleOnlyToItsUser)
{
    EXPECT_TRUE(LbOs::IsForOwnUserOnly(m_name));
    EXPECT_FALSE(LbOs::IsForOwnUserOnly(m_name + L"-a"));
}

/// The umask must not matter, because any code in the process may change it.
TEST_F(OsNamedEvent, IsAccessibleToItsUserDespiteTheUmask)
{
    const std::wstring name = m_name + L"-m";
    if (!LbOs::SetRightsMasked(true))
    {
        GTEST_SKIP() << "there is no umask here";
    }
    const auto event = CNamedEvent::Create(name);
    LbOs::SetRightsMasked(false);

    EXPECT_NE(event, nullptr);
    EXPECT_TRUE(LbOs::IsForOwnUserOnly(name));
    EXPECT_NE(CNamedEvent::Open(name), nullptr);
}

TEST_F(OsNamedEvent, RemovesItsNameOnDestruction)
{
    m_event.reset();

    EXPECT_EQ(CNamedEvent::Open(m_name), nullptr);
    EXPECT_NE(CNamedEvent::Create(m_name), nullptr);
}

TEST_F(OsNamedEvent, ReportsWhetherOthersHaveRemovedItsName)
{
    EXPECT_TRUE(m_event->IsNamed());

    // Such a path exists on Linux only.
    std::error_code error;
    const bool isRemoved = std::filesystem::remove(L"/dev/shm/LuTestSuite-" + m_name, error);

    EXPECT_EQ(m_event->IsNamed(), !isRemoved);
    EXPECT_TRUE(m_event->Set());
    EXPECT_EQ(m_event->Wait(c_Long), EEventWait::Signaled);
    const auto other = CNamedEvent::Create(m_name);
    EXPECT_EQ(other != nullptr, isRemoved);
    EXPECT_EQ(m_event->IsNamed(), !isRemoved);
}

/// Output must not go into an event that has got the descriptor number of a closed standard stream.
TEST_F(OsNamedEvent, WorksWhenAllFilesAreClosed)
{
    const std::optional<int> status = LbOs::RunInFork([] {
        const std::wstring name = LbUniqueId::Generate();
        const auto event = CNamedEvent::Create(name);
        constexpr std::intptr_t c_Files = 256;
        for (std::intptr_t file = 0; file < c_Files; ++file)
        {
            LbOs::CloseForOthers(file);
        }
        const auto other = CNamedEvent::Open(name);
        const bool isUnset = event->Wait(0) == EEventWait::TimedOut;
        LbOs::WriteStandardOutput("Text");
        const bool isStillUnset = event->Wait(0) == EEventWait::TimedOut;
        const bool isSet = other->Set() && event->Wait(0) == EEventWait::Signaled;
        return isUnset && isStillUnset && isSet ? 0 : 1;
    });

    if (!status)
    {
        GTEST_SKIP() << "processes do not fork";
    }
    EXPECT_EQ(status, 0);
}

TEST_F(OsNamedEvent, AcceptsOnlyPlainNames)
{
    for (const wchar_t* name : {L"", L"../a", L"a/b", L"a\\b", L"ä", L".", L"a b"})
    {
        EXPECT_EQ(CNamedEvent::Create(name), nullptr);
        EXPECT_EQ(CNamedEvent::Open(name), nullptr);
    }
}

TEST_F(OsNamedEvent, NoticesTheEndOfAProcessLongBeforeTheTimeOut)
{
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const auto child = StartProbe(L"exit 0");
    ASSERT_NE(child, nullptr);

    EXPECT_EQ(m_event->Wait(c_Long, child.get()), EEventWait::ChildEnded);

    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(c_Long / 2));
}

TEST_F(OsNamedEvent, TakesPrecedenceOverTheEndOfAProcess)
{
    const auto child = StartProbe(L"exit 0");
    ASSERT_NE(child, nullptr);
    ASSERT_TRUE(child->Wait(c_Long));
    m_event->Set();

    EXPECT_EQ(m_event->Wait(c_Long, child.get()), EEventWait::Signaled);
}

TEST_F(OsNamedEvent, NoticesTheEndOfAProcessWhoseHandleWasClosed)
{
    const auto child = StartProbe(L"exit 0");
    ASSERT_NE(child, nullptr);
    const auto handle = child->GetWaitHandle();
    if (!LbOs::CloseForOthers(handle))
    {
        GTEST_SKIP() << "the handle cannot be closed here";
    }
    // The next process, which keeps running, gets the number of the closed handle.
    const auto other = StartProbe(L"sleep");
    ASSERT_NE(other, nullptr);
    ASSERT_EQ(other->GetWaitHandle(), handle);

    EXPECT_EQ(m_event->Wait(c_Long, child.get()), EEventWait::ChildEnded);
}

TEST_F(OsNamedEvent, TimesOutWhileAProcessRuns)
{
    const auto child = StartProbe(L"sleep");
    ASSERT_NE(child, nullptr);

    EXPECT_EQ(m_event->Wait(1, child.get()), EEventWait::TimedOut);
}

TEST_F(OsNamedEvent, TimesOutWhileADebuggerHoldsTheEndOfAProcess)
{
    const auto child = StartProbe(L"sleep");
    ASSERT_NE(child, nullptr);
    const auto hold = LbOs::HoldEnd(child->GetId());
    if (!hold)
    {
        GTEST_SKIP() << "the end of a process cannot be hidden here";
    }

    EXPECT_EQ(m_event->Wait(10, child.get()), EEventWait::TimedOut);
}

TEST_F(OsNamedEvent, DoesNotTimeOutEarly)
{
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();

    m_event->Wait(30);

    // A wait may end early by one tick of the clock, which takes up to 16 ms on Windows.
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(14));
}

TEST(OsNamedEventThreads, AlternateWithoutLosingASignal)
{
    constexpr int c_Turns = 2000;
    const std::wstring name = LbUniqueId::Generate();
    const auto request = CNamedEvent::Create(name + L"-q");
    const auto response = CNamedEvent::Create(name + L"-a");
    int turns = 0;
    std::thread other([&] {
        const auto theirRequest = CNamedEvent::Open(name + L"-q");
        const auto theirResponse = CNamedEvent::Open(name + L"-a");
        for (int turn = 0; turn < c_Turns && theirRequest->Wait(c_Long) == EEventWait::Signaled; ++turn)
        {
            ++turns;
            theirResponse->Set();
        }
    });
    int answers = 0;
    for (int turn = 0; turn < c_Turns; ++turn)
    {
        request->Set();
        answers += response->Wait(c_Long) == EEventWait::Signaled ? 1 : 0;
    }
    other.join();

    EXPECT_EQ(turns, c_Turns);
    EXPECT_EQ(answers, c_Turns);
}

} // namespace
