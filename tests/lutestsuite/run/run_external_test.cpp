// Cases in child processes.

#include <algorithm>
#include <chrono>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/os/heapfunctions.h"
#include "tests/modules/heapscript.h"
#include "tests/support/externalruntest.h"
#include "tests/support/os/testaids.h"
#include "tests/support/probe.h"
#include "tests/support/scopedenvironment.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SCaseInfo;
using LuTestSuiteRun::SRunResult;

class RunExternal : public ExternalRunTest
{
protected:
    /// Runs the case between two that pass; returns its record.
    SCaseInfo RunCrash(const std::wstring& caseName, std::uint32_t timeOutSec = LuTestSuiteRun::c_NoLimit)
    {
        LuTestSuiteSetup setup = MakeCrash({L"vorher", caseName, L"nachher"});
        setup.unitTests[0].cases[1].parameters[L"TimeOutSec"] = timeOutSec;
        const SRunResult result = Run(setup);
        EXPECT_EQ(result.cases.at(0).result, ECaseRunResult::Ok);
        EXPECT_EQ(result.cases.at(2).result, ECaseRunResult::Ok);
        return result.cases.at(1);
    }
};

TEST_F(RunExternal, UsesOneProcessForAllCases)
{
    const SRunResult result = Run(MakeExternal({MakeUnitTest(L"CPassedModel", {L"eins", L"zwei mit Lücke"})}));

    EXPECT_GE(result.cases.at(0).processIndex, 0);
    EXPECT_EQ(result.cases.at(1).processIndex, result.cases.at(0).processIndex);
}

TEST_F(RunExternal, UsesAProcessForEachIsolatedCase)
{
    LuTestSuiteSetup setup = MakeExternal({MakeUnitTest(L"CPassedModel", {L"eins", L"zwei mit Lücke"})});
    setup.params.isolated = true;
    setup.params.repetitions = 3;

    std::set<std::int32_t> processes;
    for (const SCaseInfo& info : Run(setup).cases)
    {
        processes.insert(info.processIndex);
    }

    EXPECT_EQ(processes.size(), 6U);
    EXPECT_GE(*processes.begin(), 0);
    EXPECT_EQ(*processes.rbegin() - *processes.begin(), 5);
}

TEST_F(RunExternal, NeverReusesTheProcessOfAnIsolatedCase)
{
    LuTestSuiteSetup setup = MakeCrash({L"vorher", L"vorher", L"nachher"});
    setup.unitTests[0].cases[0].parameters[L"Isolated"] = true;

    const SRunResult result = Run(setup);

    EXPECT_EQ(result.cases.at(1).processIndex, result.cases.at(0).processIndex + 1);
    EXPECT_EQ(result.cases.at(2).processIndex, result.cases.at(1).processIndex);
}

TEST_F(RunExternal, CountsAProcessForACaseWithATooLongName)
{
    LuTestSuiteSetup setup = MakeCrash({L"vorher", std::wstring(1024, L'n'), L"nachher"});
    setup.params.isolated = true;

    const SRunResult result = Run(setup);

    EXPECT_EQ(result.cases.at(1).result, ECaseRunResult::Unknown);
    EXPECT_EQ(result.cases.at(1).processIndex, -1);
    EXPECT_EQ(result.cases.at(2).processIndex, result.cases.at(0).processIndex + 2);
}

TEST_F(RunExternal, DoesNotReplaceProcessesThatDieAtStart)
{
    LuTestSuiteSetup setup = MakeCrash({L"vorher"});
    setup.params.isolated = true;
    setup.params.repetitions = 4;
    std::optional<ScopedEnvironmentVariable> environment;
    // The run has already loaded the module here, so only children read the variable.
    setup.checkCallback = [&environment] {
        if (!environment)
        {
            environment.emplace(L"LUTESTSUITE_TEST_DIES", L"1");
        }
        return false;
    };

    const SRunResult result = Run(setup);

    for (std::size_t index = 0; index < 4; ++index)
    {
        EXPECT_EQ(result.cases.at(index).result, ECaseRunResult::Unknown);
        EXPECT_EQ(result.cases.at(index).processIndex - result.cases.at(0).processIndex, static_cast<int>(index));
    }
}

