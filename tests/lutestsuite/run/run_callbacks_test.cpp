#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/os/files.h"
#include "tests/support/runtest.h"
#include "tests/support/scopedfolder.h"
#include "tests/support/scopedworkingdirectory.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using testing::ElementsAre;

class RunCallbacks : public RunTest
{
protected:
    /// Five cases of three unit tests.
    static LuTestSuiteSetup MakeFiveCases()
    {
        return MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins", L"zwei mit Lücke"}),
                          MakeUnitTest(L"CResultModel", {L"abweichend", L"bestanden"}),
                          MakeUnitTest(L"CFailedModel", {L"allein"})});
    }

    /// Cancels the run as soon as `count` cases are finished.
    void CancelAfter(LuTestSuiteSetup& setup, std::size_t count)
    {
        setup.resultCallback = [this](ECaseRunResult result) { m_results.push_back(result); };
        setup.checkCallback = [this, count] { return m_results.size() >= count; };
    }

    std::vector<ECaseRunResult> m_results;
};

TEST_F(RunCallbacks, ReceiveEachResultInOrder)
{
    LuTestSuiteSetup setup = MakeFiveCases();
    setup.resultCallback = [this](ECaseRunResult result) { m_results.push_back(result); };

    Run(setup);

    EXPECT_THAT(m_results, ElementsAre(ECaseRunResult::Ok, ECaseRunResult::Ok, ECaseRunResult::Different,
                                       ECaseRunResult::Ok, ECaseRunResult::Error));
}

TEST_F(RunCallbacks, AreCalledAfterTheResultIsPrinted)
{
    std::wstring textAtNotification;
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins"})});
    setup.resultCallback = [&](ECaseRunResult) { textAtNotification = m_output.GetText(); };

    Run(setup);

    EXPECT_EQ(textAtNotification, L"CPassedModel\n\teins... OK\n");
}

TEST_F(RunCallbacks, AreAskedBeforeTheHeadingIsPrinted)
{
    std::wstring textAtQuestion = L"nie gefragt";
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins"})});
    setup.checkCallback = [&] {
        textAtQuestion = m_output.GetText();
        return true;
    };

    Run(setup);

    EXPECT_EQ(textAtQuestion, L"");
}

TEST_F(RunCallbacks, CancelARunBeforeItsThirdCase)
{
    LuTestSuiteSetup setup = MakeFiveCases();
    CancelAfter(setup, 2);

    const auto result = Run(setup);

    ASSERT_EQ(result.cases.size(), 5U);
    for (std::size_t index = 0; index < 5; ++index)
    {
        EXPECT_EQ(result.cases[index].executed, index < 2) << index;
        EXPECT_EQ(result.cases[index].result, index < 2 ? ECaseRunResult::Ok : ECaseRunResult::Unknown) << index;
    }
    EXPECT_EQ(m_results.size(), 2U);
    EXPECT_EQ(result.stats.total.executed, 2U);
}

TEST_F(RunCallbacks, PrintACancellationInPlaceOfTheOtherCases)
{
    LuTestSuiteSetup setup = MakeFiveCases();
    CancelAfter(setup, 2);

    Run(setup);

    EXPECT_EQ(m_output.GetText(), L"CPassedModel\n"
                                  L"\teins... OK\n"
                                  L"\tzwei mit Lücke... OK\n"
                                  L"\tAusführung abgebrochen.\n"
                                  L"\n"
                                  L"Zusammenfassung\n"
                                  L"\tAusgeführt:\t1 Klasse, 2 Tests\n"
                                  L"\tErfolgreich:\t1 Klasse, 2 Tests\n");
    EXPECT_EQ(GetLinesFrom(L"\tAusführung abgebrochen.\n").at(0),
              CapturedOutput::BoldColored(L"\tAusführung abgebrochen.\n", LuColor::c_GRAY));
}

TEST_F(RunCallbacks, SkipACaseThatIsCanceledWhileItsHeaderIsPrinted)
{
    // The run asks once before the header and again before the case.
    std::size_t questions = 0;
    LuTestSuiteSetup setup = MakeFiveCases();
    setup.checkCallback = [&] { return ++questions > 1; };

    const auto result = Run(setup);

    EXPECT_EQ(result.cases.at(0).result, ECaseRunResult::Unknown);
    EXPECT_TRUE(result.cases.at(0).executed);
    EXPECT_FALSE(result.cases.at(1).executed);
}

TEST_F(RunCallbacks, RaiseBadFunctionCallWithoutACancellationQuery)
{
    LuTestSuiteSetup setup = MakeFiveCases();
    setup.checkCallback = nullptr;

    EXPECT_THROW(Run(setup), std::bad_function_call);
}

TEST_F(RunCallbacks, RaiseBadFunctionCallWithoutANotification)
{
    LuTestSuiteSetup setup = MakeFiveCases();
    setup.resultCallback = nullptr;

    EXPECT_THROW(Run(setup), std::bad_function_call);
}

TEST_F(RunCallbacks, RestoreTheWorkingDirectoryWhenTheyThrow)
{
    // The working directory must differ from the executable's folder, where cases run.
    const ScopedFolder folder;
    const ScopedWorkingDirectory workingDirectory(folder.GetPath());
    const std::wstring before = LbOs::GetWorkingDirectory();
    LuTestSuiteEnvironment environment;
    LuTestSuiteSetup setup = MakeFiveCases();
    setup.resultCallback = [&before](ECaseRunResult) {
        EXPECT_NE(LbOs::GetWorkingDirectory(), before);
        throw 42;
    };

    EXPECT_THROW(LuTestSuiteRun::Run(setup, environment), int);

    EXPECT_EQ(LbOs::GetWorkingDirectory(), before);
}

} // namespace
