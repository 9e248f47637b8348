// Tests which events an observer of a run receives.

#include <algorithm>
#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/luunittest.h"
#include "base/os/process.h"
#include "tests/support/eventrecorder.h"
#include "tests/support/externalruntest.h"
#include "tests/support/latch.h"

namespace
{

/// Functions that the model's two cases call.
std::function<void()> s_firstCase;
std::function<void()> s_secondCase;

class CObservedModel : public LuUnitTest
{
    LB_RTTI(CObservedModel)

    void InitSubtests() override
    {
        AddSubtest(L"eins", [] { s_firstCase(); });
        AddSubtest(L"zwei", [] { s_secondCase(); });
    }
};

} // namespace

LB_RTTI_CLASS(CObservedModel, LuUnitTest)

namespace
{

using LuTestSuiteRun::ECaseEnd;
using LuTestSuiteRun::ECaseRunResult;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

class RunEvents : public ExternalRunTest
{
protected:
    RunEvents()
    {
        s_firstCase = s_secondCase = [] {};
    }
    ~RunEvents() override { s_firstCase = s_secondCase = nullptr; }

    LuTestSuiteRun::SRunResult Watch(const LuTestSuiteSetup& setup)
    {
        return LuTestSuiteRun::Run(setup, m_environment, m_events);
    }

    static LuTestSuiteSetup MakeObserved(std::uint32_t workers = 0)
    {
        LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CObservedModel", {L"eins", L"zwei"})});
        setup.params.parallel = workers > 0;
        setup.params.workerThreads = workers;
        return setup;
    }

