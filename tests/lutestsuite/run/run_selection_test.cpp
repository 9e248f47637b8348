// Tests where a run gets its unit tests from.

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "tests/support/runtest.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SRunResult;
using testing::ElementsAre;

class RunSelection : public RunTest
{
protected:
    /// A data directory with one data-driven unit test of four cases.
    void WriteDataSets()
    {
        m_folder.WriteFile(L"CDataSetModel/a.txt", "gut");
        m_folder.WriteFile(L"CDataSetModel/b.txt", "schlecht");
        m_folder.WriteFile(L"CDataSetModel/c.txt", "anders");
        m_folder.WriteFile(L"CDataSetModel/d.txt", "");
    }

    static std::vector<ECaseRunResult> GetResults(const SRunResult& result)
    {
        std::vector<ECaseRunResult> results;
        for (const LuTestSuiteRun::SCaseInfo& info : result.cases)
        {
            results.push_back(info.result);
        }
        return results;
    }

    ScopedFolder m_folder;
};

TEST_F(RunSelection, FindsDataSetsInTheDataDirectory)
{
    WriteDataSets();

    const SRunResult result = Run(MakeSetup(m_folder.GetPath()));

    EXPECT_THAT(GetResults(result), ElementsAre(ECaseRunResult::Ok, ECaseRunResult::Error, ECaseRunResult::Different,
                                                ECaseRunResult::NoInput));
    EXPECT_EQ(result.cases.at(1).messages, L"\t\tERROR: Inhalt: schlecht\n");
}

TEST_F(RunSelection, FiltersFoundCases)
{
    WriteDataSets();
    LuTestSuiteSetup setup = MakeSetup(m_folder.GetPath());
    setup.includes = {L"CDataSetModel:[a-c]"};
    setup.excludes = {L"b\\.txt$"};

    EXPECT_THAT(GetResults(Run(setup)), ElementsAre(ECaseRunResult::Ok, ECaseRunResult::Different));
}

TEST_F(RunSelection, LimitsTheNumberOfCases)
{
    WriteDataSets();
    LuTestSuiteSetup setup = MakeSetup(m_folder.GetPath());
    setup.params.testCaseMax = 2;

    EXPECT_EQ(Run(setup).cases.size(), 2U);
}

TEST_F(RunSelection, OmitsDisabledCases)
{
    WriteDataSets();
    m_folder.WriteFile(L"CDataSetModel/#ExtraInfo.xml", "<ExtraInfo>"
                                                        "<TestCase name=\"?.txt\"><Enable>false</Enable></TestCase>"
                                                        "<TestCase name=\"c.*\"><Enable>true</Enable></TestCase>"
                                                        "</ExtraInfo>");

    EXPECT_THAT(GetResults(Run(MakeSetup(m_folder.GetPath()))), ElementsAre(ECaseRunResult::Different));
}

TEST_F(RunSelection, ThrowsAMessageThatNamesAnInvalidPattern)
{
    LuTestSuiteSetup setup = MakeSetup(m_folder.GetPath());
    setup.excludes = {L"(offen"};

    try
    {
        Run(setup);
        FAIL() << "no exception";
    }
    catch (const std::wstring& message)
    {
        EXPECT_EQ(LbEncoding::ToUtf8(message), "Ungültiger regulärer Ausdruck '(offen'");
    }
}

TEST_F(RunSelection, PrintsNothingWithoutUnitTests)
{
    const SRunResult result = Run(MakeSetup(m_folder.GetPath()));

    EXPECT_TRUE(m_output.GetLines().empty());
    EXPECT_TRUE(result.cases.empty());
}

TEST_F(RunSelection, TimesARunWithoutUnitTests)
{
    const SRunResult result = Run(MakeSetup(m_folder.GetPath()));

    EXPECT_GT(result.stats.totalTime, 0U);
    EXPECT_EQ(result.stats.startTime.size(), 19U);
    EXPECT_EQ(result.stats.endTime.size(), 19U);
}

