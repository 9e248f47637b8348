#include <limits>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "tests/support/runtest.h"

namespace
{

using LuTestSuite::SUnitTest;
using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SCaseInfo;
using SReportData = LuTestSuiteReport::SReportData;

/// A record of an invented run.
class LuTestSuiteReportData : public testing::Test
{
protected:
    SReportData Generate() const
    {
        SReportData data;
        LuTestSuiteReport::GenerateReportData(data, m_setup, m_unitTests, m_cases, m_stats);
        return data;
    }

    /// The reported lines of one case with these messages, as "E:" or "I:" and the text.
    std::vector<std::wstring> GetLines(const std::wstring& messages)
    {
        SCaseInfo info;
        info.messages = messages;
        info.executed = true;
        m_unitTests[0].cases.resize(1);
        m_cases = {info};
        const SReportData data = Generate();
        std::vector<std::wstring> lines;
        for (const LuTestSuiteReport::SReportDump& dump : data.Cases.at(0).Dumps)
        {
            lines.push_back((dump.IsError ? L"E:" : L"I:") + dump.Text);
        }
        return lines;
    }

    void SetUp() override
    {
        m_unitTests = {MakeUnitTest(L"CErste", {L"eins", L"zwei"}), MakeUnitTest(L"CZweite", {L"drei"})};
        m_stats.unitTests.resize(2);
    }

    using Lines = std::vector<std::wstring>;