    EventRecorder m_events;
};

TEST_F(RunEvents, ComeInTheOrderOfTheCases)
{
    Watch(MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins"}), MakeUnitTest(L"CFailedModel", {L"allein"})}));

    EXPECT_THAT(m_events.lines, ElementsAre(L"planned 2", L"started eins", L"finished eins 0", L"started allein",
                                            L"finished allein 1", L"ended 2"));
}

TEST_F(RunEvents, EncloseTheExecutionOfTheCase)
{
    s_firstCase = [this] { m_events.lines.emplace_back(L"runs"); };

    Watch(MakeObserved());

    EXPECT_THAT(m_events.lines, ElementsAre(L"planned 2", L"started eins", L"runs", L"finished eins 0", L"started zwei",
                                            L"finished zwei 0", L"ended 2"));
}

TEST_F(RunEvents, ReportARunWithoutCases)
{
    LuTestSuiteSetup setup = MakeSetup(std::wstring());
    setup.includes = {L"gibt es nicht"};

    Watch(setup);

    EXPECT_THAT(m_events.lines, ElementsAre(L"planned 0", L"ended 0"));
}

TEST_F(RunEvents, CarryTheRecordThatTheRunReturns)
{
    s_firstCase = [] { throw 42; };

    const LuTestSuiteRun::SRunResult result = Watch(MakeObserved());

    ASSERT_EQ(m_events.ends.size(), 2U);
    const LuTestSuiteRun::SCaseInfo& info = m_events.ends[0].info;
    EXPECT_EQ(info.result, ECaseRunResult::Exception);
    EXPECT_EQ(info.messages, result.cases.at(0).messages);
    EXPECT_EQ(info.time, result.cases.at(0).time);
    EXPECT_TRUE(info.executed);
}

TEST_F(RunEvents, CarryTheNumberOfTheAttempt)
{
    struct Attempts : LuTestSuiteRun::IRunObserver
    {
        void OnPlanned(const LuTestSuiteRun::SRunPlanned& planned) override { attempt = planned.attempt; }
        std::uint32_t attempt = 0;
    };
    Attempts attempts;

    LuTestSuiteRun::Run(MakeObserved(), m_environment, attempts, {3});

    EXPECT_EQ(attempts.attempt, 3U);
}

TEST_F(RunEvents, ComeFromAWorkerWhileAnotherIsBusy)
{
    Latch otherHasFinished(1);
    std::atomic<bool> isHere = false;
    const std::thread::id here = std::this_thread::get_id();
    s_firstCase = [&] { otherHasFinished.Wait(); };
    m_events.onLine = [&](const std::wstring& line) {
        if (line == L"finished zwei 0")
        {
            isHere = std::this_thread::get_id() == here;
            otherHasFinished.CountDown();
        }
    };

    Watch(MakeObserved(2));

    EXPECT_FALSE(isHere);
    EXPECT_EQ(m_events.lines.back(), L"ended 2");
}

TEST_F(RunEvents, ComeOneAtATimeAndNeverDuringTheCancellationQuery)
{
    LuTestSuiteSetup setup = MakeObserved(8);
    setup.params.repetitions = 100;
    std::atomic<int> inside = 0;
    std::atomic<int> together = 0;
    const auto visit = [&] {
        together += ++inside > 1 ? 1 : 0;
        // Gives other threads the chance to enter.
        std::this_thread::yield();
        --inside;
        return false;
    };
    setup.checkCallback = visit;
    m_events.onLine = [&](const std::wstring&) { visit(); };

    Watch(setup);

    EXPECT_EQ(together, 0);
    EXPECT_EQ(m_events.ends.size(), 200U);
}

TEST_F(RunEvents, ReportACancellation)
{
    LuTestSuiteSetup setup = MakeObserved();
    setup.checkCallback = [this] { return m_events.ends.size() == 1; };

    Watch(setup);

    EXPECT_THAT(m_events.lines,
                ElementsAre(L"planned 2", L"started eins", L"finished eins 0", L"canceled", L"ended 1"));
}

TEST_F(RunEvents, ReportACancellationOnlyOnce)
{
    LuTestSuiteSetup setup = MakeObserved(4);
    setup.params.repetitions = 50;
    // Returns true only once, because the run must not ask again after a cancellation.
    setup.checkCallback = [isFirst = true, this]() mutable {
        return m_events.ends.size() > 10 && std::exchange(isFirst, false);
    };

    Watch(setup);

    EXPECT_EQ(std::ranges::count(m_events.lines, L"canceled"), 1);
    EXPECT_LT(m_events.ends.size(), 20U);
}

TEST_F(RunEvents, ReportACaseThatWasCanceledBeforeItBegan)
{
    LuTestSuiteSetup setup = MakeObserved();
    setup.checkCallback = [this] { return m_events.lines.size() == 2; };

    Watch(setup);

    EXPECT_THAT(m_events.lines,
                ElementsAre(L"planned 2", L"started eins", L"canceled", L"finished eins 5", L"ended 1"));
    EXPECT_EQ(m_events.ends.at(0).end.kind, ECaseEnd::Canceled);
}

TEST_F(RunEvents, ReportACaseThatIsCanceledInItsChild)
{
    LuTestSuiteSetup setup = MakeCrash({L"Endlosschleife", L"nachher"});
    setup.checkCallback = [this, questions = 0]() mutable { return m_events.lines.size() == 2 && ++questions > 1; };

    Watch(setup);

    EXPECT_THAT(m_events.lines, ElementsAre(L"planned 2", L"started Endlosschleife", L"canceled",
                                            L"finished Endlosschleife 7", L"ended 1"));
    EXPECT_EQ(m_events.ends.at(0).end.kind, ECaseEnd::Canceled);
}

TEST_F(RunEvents, NameTheProcessOfACase)
{
    LuTestSuiteSetup setup = MakeCrash({L"vorher", L"nachher"});
    setup.unitTests[0].cases[1].parameters[L"External"] = false;

    Watch(setup);

    ASSERT_EQ(m_events.processes.size(), 2U);
    const std::uint64_t own = LbOs::GetProcessId();
    EXPECT_THAT(m_events.processes[0], testing::AllOf(testing::Ne(0U), testing::Ne(own)));
    EXPECT_EQ(m_events.processes[1], own);
    EXPECT_EQ(m_events.ends[0].end.processId, m_events.processes[0]);
    EXPECT_EQ(m_events.ends[1].end.processId, own);
}

TEST_F(RunEvents, NameADifferentProcessForEachIsolatedCase)
{
    LuTestSuiteSetup setup = MakeCrash({L"vorher", L"nachher"});
    setup.params.isolated = true;

    Watch(setup);

    ASSERT_EQ(m_events.processes.size(), 2U);
    EXPECT_NE(m_events.processes[0], m_events.processes[1]);
}

TEST_F(RunEvents, CarryTheExitStatusAndLastLinesOfAChild)
{
    Watch(MakeCrash({L"schreibt viel und endet"}));

    const LuTestSuiteRun::SCaseEnd& end = m_events.ends.at(0).end;
    EXPECT_EQ(end.kind, ECaseEnd::ChildEnded);
    EXPECT_EQ(end.exitStatus, 3);
    EXPECT_EQ(end.reason, L"Der Prozess des Testfalls endete mit Status 3");
    ASSERT_EQ(end.lastLines.size(), 64U);
    EXPECT_EQ(end.lastLines.back(), L"Zeile 200");
}

TEST_F(RunEvents, CarryTheLastLinesOfACaseThatExceedsItsTimeLimit)
{
    // The first case starts the child, so that the limit of 0 s does not include its start.
    LuTestSuiteSetup setup = MakeCrash({L"vorher", L"schreibt und hängt"});
    setup.unitTests[0].cases[1].parameters[L"TimeOutSec"] = std::uint32_t{0};

    Watch(setup);

    const EventRecorder::SEnd& end = m_events.ends.at(1);
    EXPECT_EQ(end.end.kind, ECaseEnd::TimedOut);
    EXPECT_THAT(end.end.lastLines, ElementsAre(L"vor der Endlosschleife"));
    EXPECT_EQ(end.end.reason, L"");
    EXPECT_EQ(end.info.messages, L"\t\tINFO:  vor der Endlosschleife\n");
}

TEST_F(RunEvents, ReportACaseWhoseNameIsTooLong)
{
    Watch(MakeSetup({MakeUnitTest(L"CObservedModel", {std::wstring(1024, L'n')})}));

    EXPECT_EQ(m_events.ends.at(0).end.kind, ECaseEnd::Refused);
    EXPECT_EQ(m_events.ends.at(0).end.processId, 0U);
}

/// The parameter is the event at which the observer throws.
class RunEventsFailing : public RunEvents, public testing::WithParamInterface<std::wstring>
{
};

TEST_P(RunEventsFailing, EndTheRunWithTheExceptionOfTheObserver)
{
    LuTestSuiteSetup setup = MakeObserved();
    setup.checkCallback = [this] { return m_events.ends.size() == 1; };
    m_events.onLine = [](const std::wstring& line) {
        if (line == GetParam())
        {
            throw std::wstring(L"Platte voll");
        }
    };

    EXPECT_THROW(Watch(setup), std::wstring);

    EXPECT_EQ(m_events.lines.back(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Events, RunEventsFailing,
                         testing::Values(L"planned 2", L"started eins", L"finished eins 0", L"canceled", L"ended 1"));

/// One worker waits for a child that never answers.
class RunEventsBusy : public RunEvents
{
protected:
    static LuTestSuiteSetup MakeBusy()
    {
        LuTestSuiteSetup setup = MakeCrash({L"Endlosschleife", L"nachher"});
        setup.params.parallel = true;
        setup.params.workerThreads = 2;
        return setup;
    }
};

TEST_F(RunEventsBusy, EndTheOtherCasesWhenAnObserverThrows)
{
    m_events.onLine = [](const std::wstring& line) {
        if (line == L"finished nachher 0")
        {
            throw std::wstring(L"Platte voll");
        }
    };

    EXPECT_THROW(Watch(MakeBusy()), std::wstring);

    EXPECT_EQ(m_events.lines.back(), L"finished nachher 0");
}

TEST_F(RunEventsBusy, EndTheOtherCasesWhenTheResultCallbackThrows)
{
    LuTestSuiteSetup setup = MakeBusy();
    setup.resultCallback = [](ECaseRunResult) { throw std::wstring(L"kaputt"); };

    EXPECT_THROW(Watch(setup), std::wstring);

    EXPECT_THAT(m_events.lines, Not(Contains(StartsWith(L"ended"))));
}

TEST_F(RunEventsBusy, EndAllCasesWhenTheRunIsCanceled)
{
    LuTestSuiteSetup setup = MakeBusy();
    setup.unitTests[0].cases[1].name = L"Verklemmung";
    setup.checkCallback = [this] { return m_events.processes.size() == 2; };

    Watch(setup);

    ASSERT_EQ(m_events.ends.size(), 2U);
    EXPECT_EQ(m_events.ends[0].end.kind, ECaseEnd::Canceled);
    EXPECT_EQ(m_events.ends[1].end.kind, ECaseEnd::Canceled);
}

} // namespace
