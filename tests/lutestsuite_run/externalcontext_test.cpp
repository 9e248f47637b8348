#include "testing/lutestsuite/run/externalcontext.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "base/lbcommandline.h"
#include "base/lbformat.h"
#include "base/os/process.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/run/caserunner.h"
#include "tests/support/hostchildren.h"

namespace
{

using LuTestSuiteRun::CExternalContext;
using LuTestSuiteRun::CSpareLanes;
using LuTestSuiteRun::GetChildCommandLine;
using LuTestSuiteRun::SChildSettings;

std::wstring getHost()
{
    const bool isDebug = LuTestSuiteUtils::GetBuildConfiguration().starts_with(L"Debug");
    return std::wstring(isDebug ? L"LuTestSuiteCLID" : L"LuTestSuiteCLI") + LbOs::c_ExecutableSuffix;
}

TEST(GetChildCommandLine, NamesTheDataDirectoryAndTheSharedObjects)
{
    EXPECT_EQ(GetChildCommandLine({L"/Größen und Maße/", {}, true}, L"m", L"q", L"a"),
              getHost() + L" -d \"/Größen und Maße/\" -x --memory-id m --request-event-id q --response-event-id a");
}

TEST(GetChildCommandLine, KeepsASeparatorBeforeTheClosingMark)
{
    const auto words =
        LbCommandLine::Split(GetChildCommandLine({L"D:\\Daten mit Lücke\\", {}, true}, L"m", L"q", L"a"));

    ASSERT_EQ(words.size(), 10U);
    EXPECT_EQ(words[2], L"D:\\Daten mit Lücke\\");
    EXPECT_EQ(words[3], L"-x");
}

TEST(GetChildCommandLine, KeepsTheSeparatorOfRoots)
{
    for (const wchar_t* const root : {L"C:\\", L"\\\\Rechner\\Freigabe\\", L"/"})
    {
        const auto words = LbCommandLine::Split(GetChildCommandLine({root, {}, true}, L"m", L"q", L"a"));

        ASSERT_EQ(words.size(), 10U);
        EXPECT_EQ(words[2], root);
    }
}

TEST(GetChildCommandLine, HandsOnWhatTheRunWasStartedWith)
{
    const std::wstring line = GetChildCommandLine({L"/d/", {L"eins", L"mit Lücke"}, false}, L"m", L"q", L"a");

    EXPECT_TRUE(line.ends_with(L" --no-assert-dialog --dll \"eins\" --dll \"mit Lücke\"")) << line.size();
}

TEST(GetChildCommandLine, AlwaysNamesADataDirectory)
{
    const auto words = LbCommandLine::Split(GetChildCommandLine({}, L"m", L"q", L"a"));

    EXPECT_FALSE(words.at(2).empty());
}

constexpr std::uint64_t c_Slow = 60'000;

TEST(Meetings, AreForShortAnswersThatTookTheirTime)
{
    LuTestSuiteRun::CMeetings meetings;
    EXPECT_FALSE(meetings.IsNext());

    meetings.Learn(LuTestSuiteRun::CMeetings::sc_uiQuick);
    EXPECT_FALSE(meetings.IsNext());

    meetings.Learn(LuTestSuiteRun::CMeetings::sc_uiLong);
    EXPECT_FALSE(meetings.IsNext());

    meetings.Learn(c_Slow);
    EXPECT_TRUE(meetings.IsNext());
}

TEST(Meetings, EndWithALongCase)
{
    LuTestSuiteRun::CMeetings meetings;
    meetings.Learn(c_Slow);

    meetings.Learn(LuTestSuiteRun::CMeetings::sc_uiLong);

    EXPECT_FALSE(meetings.IsNext());
}

TEST(Meetings, EndWithTheChild)
{
    LuTestSuiteRun::CMeetings meetings;
    meetings.Learn(c_Slow);

    meetings.Forget();

    EXPECT_FALSE(meetings.IsNext());
}

TEST(Meetings, AreLeftOutNowAndThen)
{
    LuTestSuiteRun::CMeetings meetings;
    meetings.Learn(c_Slow);
    for (std::uint32_t meeting = 0; meeting < LuTestSuiteRun::CMeetings::sc_uiInARow; ++meeting)
    {
        EXPECT_TRUE(meetings.IsNext());
        meetings.Learn(0);
    }
    EXPECT_FALSE(meetings.IsNext());
}

std::function<std::size_t()> just(std::size_t count)
{
    return [count] { return count; };
}

TEST(SpareLanes, AreAsManyAsCasesToCome)
{
    const SChildSettings settings;
    CSpareLanes spares(settings);

    spares.Start(just(0));
    EXPECT_EQ(CountHostChildren(), 0);
    spares.Start(just(1));
    EXPECT_EQ(CountHostChildren(), 1);
    spares.Start(just(1));
    EXPECT_EQ(CountHostChildren(), 1);
}

TEST(SpareLanes, AreNoMoreThanProcessors)
{
    const SChildSettings settings;
    CSpareLanes spares(settings);
    const auto most = static_cast<std::ptrdiff_t>(CSpareLanes::GetMost());

    for (std::ptrdiff_t start = 0; start <= most; ++start)
    {
        spares.Start(just(1000));
    }

    EXPECT_EQ(CountHostChildren(), most);
}

TEST(SpareLanes, AreStartedTwoAtATime)
{
    const SChildSettings settings;
    CSpareLanes spares(settings);

    spares.Start(just(1000));

    EXPECT_EQ(CountHostChildren(), std::min<std::ptrdiff_t>(2, static_cast<std::ptrdiff_t>(CSpareLanes::GetMost())));
}

TEST(SpareLanes, AreTakenOnce)
{
    const SChildSettings settings;
    CSpareLanes spares(settings);
    spares.Start(just(1));

    const auto lane = spares.Take();

    ASSERT_NE(lane, nullptr);
    EXPECT_TRUE(lane->HasChild());
    EXPECT_EQ(spares.Take(), nullptr);
}

/// Whoever needs one while it is being started does not start another.
TEST(SpareLanes, AreWaitedForWhileTheyStart)
{
    const SChildSettings settings;
    CSpareLanes spares(settings);
    std::unique_ptr<LuTestSuiteRun::CExternalLane> taken;
    std::thread taker;
    spares.Start([&]() -> std::size_t {
        if (taker.joinable())
        {
            return 0;
        }
        // It cannot come to it before this question is answered.
        taker = std::thread([&] { taken = spares.Take(); });
        return 1;
    });
    taker.join();

    EXPECT_NE(taken, nullptr);
    EXPECT_EQ(CountHostChildren(), 1);
}

TEST(ExternalContext, GivesIsolatedCasesTheSpares)
{
    const SChildSettings settings;
    CSpareLanes spares(settings);
    CExternalContext context(spares);
    spares.Start(just(1));

    context.Obtain(true);

    EXPECT_EQ(CountHostChildren(), 1);
    EXPECT_EQ(spares.Take(), nullptr);
}

TEST(ExternalContext, LeavesTheSparesOfOthersAlone)
{
    const SChildSettings settings;
    CSpareLanes spares(settings);
    CExternalContext context(spares);
    spares.Start(just(1));

    context.Obtain(false);

    EXPECT_EQ(CountHostChildren(), 2);
    EXPECT_NE(spares.Take(), nullptr);
}

/// Asks for a case that nobody knows: the index of the process that has said so; -2 without an answer.
std::int32_t askIsolated(CExternalContext& context)
{
    LuTestSuiteRun::CExternalLane& lane = context.Obtain(true);
    LuTestSuite::SUnitTest unitTest;
    unitTest.className = L"CUnknownModel";
    LuTestSuiteRun::WriteRequest(*lane.GetBuffer().GetWriteAccess(), unitTest, {}, {});
    lane.Ask();
    const std::int32_t index = lane.WaitForAnswer(LuTestSuiteRun::c_NoLimit, [] { return false; });
    const auto result = LuTestSuiteRun::LoadResult(*lane.GetBuffer().GetReadAccess());
    return result == LuTestSuiteRun::ECaseRunResult::NoMatchingCase ? index : -2;
}

/// What has brought it down may have been the case that was under way. Indices go on as if nothing had happened.
TEST(ExternalContext, ReplacesSparesThatHaveEnded)
{
    const SChildSettings settings;
    CSpareLanes spares(settings);
    CExternalContext context(spares);
    const std::int32_t before = askIsolated(context);
    ASSERT_GE(before, 0);
    context.Release();
    spares.Start(just(1));

    KillHostChildren();

    EXPECT_EQ(askIsolated(context), before + 1);
    EXPECT_EQ(askIsolated(context), before + 2);
}

} // namespace