    LuTestSuiteSetup m_setup;
    std::vector<SUnitTest> m_unitTests;
    std::vector<SCaseInfo> m_cases;
    LuTestSuiteRun::SStats m_stats;
};

TEST_F(LuTestSuiteReportData, DescribesTheBuild)
{
    const SReportData data = Generate();

    EXPECT_EQ(data.BuildConfiguration, LuTestSuiteUtils::GetBuildConfiguration());
    EXPECT_EQ(data.SvnInfo, nullptr);
    const auto record = LuTestSuiteUtils::GetPscmInfo();
    ASSERT_EQ(data.PscmInfo == nullptr, record == nullptr);
    if (record != nullptr)
    {
        EXPECT_EQ(data.PscmInfo->Changeset, record->Changeset);
    }
}

TEST_F(LuTestSuiteReportData, RefusesStatisticsOfAnotherNumberOfUnitTests)
{
    for (const std::size_t count : {std::size_t{0}, std::size_t{1}, std::size_t{3}})
    {
        m_stats.unitTests.resize(count);
        EXPECT_THROW(Generate(), LbException) << count;
    }
}

TEST_F(LuTestSuiteReportData, RefusesExecutedCasesThatNoUnitTestHas)
{
    for (const auto& [unitTest, testCase] : {std::pair(2U, 0U), std::pair(1U, 1U), std::pair(~0U, ~0U)})
    {
        SCaseInfo info;
        info.unitTest = unitTest;
        info.testCase = testCase;
        m_cases = {info};
        EXPECT_TRUE(Generate().Cases.empty());

        m_cases[0].executed = true;
        EXPECT_THROW(Generate(), LbException) << unitTest << ' ' << testCase;
    }
}

TEST_F(LuTestSuiteReportData, DescribesTheMachine)
{
    const SReportData data = Generate();

    EXPECT_EQ(data.Processor, LuTestSuiteReport::getCPUInfo());
    EXPECT_EQ(data.GPU, LuTestSuiteReport::getGPUInfo());
    EXPECT_NE(data.MachineName, L"");
}

TEST_F(LuTestSuiteReportData, DescribesTheSetup)
{
    m_setup.dataDir = L"D:\\Daten\\";
    m_setup.params.timeOutSec = 17;

    const SReportData data = Generate();

    EXPECT_EQ(data.DataDirectory, L"D:\\Daten\\");
    EXPECT_EQ(data.TimeOut, 17U);
}

TEST_F(LuTestSuiteReportData, KeepsAnUnlimitedTimeOut)
{
    EXPECT_EQ(Generate().TimeOut, 4294967295U);
}

TEST_F(LuTestSuiteReportData, NamesTheModeOfExecution)
{
    auto& params = m_setup.params;
    EXPECT_EQ(Generate().ExecutionMode, L"Internal");
    params.isolated = true;
    EXPECT_EQ(Generate().ExecutionMode, L"Internal");
    params.external = true;
    EXPECT_EQ(Generate().ExecutionMode, L"External Isolated");
    params.isolated = false;
    EXPECT_EQ(Generate().ExecutionMode, L"External");
}

TEST_F(LuTestSuiteReportData, CountsThreadsOfParallelRunsOnly)
{
    m_setup.params.workerThreads = 8;
    EXPECT_EQ(Generate().ThreadCount, 1U);
    m_setup.params.parallel = true;
    EXPECT_EQ(Generate().ThreadCount, 8U);
}

TEST_F(LuTestSuiteReportData, CountsCasesByTheClassOfTheirResult)
{
    m_stats.total = {{10, 1, 2, 3, 4, 5, 6, 7, 8}, 46, 9};

    const SReportData data = Generate();

    EXPECT_EQ(data.CasesTotal, 46U);
    EXPECT_EQ(data.Failures, 10U);
    EXPECT_EQ(data.Errors, 26U);
    EXPECT_EQ(data.Successful, 10U);
    EXPECT_EQ(data.Warnings, 9U);
}

TEST_F(LuTestSuiteReportData, ComputesSuccessfulCasesFromTheTotal)
{
    m_stats.total = {{10, 1, 0, 0, 0, 2, 0, 0, 0}, 100, 0};

    EXPECT_EQ(Generate().Successful, 97U);
}

TEST_F(LuTestSuiteReportData, CountsAllSuccessfulAndFlaggedClasses)
{
    m_stats.unitTestsExecuted = 9;
    m_stats.unitTestsPassed = 7;
    m_stats.unitTestsPassedWithoutWarning = 5;

    const SReportData data = Generate();

    EXPECT_EQ(data.ClassesTotal, 9U);
    EXPECT_EQ(data.ClassesSuccessful, 7U);
    EXPECT_EQ(data.ClassesFlagged, 4U);
}

TEST_F(LuTestSuiteReportData, CopiesDatesTimesAndMemory)
{
    m_stats.total.executed = 3;
    m_stats.startTime = L"2024-02-29 12:00:00";
    m_stats.endTime = L"2024-02-29 12:00:05";
    m_stats.totalTime = 5'000'000'000;
    m_stats.caseTimeSum = 4'000'000'001;
    m_stats.caseTimeMax = 3'000'000'000;
    m_stats.caseTimeMin = 250'000'000;
    m_stats.peakMemorySum = 302;
    m_stats.peakMemoryMax = 200;
    m_stats.peakMemoryMin = 1;

    const SReportData data = Generate();

    EXPECT_EQ(data.DateBegin, L"2024-02-29 12:00:00");
    EXPECT_EQ(data.DateEnd, L"2024-02-29 12:00:05");
    EXPECT_EQ(data.TimeTotal, 5.0F);
    EXPECT_EQ(data.TimeAvg, LuTestSuiteReport::toSeconds(1'333'333'333));
    EXPECT_EQ(data.TimeMax, 3.0F);
    EXPECT_EQ(data.TimeMin, 0.25F);
    EXPECT_EQ(data.MemoryAvg, 100U);
    EXPECT_EQ(data.MemoryMax, 200U);
    EXPECT_EQ(data.MemoryMin, 1U);
}

TEST_F(LuTestSuiteReportData, HasAveragesOfZeroWithoutCases)
{
    const SReportData data = Generate();

    EXPECT_EQ(data.CasesTotal, 0U);
    EXPECT_EQ(data.TimeAvg, 0.0F);
    EXPECT_EQ(data.MemoryAvg, 0U);
    EXPECT_EQ(data.Cases.size(), 0U);
    ASSERT_EQ(data.Classes.size(), 2U);
    EXPECT_EQ(data.Classes[1].Name, L"CZweite");
    EXPECT_EQ(data.Classes[1].CasesTotal, 0U);
    EXPECT_EQ(data.Classes[1].Successful, 0U);
}

TEST_F(LuTestSuiteReportData, CountsTheCasesOfEachClass)
{
    m_stats.unitTests[1] = {{10, 1, 2, 3, 4, 5, 6, 7, 8}, 46, 3};

    const SReportData data = Generate();

    ASSERT_EQ(data.Classes.size(), 2U);
    EXPECT_EQ(data.Classes[0].Name, L"CErste");
    EXPECT_EQ(data.Classes[0].CasesTotal, 0U);
    EXPECT_EQ(data.Classes[1].CasesTotal, 46U);
    EXPECT_EQ(data.Classes[1].Successful, 10U);
    EXPECT_EQ(data.Classes[1].Failures, 10U);
    EXPECT_EQ(data.Classes[1].Errors, 26U);
    EXPECT_EQ(data.Classes[1].Warnings, 3U);
}

TEST_F(LuTestSuiteReportData, NamesTheFirstContactOfAClass)
{
    m_unitTests[0].contacts = {{L"Erika", L"erika@example.org", L"Test"}, {L"Max", L"max@example.org", L""}};

    const SReportData data = Generate();

    EXPECT_EQ(data.Classes[0].ContactName, L"Erika");
    EXPECT_EQ(data.Classes[0].ContactEMail, L"erika@example.org");
    EXPECT_EQ(data.Classes[1].ContactName, L"");
    EXPECT_EQ(data.Classes[1].ContactEMail, L"");
}

TEST_F(LuTestSuiteReportData, CopiesTheFieldsOfACase)
{
    SCaseInfo info;
    info.testCase = 1;
    info.result = ECaseRunResult::TimeOut;
    info.memoryGrowth = 24;
    info.peakMemory = 4096;
    info.time = 1'500'000'000;
    info.warning = true;
    info.executed = true;
    m_cases = {info};

    const SReportData data = Generate();

    ASSERT_EQ(data.Cases.size(), 1U);
    const LuTestSuiteReport::SReportCase& testCase = data.Cases[0];
    EXPECT_EQ(testCase.Id, 0U);
    EXPECT_EQ(testCase.ClassName, L"CErste");
    EXPECT_EQ(testCase.CaseName, L"zwei");
    EXPECT_EQ(testCase.Result, ECaseRunResult::TimeOut);
    EXPECT_EQ(testCase.Time, 1.5F);
    EXPECT_EQ(testCase.Memory, 4096U);
    EXPECT_EQ(testCase.MemoryDelta, 24);
    EXPECT_EQ(testCase.Info, L"Speicherleck von 24 Bytes detektiert.");
    EXPECT_TRUE(testCase.Warning);
    EXPECT_TRUE(testCase.Dumps.empty());
}

TEST_F(LuTestSuiteReportData, OmitsUnexecutedCasesAndKeepsThePositionsOfTheOthers)
{
    m_cases.resize(4);
    m_cases[1].executed = true;
    m_cases[3].executed = true;
    m_cases[3].unitTest = 1;

    const SReportData data = Generate();

    ASSERT_EQ(data.Cases.size(), 2U);
    EXPECT_EQ(data.Cases[0].Id, 1U);
    EXPECT_EQ(data.Cases[1].Id, 3U);
    EXPECT_EQ(data.Cases[1].ClassName, L"CZweite");
}

TEST_F(LuTestSuiteReportData, NotesShrunkenMemoryAsANegativeLeak)
{
    m_cases.resize(2);
    m_cases[0].executed = m_cases[1].executed = true;
    m_cases[0].memoryGrowth = static_cast<std::uint64_t>(-16);

    const SReportData data = Generate();

    EXPECT_EQ(data.Cases[0].MemoryDelta, -16);
    EXPECT_EQ(data.Cases[0].Info, L"Speicherleck von -16 Bytes detektiert.");
    EXPECT_EQ(data.Cases[1].Info, L"");
}

TEST_F(LuTestSuiteReportData, ReservesNoMemoryForCasesThatOnlyTheStatisticsCount)
{
    m_stats.total.executed = std::numeric_limits<std::uint32_t>::max();
    m_cases.resize(1);
    m_cases[0].executed = true;

    const SReportData data = Generate();

    EXPECT_EQ(data.CasesTotal, m_stats.total.executed);
    EXPECT_EQ(data.Cases.capacity(), 1U);
}

TEST_F(LuTestSuiteReportData, ReadsTheKindOfMarkedLines)
{
    EXPECT_EQ(GetLines(L"\t\tINFO:  Größe\n\t\tERROR: 3 statt 4\n"), (Lines{L"I:Größe", L"E:3 statt 4"}));
}

TEST_F(LuTestSuiteReportData, GivesUnmarkedLinesTheKindOfTheLineBefore)
{
    m_setup.messageReportMax = 10;
    EXPECT_EQ(GetLines(L"vorn\nINFO:  a\nb\nERROR: c\nd"), (Lines{L"E:vorn", L"I:a", L"I:b", L"E:c", L"E:d"}));
}

TEST_F(LuTestSuiteReportData, RemovesOnlyTheFirstMarkOfALine)
{
    EXPECT_EQ(GetLines(L"x INFO:  a INFO:  b\n"), Lines{L"I:a INFO:  b"});
    EXPECT_EQ(GetLines(L"ERROR: a INFO:  b\n"), Lines{L"I:b"});
    EXPECT_EQ(GetLines(L"INFO:  a ERROR: b\n"), Lines{L"I:a ERROR: b"});
}

TEST_F(LuTestSuiteReportData, RecognisesMarksOnlyInExactSpelling)
{
    EXPECT_EQ(GetLines(L"INFO: a\nERROR:b\nError: c\n"), (Lines{L"E:INFO: a", L"E:ERROR:b", L"E:Error: c"}));
}

TEST_F(LuTestSuiteReportData, SkipsEmptyLinesAndKeepsEmptyTexts)
{
    EXPECT_EQ(GetLines(L"\n\na\n\nINFO:  \n\n"), (Lines{L"E:a", L"I:"}));
    EXPECT_EQ(GetLines(L"\n\n"), Lines());
}

TEST_F(LuTestSuiteReportData, EscapesLines)
{
    EXPECT_EQ(GetLines(L"ERROR: <a> & \"b\" 'c'\n"), Lines{L"E:&lt;a&gt; &amp; &quot;b&quot; &apos;c&apos;"});
}

TEST_F(LuTestSuiteReportData, EndsInAnEllipsisBeyondTheMaximumOfLines)
{
    const std::wstring five = L"ERROR: 1\nERROR: 2\nERROR: 3\nERROR: 4\nERROR: 5\n";
    EXPECT_EQ(GetLines(five), (Lines{L"E:1", L"E:2", L"E:3", L"I:..."}));
    m_setup.messageReportMax = 5;
    EXPECT_EQ(GetLines(five), (Lines{L"E:1", L"E:2", L"E:3", L"E:4", L"E:5"}));
}

TEST_F(LuTestSuiteReportData, HasOnlyAnEllipsisForAMaximumOfZero)
{
    m_setup.messageReportMax = 0;
    EXPECT_EQ(GetLines(L"ERROR: 1\nERROR: 2\n"), Lines{L"I:..."});
    EXPECT_EQ(GetLines(L""), Lines());
    EXPECT_EQ(GetLines(L"\n"), Lines());
}

TEST_F(LuTestSuiteReportData, KeepsEveryLineForANegativeMaximum)
{
    m_setup.messageReportMax = -1;
    EXPECT_EQ(GetLines(std::wstring(1000, L'x') + L"\n" + L"a\nb\nc\nd\ne\n").size(), 6U);
}

TEST_F(LuTestSuiteReportData, PrefersTheLineMaximumOfTheCase)
{
    m_unitTests[0].cases[0].parameters[L"MessageReportMax"] = std::uint32_t{1};
    EXPECT_EQ(GetLines(L"ERROR: 1\nERROR: 2\n"), (Lines{L"E:1", L"I:..."}));
}

TEST_F(LuTestSuiteReportData, KeepsTheReasonForTheEndOfAChildBeyondTheMaximum)
{
    const std::wstring end = L"\t\tERROR: Der Prozess des Testfalls endete mit Status 3\n\t\tINFO:  stderr\n";
    const std::wstring reason = L"E:Der Prozess des Testfalls endete mit Status 3";
    const std::wstring three = L"\t\tINFO:  1\n\t\tINFO:  2\n\t\tINFO:  3\n";
    EXPECT_EQ(GetLines(three + end), (Lines{L"I:1", L"I:2", L"I:3", L"I:...", reason}));
    EXPECT_EQ(GetLines(three + L"\t\tINFO:  4\n" + end), (Lines{L"I:1", L"I:2", L"I:3", L"I:...", reason}));
    m_setup.messageReportMax = 4;
    EXPECT_EQ(GetLines(three + end), (Lines{L"I:1", L"I:2", L"I:3", reason, L"I:..."}));
    m_setup.messageReportMax = 0;
    EXPECT_EQ(GetLines(end), (Lines{L"I:...", reason}));
}

TEST_F(LuTestSuiteReportData, DropsAQuotedReasonBeyondTheMaximum)
{
    m_setup.messageReportMax = 0;
    EXPECT_EQ(GetLines(L"\t\tINFO:  \t\tERROR: Der Prozess des Testfalls endete mit Status 3\n"), Lines{L"I:..."});
}

TEST(LuTestSuiteReportMachine, DescribesTheProcessorAndTheMemory)
{
    const std::wstring text = LuTestSuiteReport::getCPUInfo();
    EXPECT_TRUE(std::regex_match(text, std::wregex(LR"(Model: .*, Cores: [1-9]\d*, Speed \d+\.\d{3} GHz, )"
                                                   LR"(Memory \d+\.\d GB)")));
    EXPECT_FALSE(text.ends_with(L"Memory 0.0 GB"));
}

TEST(LuTestSuiteReportMachine, DescribesGraphicsInOneLineOrNotAtAll)
{
    EXPECT_EQ(LuTestSuiteReport::getGPUInfo().find(L'\n'), std::wstring::npos);
}

} // namespace