TEST_F(RunExternal, ReplacesAProcessThatExitsBeforeItsFirstCase)
{
    const ScopedFolder folder;
    const std::wstring mark = folder.GetPathOf(L"mark");
    std::optional<ScopedEnvironmentVariable> environment;
    LuTestSuiteSetup setup = MakeCrash({L"vorher", L"nachher"});
    // The run has already loaded the module here, so only children read the variable.
    setup.checkCallback = [&] {
        if (!environment)
        {
            environment.emplace(L"LUTESTSUITE_TEST_LEAVES", mark);
        }
        return false;
    };

    const SRunResult result = Run(setup);

    EXPECT_TRUE(LbFileSystem::IsFile(mark));
    EXPECT_EQ(result.cases.at(0).result, ECaseRunResult::Ok) << LbEncoding::ToUtf8(result.cases.at(0).messages);
    EXPECT_EQ(result.cases.at(1).processIndex, result.cases.at(0).processIndex);
}

/// Also holds after parent and child have shared one processor to exchange the request.
TEST_F(RunExternal, LetsEachCaseUseAllProcessors)
{
    LuTestSuiteSetup setup = MakeCrash({L"zählt Prozessoren"});
    setup.params.repetitions = 300;
    const std::wstring all = std::to_wstring(LbOs::CountOwnProcessors());

    for (const SCaseInfo& info : Run(setup).cases)
    {
        EXPECT_EQ(info.messages, L"\t\tINFO:  " + all + L"\n");
    }
    EXPECT_EQ(std::to_wstring(LbOs::CountOwnProcessors()), all);
}

TEST_F(RunExternal, RunsCasesInThisProcessIfTheyRequestIt)
{
    LuTestSuiteSetup setup = MakeExternal({MakeUnitTest(L"CPassedModel", {L"eins", L"zwei mit Lücke"})});
    setup.unitTests[0].cases[0].parameters[L"External"] = false;

    const SRunResult result = Run(setup);

    EXPECT_EQ(result.cases.at(0).processIndex, -1);
    EXPECT_GE(result.cases.at(1).processIndex, 0);
}

TEST_F(RunExternal, RunsCasesInAChildIfTheyRequestIt)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins", L"zwei mit Lücke"})});
    setup.unitTests[0].cases[1].parameters[L"External"] = true;

    const SRunResult result = Run(setup);

    EXPECT_EQ(result.cases.at(0).processIndex, -1);
    EXPECT_GE(result.cases.at(1).processIndex, 0);
}

TEST_F(RunExternal, IgnoresIsolationOfCasesInThisProcess)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins"})});
    setup.params.isolated = true;

    EXPECT_EQ(Run(setup).cases.at(0).processIndex, -1);
}

TEST_F(RunExternal, PassesOnDataDirectoriesUnchanged)
{
    const ScopedFolder folder;
    folder.WriteFile(L"Größen und Maße/CDataSetModel/äöü ß.txt", "gut");
    LuTestSuiteSetup setup = MakeSetup(folder.GetPathOf(L"Größen und Maße"));
    setup.dataDir = LbPath::WithSeparator(setup.dataDir);
    setup.params.external = true;

    const SRunResult result = Run(setup);

    ASSERT_EQ(result.cases.size(), 1U);
    EXPECT_EQ(result.cases[0].result, ECaseRunResult::Ok);
    EXPECT_GE(result.cases[0].processIndex, 0);
}

TEST_F(RunExternal, SurvivesAnAccessViolation)
{
    const SCaseInfo info = RunCrash(L"Zugriffsverletzung");

    EXPECT_EQ(info.result, ECaseRunResult::Unknown);
    EXPECT_GE(info.processIndex, 0);
}

TEST_F(RunExternal, KeepsTheMessagesOfACaseThatCrashes)
{
    EXPECT_TRUE(RunCrash(L"Zugriffsverletzung").messages.starts_with(L"\t\tINFO:  vor dem Absturz\n\t\tERROR: "));
}

TEST_F(RunExternal, SurvivesAStackOverflow)
{
    EXPECT_EQ(RunCrash(L"Stapelüberlauf").result, ECaseRunResult::Unknown);
}

TEST_F(RunExternal, SurvivesAbort)
{
    EXPECT_EQ(RunCrash(L"abort").result, ECaseRunResult::Unknown);
}

TEST_F(RunExternal, SurvivesTerminate)
{
    EXPECT_EQ(RunCrash(L"terminate").result, ECaseRunResult::Unknown);
}

