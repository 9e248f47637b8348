#include "testing/lutestsuite/run/children/externalcontext.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "testing/lutestsuite/run/caserunner.h"
#include "tests/support/hostchildren.h"

namespace
{

using LuTestSuiteRun::CExternalContext;
using LuTestSuiteRun::CSpareChildren;
using LuTestSuiteRun::SChildSettings;

std::function<std::size_t()> just(std::size_t count)
{
    return [count] { return count; };
}

TEST(SpareChildren, MatchTheNumberOfUpcomingCases)
{
    const SChildSettings settings;
    CSpareChildren spares(settings);

    spares.Start(just(0));
    EXPECT_EQ(CountHostChildren(), 0);
    spares.Start(just(1));
    EXPECT_EQ(CountHostChildren(), 1);
    spares.Start(just(1));
    EXPECT_EQ(CountHostChildren(), 1);
}

TEST(SpareChildren, AreAtMostTheNumberOfProcessors)
{
    const SChildSettings settings;
    CSpareChildren spares(settings);
    const auto most = static_cast<std::ptrdiff_t>(CSpareChildren::GetMost());

    for (std::ptrdiff_t start = 0; start <= most; ++start)
    {
        spares.Start(just(1000));
    }

    EXPECT_EQ(CountHostChildren(), most);
}

TEST(SpareChildren, AreStartedTwoAtATime)
{
    const SChildSettings settings;
    CSpareChildren spares(settings);

    spares.Start(just(1000));

    EXPECT_EQ(CountHostChildren(), std::min<std::ptrdiff_t>(2, static_cast<std::ptrdiff_t>(CSpareChildren::GetMost())));
}

TEST(SpareChildren, AreTakenOnlyOnce)
{
    const SChildSettings settings;
    CSpareChildren spares(settings);
    spares.Start(just(1));

    const auto channel = spares.Take();

    ASSERT_NE(channel, nullptr);
    EXPECT_TRUE(channel->HasChild());
    EXPECT_EQ(spares.Take(), nullptr);
}

TEST(SpareChildren, AreNotStartedAgainAfterAllAreKilled)
{
    const SChildSettings settings;
    CSpareChildren spares(settings);
    spares.Start(just(1));
    ASSERT_EQ(CountHostChildren(), 1);

    EXPECT_TRUE(spares.KillAll());
    EXPECT_EQ(CountHostChildren(), 0);
    spares.Start(just(1));
    EXPECT_EQ(CountHostChildren(), 0);
    EXPECT_EQ(spares.Take(), nullptr);
}

TEST(SpareChildren, CannotBeKilledIfNoneExist)
{
    const SChildSettings settings;
    CSpareChildren spares(settings);

    EXPECT_FALSE(spares.KillAll());
}

/// Spare children may have ended, because a child exits after it has been idle for long.
TEST(SpareChildren, AreNotTakenWhenTheyHaveEnded)
{
    const SChildSettings settings;
    CSpareChildren spares(settings);
    spares.Start(just(1));

    KillHostChildren();

    EXPECT_EQ(spares.Take(), nullptr);
}

TEST(SpareChildren, AreReplacedWhenTheyHaveEnded)
{
    const SChildSettings settings;
    CSpareChildren spares(settings);
    spares.Start(just(1));

    KillHostChildren();
    spares.Start(just(1));

    const auto channel = spares.Take();
    ASSERT_NE(channel, nullptr);
    EXPECT_TRUE(channel->IsChildRunning());
}

/// A thread that needs a child waits for a spare child that is starting.
TEST(SpareChildren, AreAwaitedWhileTheyStart)
{
    const SChildSettings settings;
    CSpareChildren spares(settings);
    std::unique_ptr<LuTestSuiteRun::CChildChannel> taken;
    std::thread taker;
    spares.Start([&]() -> std::size_t {
        if (taker.joinable())
        {
            return 0;
        }
        // Take waits for the lock until this callback has returned.
        taker = std::thread([&] { taken = spares.Take(); });
        return 1;
    });
    taker.join();

    EXPECT_NE(taken, nullptr);
    EXPECT_EQ(CountHostChildren(), 1);
}

TEST(ExternalContext, UsesSparesForIsolatedCases)
{
    const SChildSettings settings;
    CSpareChildren spares(settings);
    CExternalContext context(spares);
    spares.Start(just(1));

    context.Obtain(true);

    EXPECT_EQ(CountHostChildren(), 1);
    EXPECT_EQ(spares.Take(), nullptr);
}

TEST(ExternalContext, DoesNotUseSparesForCasesThatAreNotIsolated)
{
    const SChildSettings settings;
    CSpareChildren spares(settings);
    CExternalContext context(spares);
    spares.Start(just(1));

    context.Obtain(false);

    EXPECT_EQ(CountHostChildren(), 2);
    EXPECT_NE(spares.Take(), nullptr);
}

/// Asks a child to run an unknown case; returns the index of the process that answered, -2 without an answer.
/// `meanwhile` is called between obtaining the child and the request.
std::int32_t askIsolated(
    CExternalContext& context, const std::function<void()>& meanwhile = [] {})
{
    LuTestSuiteRun::CChildChannel& channel = context.Obtain(true);
    meanwhile();
    LuTestSuite::SUnitTest unitTest;
    unitTest.className = L"CUnknownModel";
    LuTestSuiteRun::WriteRequest(*channel.GetBuffer().GetWriteAccess(), unitTest, {}, {});
    channel.Submit();
    const std::int32_t index = channel.WaitForAnswer(LuTestSuiteRun::c_NoLimit, [] { return false; });
    const auto result = LuTestSuiteRun::LoadResult(*channel.GetBuffer().GetReadAccess());
    return result == LuTestSuiteRun::ECaseRunResult::NoMatchingCase ? index : -2;
}

/// Another case may have killed a spare child. The child that replaces it gets the same index.
TEST(ExternalContext, ReplacesSparesThatEndBeforeTheirCase)
{
    const SChildSettings settings;
    CSpareChildren spares(settings);
    CExternalContext context(spares);
    const std::int32_t before = askIsolated(context);
    ASSERT_GE(before, 0);
    context.Release();
    spares.Start(just(1));

    EXPECT_EQ(askIsolated(context, KillHostChildren), before + 1);
    EXPECT_EQ(askIsolated(context), before + 2);
}

/// A case may remove the names of the shared objects before the child has opened them.
TEST(ExternalContext, ReplacesAChildThatCannotOpenTheSharedObjects)
{
    const SChildSettings settings;
    CSpareChildren spares(settings);
    CExternalContext context(spares);
    bool areRemoved = false;

    const std::int32_t index = askIsolated(context, [&areRemoved] {
        const std::vector<LbOs::SProcess> children = ListHostChildren();
        areRemoved = !children.empty() && LbOs::RemoveObjectNames(children.front().id);
    });

    if (!areRemoved)
    {
        GTEST_SKIP() << "names of existing objects cannot be removed here";
    }
    EXPECT_GE(index, 0);
}

} // namespace
