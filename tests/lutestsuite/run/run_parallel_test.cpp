// Cases on worker threads.

#include <algorithm>
#include <atomic>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/runtest.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SCaseInfo;
using LuTestSuiteRun::SRunResult;

const std::wstring c_Canceled = L"\tAusführung abgebrochen.\n";

class RunParallel : public RunTest
{
protected:
    static LuTestSuiteSetup MakeParallel(std::uint32_t workers, std::uint32_t repetitions)
    {
        LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins"})});
        setup.params.parallel = true;
        setup.params.workerThreads = workers;
        setup.params.repetitions = repetitions;
        return setup;
    }

    std::ptrdiff_t CountLines(const std::wstring& text) const
    {
        return std::ranges::count(m_output.GetLines(), text, &CapturedOutput::SLine::text);
    }
};

TEST_F(RunParallel, PrintsEachResultOnceBehindItsHeader)
{
    Run(MakeParallel(4, 10));

    const auto lines = m_output.GetLines();
    for (int repetition = 1; repetition <= 10; ++repetition)
    {
        const std::wstring header = L"\t(" + std::to_wstring(repetition) + L"/10) eins... ";
        ASSERT_EQ(CountLines(header), 1);
        const auto next = std::ranges::find(lines, header, &CapturedOutput::SLine::text) + 1;
        EXPECT_EQ(next->text, L"OK");
    }
    EXPECT_EQ(CountLines(L"CPassedModel\n"), 1);
}

TEST_F(RunParallel, UsesOneWorkerForAThreadCountOfZero)
{
    for (const SCaseInfo& info : Run(MakeParallel(0, 5)).cases)
    {
        EXPECT_EQ(info.threadIndex, 0);
    }
}

TEST_F(RunParallel, UsesAtMost256Workers)
{
    for (const SCaseInfo& info : Run(MakeParallel(1000, 600)).cases)
    {
        EXPECT_GE(info.threadIndex, 0);
        EXPECT_LT(info.threadIndex, 256);
        EXPECT_TRUE(info.executed);
    }
}

TEST_F(RunParallel, RunsSequentialCasesLastOnTheCallingThread)
{
    LuTestSuiteSetup setup = MakeParallel(2, 1);
    setup.unitTests = {MakeUnitTest(L"CPassedModel", {L"eins", L"zwei mit Lücke"}),
                       MakeUnitTest(L"CFailedModel", {L"allein"})};
    setup.unitTests[0].cases[0].parameters[L"Parallel"] = false;

    const SRunResult result = Run(setup);

    EXPECT_EQ(result.cases.at(0).threadIndex, -1);
    EXPECT_GE(result.cases.at(1).threadIndex, 0);
    EXPECT_GE(result.cases.at(2).threadIndex, 0);
    EXPECT_LT(m_output.GetText().find(L"allein"), m_output.GetText().find(L"eins"));
    EXPECT_EQ(result.stats.total.executed, 3U);
}

TEST_F(RunParallel, CallsBackOnTheCallingThread)
{
    LuTestSuiteSetup setup = MakeParallel(4, 20);
    const std::thread::id here = std::this_thread::get_id();
    int elsewhere = 0;
    setup.resultCallback = [&](ECaseRunResult) { elsewhere += std::this_thread::get_id() == here ? 0 : 1; };

    Run(setup);

    EXPECT_EQ(elsewhere, 0);
}

TEST_F(RunParallel, AsksForCancellationOneThreadAtATime)
{
    LuTestSuiteSetup setup = MakeParallel(8, 200);
    std::atomic<int> inside = 0;
    std::atomic<int> together = 0;
    setup.checkCallback = [&] {
        together += ++inside > 1 ? 1 : 0;
        // Gives other threads the chance to enter.
        std::this_thread::yield();
        --inside;
        return false;
    };

    Run(setup);

    EXPECT_EQ(together, 0);
}

TEST_F(RunParallel, StopsWhenCanceledAndPrintsTheCancellationOnce)
{
    LuTestSuiteSetup setup = MakeParallel(2, 500);
    std::atomic<int> questions = 0;
    setup.checkCallback = [&questions] { return ++questions > 20; };

    const SRunResult result = Run(setup);

    EXPECT_EQ(CountLines(c_Canceled), 1);
    EXPECT_LT(result.stats.total.executed, 20U);
    EXPECT_TRUE(std::ranges::none_of(result.cases.end() - 400, result.cases.end(), &SCaseInfo::executed));
}

TEST_F(RunParallel, PrintsACancellationBeforeTheFirstCase)
{
    LuTestSuiteSetup setup = MakeParallel(2, 5);
    setup.checkCallback = [] { return true; };

    const SRunResult result = Run(setup);

    EXPECT_EQ(CountLines(c_Canceled), 1);
    EXPECT_EQ(result.stats.total.executed, 0U);
}

TEST_F(RunParallel, EndsWhenOnlyWorkersNoticeTheCancellation)
{
    LuTestSuiteSetup setup = MakeParallel(2, 50);
    const std::thread::id here = std::this_thread::get_id();
    setup.checkCallback = [here] { return std::this_thread::get_id() != here; };

    Run(setup);

    EXPECT_EQ(CountLines(c_Canceled), 1);
}

TEST_F(RunParallel, EndsItsWorkersWhenACallbackThrows)
{
    LuTestSuiteSetup setup = MakeParallel(2, 100);
    setup.resultCallback = [](ECaseRunResult) { throw std::wstring(L"kaputt"); };

    EXPECT_THROW(Run(setup), std::wstring);
}

TEST_F(RunParallel, PassesOnAnExceptionOfAWorker)
{
    LuTestSuiteSetup setup = MakeParallel(2, 100);
    const std::thread::id here = std::this_thread::get_id();
    setup.checkCallback = [here]() -> bool {
        return std::this_thread::get_id() == here ? false : throw std::wstring(L"kaputt");
    };

    EXPECT_THROW(Run(setup), std::wstring);
}

} // namespace