TEST_F(RunSelection, UsesAListOfUnitTestsInsteadOfTheDataDirectory)
{
    WriteDataSets();
    LuTestSuiteSetup setup = MakeSetup(m_folder.GetPath());
    setup.unitTests = {MakeUnitTest(L"CPassedModel", {L"eins"})};

    EXPECT_THAT(GetResults(Run(setup)), ElementsAre(ECaseRunResult::Ok));
}

TEST_F(RunSelection, DoesNotFilterAListOfUnitTests)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins", L"zwei mit Lücke"})});
    setup.includes = {L"passt auf nichts"};
    setup.excludes = {L"eins"};
    setup.params.testCaseMax = 1;

    EXPECT_THAT(GetResults(Run(setup)), ElementsAre(ECaseRunResult::Ok, ECaseRunResult::Ok));
}

TEST_F(RunSelection, DoesNotCompilePatternsForAListOfUnitTests)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins"})});
    setup.includes = {L"["};

    EXPECT_THAT(GetResults(Run(setup)), ElementsAre(ECaseRunResult::Ok));
}

TEST_F(RunSelection, RunsDisabledCasesOfAListOfUnitTests)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins"})});
    setup.unitTests[0].cases[0].parameters[L"Enable"] = false;

    EXPECT_THAT(GetResults(Run(setup)), ElementsAre(ECaseRunResult::Ok));
}

TEST_F(RunSelection, RunsSequentialCasesAfterParallelCases)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins", L"zwei mit Lücke"}),
                                        MakeUnitTest(L"CResultModel", {L"bestanden", L"ohne Antwort"})});
    setup.params.parallel = true;
    setup.params.workerThreads = 1;
    setup.unitTests[0].cases[0].parameters[L"Parallel"] = false;
    setup.unitTests[1].cases[1].parameters[L"Parallel"] = true;
    setup.unitTests[1].cases[0].parameters[L"TimeOutSec"] = 7U;

    Run(setup);

    const std::wstring text = m_output.GetText();
    const std::size_t start = text.find(L"CPassedModel\n");
    ASSERT_NE(start, std::wstring::npos);
    EXPECT_EQ(LbEncoding::ToUtf8(text.substr(start, text.find(L"\n\n") - start)), "CPassedModel\n"
                                                                                  "\tzwei mit Lücke... OK\n"
                                                                                  "CResultModel\n"
                                                                                  "\tbestanden... OK\n"
                                                                                  "\tohne Antwort... OK\n"
                                                                                  "CPassedModel\n"
                                                                                  "\teins... OK");
}

TEST_F(RunSelection, TreatsANullParallelParameterAsFalse)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins", L"zwei mit Lücke"})});
    setup.params.parallel = true;
    setup.params.workerThreads = 1;
    setup.unitTests[0].cases[0].parameters[L"Parallel"] = LbVariant();

    Run(setup);

    EXPECT_LT(m_output.GetText().find(L"zwei mit Lücke"), m_output.GetText().find(L"eins"));
}

TEST_F(RunSelection, KeepsRecordsInPlanOrderRegardlessOfTheOrderOfExecution)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CResultModel", {L"abweichend", L"bestanden"})});
    setup.params.parallel = true;
    setup.params.workerThreads = 1;
    setup.unitTests[0].cases[0].parameters[L"Parallel"] = false;

    EXPECT_THAT(GetResults(Run(setup)), ElementsAre(ECaseRunResult::Different, ECaseRunResult::Ok));
}

TEST_F(RunSelection, IgnoresTheParallelParameterOfCasesInASequentialRun)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins", L"zwei mit Lücke"})});
    setup.unitTests[0].cases[1].parameters[L"Parallel"] = true;

    Run(setup);

    EXPECT_TRUE(m_output.GetText().starts_with(L"CPassedModel\n\teins... OK\n\tzwei mit Lücke... OK\n"));
}

} // namespace
