// Tests of cases that a host leaves out while the run is in progress.

#include <algorithm>
#include <chrono>
#include <functional>
#include <future>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testing/lutestsuite/run/plan.h"
#include "testing/lutestsuite/run/runevents.h"
#include "tests/support/eventrecorder.h"
#include "tests/support/runtest.h"

namespace
{

using LuTestSuiteRun::SRunResult;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class RunLeavingOut : public RunTest
{
protected:
    /// Runs four cases except those with these indices.
    SRunResult RunWithout(const std::vector<std::size_t>& indices, std::uint32_t workers = 0)
    {
        LuTestSuiteSetup setup =
            MakeSetup({MakeUnitTest(L"CResultModel", {L"bestanden", L"abweichend", L"bestanden", L"bestanden"})});
        setup.params.parallel = workers > 0;
        setup.params.workerThreads = workers;
        LuTestSuiteRun::SRunOptions options;
        options.isNeeded = [&](std::size_t index) {
            m_recorder.lines.push_back(L"asked " + std::to_wstring(index));
            return !std::ranges::count(indices, index);
        };
        return LuTestSuiteRun::Run(setup, m_environment, m_recorder, options);
    }

    EventRecorder m_recorder;
};

TEST_F(RunLeavingOut, AsksForEachCaseBeforeItStarts)
{
    const SRunResult result = RunWithout({1, 2});

    EXPECT_THAT(m_recorder.lines,
                ElementsAre(L"planned 4", L"asked 0", L"started bestanden", L"finished bestanden 0", L"asked 1",
                            L"asked 2", L"asked 3", L"started bestanden", L"finished bestanden 0", L"ended 2"));
    EXPECT_FALSE(result.cases[1].executed);
    EXPECT_EQ(result.stats.total.executed, 2U);
}

TEST_F(RunLeavingOut, DoesNotReportACancellationOnWorkers)
{
    const SRunResult result = RunWithout({0, 3}, /*workers*/ 2);

    EXPECT_EQ(result.stats.total.executed, 2U);
    EXPECT_TRUE(result.cases[1].executed);
    EXPECT_TRUE(result.cases[2].executed);
    EXPECT_THAT(m_recorder.lines, Not(Contains(L"canceled")));
    EXPECT_EQ(m_output.GetText().find(L"bgebrochen"), std::wstring::npos);
}

TEST_F(RunLeavingOut, MayLeaveOutAllCases)
{
    EXPECT_EQ(RunWithout({0, 1, 2, 3}).stats.total.executed, 0U);
    EXPECT_EQ(RunWithout({0, 1, 2, 3}, /*workers*/ 2).stats.total.executed, 0U);
}

TEST_F(RunLeavingOut, FailsIfThePredicateThrows)
{
    const LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CResultModel", {L"bestanden", L"bestanden"})});
    LuTestSuiteRun::SRunOptions options;
    options.isNeeded = [](std::size_t index) -> bool {
        if (index == 1)
        {
            throw std::runtime_error("predicate");
        }
        return true;
    };

    EXPECT_THROW(LuTestSuiteRun::Run(setup, m_environment, m_recorder, options), std::runtime_error);
    EXPECT_THAT(m_recorder.lines, ElementsAre(L"planned 2", L"started bestanden", L"finished bestanden 0"));
}

/// Asks in another thread whether the case is needed. Meanwhile the calling thread holds the run's lock.
class CAskingObserver : public LuTestSuiteRun::IRunObserver
{
public:
    void OnPlanned(const LuTestSuiteRun::SRunPlanned&) override { hasAnswer = ask(); }

    std::function<bool()> ask;
    bool hasAnswer = false;
};

TEST(RunEventsLock, IsNotTakenWithoutAPredicate)
{
    const std::vector<LuTestSuite::SUnitTest> unitTests = {MakeUnitTest(L"CResultModel", {L"bestanden"})};
    const LuTestSuiteRun::SParams params;
    std::vector<LuTestSuiteRun::SCaseInfo> cases;
    const LuTestSuiteRun::SPlan plan = LuTestSuiteRun::MakePlan(unitTests, params, cases);
    const std::function<bool()> isCanceled = [] { return false; };
    CAskingObserver observer;
    LuTestSuiteRun::CRunEvents events(isCanceled, {&observer});
    std::future<bool> answer;
    observer.ask = [&] {
        answer = std::async(std::launch::async, [&] { return events.IsNeeded(plan.sequential.at(0)); });
        return answer.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
    };
    events.Plan({unitTests, params, cases, 1});

    EXPECT_TRUE(observer.hasAnswer);
    EXPECT_TRUE(answer.get());
}

} // namespace