TEST_F(RunExternal, SurvivesExit)
{
    EXPECT_EQ(RunCrash(L"exit").result, ECaseRunResult::Unknown);
}

TEST_F(RunExternal, SurvivesADivisionByZero)
{
    EXPECT_EQ(RunCrash(L"Division durch null").result, ECaseRunResult::Unknown);
}

TEST_F(RunExternal, EndsAnEndlessLoop)
{
    EXPECT_EQ(RunCrash(L"Endlosschleife", 1).result, ECaseRunResult::TimeOut);
}

TEST_F(RunExternal, EndsADeadLock)
{
    EXPECT_EQ(RunCrash(L"Verklemmung", 1).result, ECaseRunResult::TimeOut);
}

TEST_F(RunExternal, SurvivesClosedFiles)
{
    EXPECT_EQ(RunCrash(L"geschlossene Dateien").result, ECaseRunResult::Ok);
}

TEST_F(RunExternal, SurvivesALackOfMemory)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers end the process when there is no memory";
#endif
    EXPECT_EQ(RunCrash(L"kein Speicher").result, ECaseRunResult::Exception);
}

TEST_F(RunExternal, SurvivesAllCrashesOnWorkers)
{
    LuTestSuiteSetup setup =
        MakeCrash({L"vorher", L"Zugriffsverletzung", L"abort", L"terminate", L"Division durch null", L"nachher"});
    setup.params.parallel = true;
    setup.params.workerThreads = 3;
    setup.params.repetitions = 3;

    for (const SCaseInfo& info : Run(setup).cases)
    {
        const bool passes = info.testCase == 0 || info.testCase == 5;
        EXPECT_EQ(info.result, passes ? ECaseRunResult::Ok : ECaseRunResult::Unknown) << info.testCase;
    }
}

TEST_F(RunExternal, StartsAnotherProcessAfterACrash)
{
    const SRunResult result = Run(MakeCrash({L"vorher", L"abort", L"nachher"}));

    EXPECT_EQ(result.cases.at(1).processIndex, result.cases.at(0).processIndex);
    EXPECT_EQ(result.cases.at(2).processIndex, result.cases.at(0).processIndex + 1);
}

TEST_F(RunExternal, NoticesACrashAtOnce)
{
    // If the run noticed crashes only by its check once a second, each crash would take at least a second. Only the
    // shortest time is tested, because the machine may be busy. It does not include the start of a process, because
    // another case runs before each crash.
    constexpr std::uint64_t c_Check = 1'000'000'000;
    LuTestSuiteSetup setup = MakeCrash({L"vorher", L"abort"});
    setup.params.repetitions = 10;

    const SRunResult result = Run(setup);

    std::uint64_t shortest = c_Check;
    for (const SCaseInfo& info : result.cases)
    {
        shortest = info.result == ECaseRunResult::Unknown ? std::min(shortest, info.time) : shortest;
    }
    EXPECT_LT(shortest, c_Check);
}

TEST_F(RunExternal, IgnoresAnAnswerToAnEarlierRequest)
{
    CProbeLine line;
    const ScopedEnvironmentVariable environment(L"LUTESTSUITE_TEST_LINE", line.GetName());
    LuTestSuiteSetup setup = MakeCrash({L"antwortet noch einmal", L"geschlossene Dateien"});
    // True if the second answer was given before the next case began.
    bool isAnswered = false;
    setup.resultCallback = [&](ECaseRunResult) { isAnswered = isAnswered || line.IsAlive(); };

    const SRunResult result = Run(setup);

    EXPECT_TRUE(isAnswered);
    EXPECT_EQ(result.cases.at(0).result, ECaseRunResult::Ok);
    EXPECT_EQ(result.cases.at(1).result, ECaseRunResult::Ok);
    EXPECT_EQ(result.cases.at(1).processIndex, result.cases.at(0).processIndex);
}

TEST_F(RunExternal, AllowsOneSecondMoreThanTheTimeOut)
{
    LuTestSuiteSetup setup = MakeCrash({L"schläft", L"nachher"});
    setup.params.timeOutSec = 4;
    const auto start = std::chrono::steady_clock::now();

    const SRunResult result = Run(setup);

    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_GE(elapsed.count(), 4.9);
    EXPECT_EQ(result.cases.at(0).result, ECaseRunResult::TimeOut);
    EXPECT_EQ(result.cases.at(0).messages, L"\t\tINFO:  vor dem Schlaf\n");
    EXPECT_EQ(result.cases.at(1).result, ECaseRunResult::Ok);
    EXPECT_EQ(result.cases.at(1).processIndex, result.cases.at(0).processIndex + 1);
}

TEST_F(RunExternal, StopsWaitingWhenCanceled)
{
    LuTestSuiteSetup setup = MakeCrash({L"schläft", L"nachher"});
    int questions = 0;
    setup.checkCallback = [&questions] { return ++questions > 2; };

    const SRunResult result = Run(setup);

    EXPECT_EQ(result.cases.at(0).result, ECaseRunResult::Canceled);
    EXPECT_TRUE(result.cases.at(0).executed);
    EXPECT_EQ(result.stats.unitTestsExecuted, 1U);
    EXPECT_EQ(result.stats.unitTestsPassed, 0U);
    EXPECT_EQ(result.cases.at(1).result, ECaseRunResult::Unknown);
    EXPECT_FALSE(result.cases.at(1).executed);
}

TEST_F(RunExternal, NamesThreadAndProcessWhenVerbose)
{
    LuTestSuiteSetup setup = MakeExternal({MakeUnitTest(L"CPassedModel", {L"eins"})});
    setup.params.verbose = true;

    const std::wstring process = std::to_wstring(Run(setup).cases.at(0).processIndex);

    EXPECT_NE(m_output.GetText().find(L"OK [P" + process + L"]\n"), std::wstring::npos);
}

/// An empty case shows what the runner itself allocates.
TEST_F(RunExternal, TracksTheHeapOfTheChild)
{
    if (LbOs::GetHeapFunctions().malloc == nullptr)
    {
        GTEST_SKIP() << "this process does not use the heap of the shared run-time";
    }
    LuTestSuiteSetup setup = MakeExternal({MakeUnitTest(L"CHeapScript", {L"pre", L"nil", L"run", L"end"})});
    setup.dlls = {L"heapscript"};
    setup.params.trackHeap = true;

    const SRunResult result = Run(setup);

    const SCaseInfo& nothing = result.cases.at(1);
    const SCaseInfo& script = result.cases.at(2);
    EXPECT_GE(script.processIndex, 0);
    EXPECT_EQ(script.memoryGrowth, heapscript::c_Leak);
    EXPECT_EQ(script.allocations, nothing.allocations + heapscript::c_ScriptAllocations);
}

class RunExternalExecution : public RunTest
{
protected:
    static std::wstring GetFunction(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment)
    {
        try
        {
            LuTestSuiteRun::RunExternalExecution(setup, environment);
        }
        catch (const LbException& exception)
        {
            return exception.GetFunction();
        }
        return {};
    }
};

TEST_F(RunExternalExecution, NeedsTheNamesOfAllSharedObjects)
{
    for (std::wstring LuTestSuiteSetup::*missing :
         {&LuTestSuiteSetup::memoryId, &LuTestSuiteSetup::requestEventId, &LuTestSuiteSetup::responseEventId})
    {
        LuTestSuiteSetup setup;
        setup.memoryId = setup.requestEventId = setup.responseEventId = L"a";
        (setup.*missing).clear();
        EXPECT_EQ(GetFunction(setup, m_environment), L"LuTestSuiteRun::RunExternalExecution");
    }
}

TEST_F(RunExternalExecution, NeedsExistingEvents)
{
    LuTestSuiteSetup setup;
    setup.memoryId = setup.requestEventId = setup.responseEventId = LbUniqueId::Generate();

    EXPECT_EQ(GetFunction(setup, m_environment), L"LuTestSuiteRun::RunExternalExecution");
}

TEST_F(RunExternalExecution, NeedsTheMemoryWhenARequestComes)
{
    LuTestSuiteSetup setup;
    setup.memoryId = LbUniqueId::Generate();
    setup.requestEventId = LbUniqueId::Generate();
    setup.responseEventId = LbUniqueId::Generate();
    const auto request = LbOs::CNamedEvent::Create(setup.requestEventId);
    const auto response = LbOs::CNamedEvent::Create(setup.responseEventId);
    ASSERT_TRUE(request && response);
    request->Set();

    EXPECT_EQ(GetFunction(setup, m_environment), L"LuTestSuiteRun::CSharedMemoryWorkBuffer::GetWriteAccess");
}

} // namespace
