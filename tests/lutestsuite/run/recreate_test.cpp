#include <algorithm>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/iunittestrecreate.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/luunittest.h"
#include "base/os/files.h"
#include "tests/support/runtest.h"
#include "tests/support/scopedfolder.h"
#include "tests/support/scopedworkingdirectory.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::ETargetSystem;
using LuTestSuiteRun::SCallbacks;
using testing::Each;
using testing::ElementsAre;

std::vector<std::wstring> s_Calls;

/// Records each call. "erneuerbar", "wirft" and "Abfrage wirft" are the sub-tests 1 to 3; sub-test 0 has no data.
/// Sub-test 5 records the working directory and changes it.
class CRecreateModel : public LuUnitTest, public IUnitTestRecreate
{
    LB_RTTI(CRecreateModel)

public:
    CRecreateModel() { s_Calls.emplace_back(L"construct"); }
    ~CRecreateModel() override { s_Calls.emplace_back(L"destroy"); }

    void SetMessageStream(LuStreamWriteText* stream) override
    {
        s_Calls.emplace_back(L"SetMessageStream");
        LuUnitTest::SetMessageStream(stream);
    }

    void SetDataDirectory(const std::wstring& directory) override
    {
        s_Calls.push_back(L"SetDataDirectory " + directory);
        LuUnitTest::SetDataDirectory(directory);
    }

    void InitSubtests() override
    {
        s_Calls.emplace_back(L"InitSubtests");
        for (const wchar_t* name : {L"ohne Daten", L"erneuerbar", L"wirft", L"Abfrage wirft", L"erneuerbar", L"Umzug"})
        {
            AddSubtest(name, [] { s_Calls.emplace_back(L"sub-test"); });
        }
    }

    void PrepareSubtest() override { s_Calls.emplace_back(L"PrepareSubtest"); }

    bool IsRecreatable(std::uint32_t subtest) const override
    {
        s_Calls.push_back(LbFormat(L"IsRecreatable %u", subtest));
        if (subtest == 3)
        {
            throw std::runtime_error("kaputt");
        }
        return subtest != 0;
    }

    void Recreate(std::uint32_t subtest) override
    {
        s_Calls.push_back(
            LbFormat(L"Recreate %u for %u, %d", subtest, GetRequest().targetSystem, GetRequest().option ? 1 : 0));
        if (subtest == 2)
        {
            throw 42;
        }
        if (subtest == 5)
        {
            s_Calls.push_back(LbOs::GetWorkingDirectory());
            LbOs::SetWorkingDirectory(LbOs::GetTemporaryDirectory());
        }
    }
};
LB_RTTI_CLASS(CRecreateModel, LuUnitTest)

/// Derives from LuUnitTest, but its class record does not say so.
class CUndeclaredModel : public LuUnitTest, public IUnitTestRecreate
{
    LB_RTTI(CUndeclaredModel)

    void InitSubtests() override
    {
        AddSubtest(L"erneuerbar", [] {});
    }
    bool IsRecreatable(std::uint32_t /*subtest*/) const override { return true; }
    void Recreate(std::uint32_t /*subtest*/) override { s_Calls.emplace_back(L"Recreate"); }
};
LB_RTTI_CLASS(CUndeclaredModel, IObject)

constexpr auto Plain = CapturedOutput::Plain;
constexpr auto Bold = CapturedOutput::Bold;

CapturedOutput::SLine Warned(std::wstring text)
{
    return CapturedOutput::BoldColored(std::move(text), LuColor::c_GOLDENROD);
}

CapturedOutput::SLine Begun(std::wstring text)
{
    return CapturedOutput::BoldColored(std::move(text), LuColor::c_BLUE);
}

CapturedOutput::SLine Renewed()
{
    return CapturedOutput::BoldColored(L"\t\tDatensatz wurde erneuert.\n", LuColor::c_GREEN);
}

CapturedOutput::SLine Canceled()
{
    return CapturedOutput::BoldColored(L"\tAusführung abgebrochen.\n", LuColor::c_GRAY);
}

CapturedOutput::SLine Ended()
{
    return Plain(L"\nNeuerzeugen der Testfälle beendet.\n");
}

class RunRecreate : public RunTest
{
protected:
    RunRecreate() { s_Calls.clear(); }

    /// The model with these cases, in the directory "Daten".
    static LuTestSuite::SUnitTest MakeModel(const std::vector<std::wstring>& caseNames)
    {
        LuTestSuite::SUnitTest unitTest = MakeUnitTest(L"CRecreateModel", caseNames);
        unitTest.dataDirectory = L"Daten";
        return unitTest;
    }

    void Recreate(const std::vector<LuTestSuite::SUnitTest>& unitTests)
    {
        LuTestSuiteRun::Recreate(m_environment, unitTests, ETargetSystem(), false, m_callbacks);
    }

    std::size_t m_questions = 0;
    std::vector<ECaseRunResult> m_results;
    SCallbacks m_callbacks = {[this] {
                                  ++m_questions;
                                  return false;
                              },
                              [this](ECaseRunResult result) { m_results.push_back(result); }};
};

TEST_F(RunRecreate, RenewsACaseUnderTheHeadingOfItsClass)
{
    Recreate({MakeModel({L"erneuerbar"})});

    EXPECT_THAT(m_output.GetLines(),
                ElementsAre(Bold(L"CRecreateModel:\n"), Begun(L"\terneuerbar...\n"), Renewed(), Ended()));
}

TEST_F(RunRecreate, CallsTheUnitTestInOrder)
{
    Recreate({MakeModel({L"erneuerbar"})});

    EXPECT_THAT(s_Calls, ElementsAre(L"construct", L"SetDataDirectory Daten", L"InitSubtests", L"IsRecreatable 1",
                                     L"Recreate 1 for 0, 0", L"destroy"));
}

TEST_F(RunRecreate, PassesTheTargetSystemAndTheOptionToTheUnitTest)
{
    LuTestSuiteRun::Recreate(m_environment, {MakeModel({L"erneuerbar"})}, ETargetSystem(7), true, m_callbacks);

    EXPECT_THAT(s_Calls, testing::Contains(L"Recreate 1 for 7, 1"));
}

TEST_F(RunRecreate, UsesTheFirstOfTwoSubtestsWithTheSameName)
{
    Recreate({MakeModel({L"erneuerbar", L"erneuerbar"})});

    EXPECT_THAT(s_Calls, testing::Not(testing::Contains(L"IsRecreatable 4")));
}

TEST_F(RunRecreate, RenewsNothingIfTheCaseHasNoRenewableData)
{
    Recreate({MakeModel({L"ohne Daten"})});

    EXPECT_THAT(m_output.GetLines(),
                ElementsAre(Bold(L"CRecreateModel:\n"),
                            Warned(L"\tSubtest 'ohne Daten' hat keine erneuerbaren Daten.\n"), Ended()));
    EXPECT_EQ(s_Calls.back(), L"destroy");
}

TEST_F(RunRecreate, RenewsNothingForAnUnknownSubtest)
{
    Recreate({MakeModel({L"Erneuerbar"})});

    EXPECT_THAT(m_output.GetLines(),
                ElementsAre(Bold(L"CRecreateModel:\n"),
                            Warned(L"\tSubtest 'Erneuerbar' hat keine erneuerbaren Daten.\n"), Ended()));
}

TEST_F(RunRecreate, RenewsNothingInAUnitTestWithoutTheRecreateInterface)
{
    m_environment.LoadDLL(L"resultmodels", false);

    Recreate({MakeUnitTest(L"CPassedModel", {L"eins", L"zwei mit Lücke"})});

    EXPECT_THAT(m_output.GetLines(),
                ElementsAre(Bold(L"CPassedModel:\n"), Warned(L"\tSubtest 'eins' hat keine erneuerbaren Daten.\n"),
                            Warned(L"\tSubtest 'zwei mit Lücke' hat keine erneuerbaren Daten.\n"), Ended()));
    EXPECT_THAT(m_results, ElementsAre(ECaseRunResult::Ok, ECaseRunResult::Ok));
}

TEST_F(RunRecreate, ReportsClassesThatCannotBeCreated)
{
    m_environment.LoadDLL(L"namemodels", false);

    Recreate({MakeUnitTest(L"CUnknownModel", {L"Fall"}), MakeUnitTest(L"CNoUnitTest", {L"Fall"}),
              MakeUnitTest(L"CNotCreatableModel", {L"Fall"})});

    EXPECT_THAT(m_output.GetLines(),
                ElementsAre(Bold(L"CUnknownModel:\n"),
                            Warned(L"\tFehler: Unit-Test 'CUnknownModel' konnte nicht instanziert werden.\n"),
                            Bold(L"CNoUnitTest:\n"),
                            Warned(L"\tFehler: Unit-Test 'CNoUnitTest' konnte nicht instanziert werden.\n"),
                            Bold(L"CNotCreatableModel:\n"),
                            Warned(L"\tFehler: Unit-Test 'CNotCreatableModel' konnte nicht instanziert werden.\n"),
                            Ended()));
}

TEST_F(RunRecreate, ReportsAClassWhoseRecordDeclaresNoUnitTest)
{
    Recreate({MakeUnitTest(L"CUndeclaredModel", {L"erneuerbar"})});

    EXPECT_THAT(m_output.GetLines(),
                ElementsAre(Bold(L"CUndeclaredModel:\n"),
                            Warned(L"\tFehler: Unit-Test 'CUndeclaredModel' konnte nicht instanziert werden.\n"),
                            Ended()));
    EXPECT_TRUE(s_Calls.empty());
}

TEST_F(RunRecreate, GoesOnAfterAnExceptionOfRecreate)
{
    Recreate({MakeModel({L"wirft", L"erneuerbar"})});

    EXPECT_THAT(m_output.GetLines(), ElementsAre(Bold(L"CRecreateModel:\n"), Begun(L"\twirft...\n"),
                                                 Warned(L"\t\tFehler: Exception während dem Neuerzeugen.\n"),
                                                 Begun(L"\terneuerbar...\n"), Renewed(), Ended()));
    EXPECT_EQ(std::ranges::count(s_Calls, L"destroy"), 2);
}

TEST_F(RunRecreate, GoesOnAfterAnExceptionOfIsRecreatable)
{
    Recreate({MakeModel({L"Abfrage wirft", L"erneuerbar"})});

    EXPECT_THAT(m_output.GetLines(),
                ElementsAre(Bold(L"CRecreateModel:\n"), Warned(L"\t\tFehler: Exception während dem Neuerzeugen.\n"),
                            Begun(L"\terneuerbar...\n"), Renewed(), Ended()));
}

TEST_F(RunRecreate, ReportsExceptionsFromEveryCallOfTheUnitTest)
{
    m_environment.LoadDLL(L"exceptionmodels", false);
    for (const wchar_t* className : {L"CConstructorThrows", L"CSetDataDirectoryThrows", L"CInitSubtestsThrows",
                                     L"CGetSubtestCountThrows", L"CGetSubtestNameThrows"})
    {
        m_output.Clear();

        Recreate({MakeUnitTest(className, {L"Fall"})});

        EXPECT_THAT(m_output.GetLines(),
                    ElementsAre(Bold(className + std::wstring(L":\n")),
                                Warned(L"\t\tFehler: Exception während dem Neuerzeugen.\n"), Ended()));
    }
}

TEST_F(RunRecreate, DoesNotRunTheCases)
{
    m_environment.LoadDLL(L"exceptionmodels", false);

    // Each model throws in an operation that only a run calls.
    Recreate({MakeUnitTest(L"CSetMessageStreamThrows", {L"Fall"}), MakeUnitTest(L"CPrepareSubtestThrows", {L"Fall"}),
              MakeUnitTest(L"CRunUnitTestThrows", {L"Fall"})});

    EXPECT_EQ(m_output.GetText().find(L"Exception"), std::wstring::npos);
}

TEST_F(RunRecreate, NotifiesOkAfterEachCaseRegardlessOfItsResult)
{
    Recreate({MakeModel({L"erneuerbar", L"ohne Daten", L"wirft"}), MakeUnitTest(L"CUnknownModel", {L"Fall"})});

    EXPECT_EQ(m_results.size(), 4U);
    EXPECT_THAT(m_results, Each(ECaseRunResult::Ok));
}

TEST_F(RunRecreate, NotifiesAfterTheUnitTestIsDestroyed)
{
    m_callbacks.caseFinished = [](ECaseRunResult) { s_Calls.emplace_back(L"notified"); };

    Recreate({MakeModel({L"erneuerbar"})});

    EXPECT_THAT(std::vector(s_Calls.end() - 2, s_Calls.end()), ElementsAre(L"destroy", L"notified"));
}

TEST_F(RunRecreate, MakesAFreshUnitTestForEachCase)
{
    Recreate({MakeModel({L"erneuerbar", L"ohne Daten"})});

    EXPECT_EQ(std::ranges::count(s_Calls, L"construct"), 2);
    EXPECT_EQ(std::ranges::count(s_Calls, L"destroy"), 2);
}

TEST_F(RunRecreate, PrintsOnlyTheFirstHeadingIfCanceledBeforeTheFirstCase)
{
    m_callbacks.isCanceled = [] { return true; };

    Recreate({MakeModel({L"erneuerbar"}), MakeModel({L"erneuerbar"})});

    EXPECT_THAT(m_output.GetLines(), ElementsAre(Bold(L"CRecreateModel:\n"), Canceled()));
    EXPECT_TRUE(m_results.empty());
    EXPECT_TRUE(s_Calls.empty());
}

TEST_F(RunRecreate, KeepsCompletedCasesWhenCanceled)
{
    m_callbacks.isCanceled = [this] { return m_results.size() == 1; };

    Recreate({MakeModel({L"erneuerbar", L"ohne Daten"}), MakeModel({L"erneuerbar"})});

    EXPECT_THAT(m_output.GetLines(),
                ElementsAre(Bold(L"CRecreateModel:\n"), Begun(L"\terneuerbar...\n"), Renewed(), Canceled()));
    EXPECT_EQ(m_results.size(), 1U);
}

TEST_F(RunRecreate, AsksForCancellationOncePerCase)
{
    Recreate({MakeModel({}), MakeModel({L"erneuerbar", L"wirft"})});

    EXPECT_EQ(m_questions, 2U);
}

TEST_F(RunRecreate, PrintsTheHeadingOfAUnitTestWithoutCases)
{
    Recreate({MakeModel({})});

    EXPECT_THAT(m_output.GetLines(), ElementsAre(Bold(L"CRecreateModel:\n"), Ended()));
}

TEST_F(RunRecreate, EndsAtOnceWithoutUnitTests)
{
    Recreate({});

    EXPECT_THAT(m_output.GetLines(), ElementsAre(Ended()));
    EXPECT_EQ(m_questions, 0U);
}

TEST_F(RunRecreate, ShowsPercentSignsOfNamesAsTheyAre)
{
    Recreate({MakeUnitTest(L"100%s", {L"%d%n"}), MakeModel({L"%d%n"})});

    EXPECT_THAT(
        m_output.GetLines(),
        ElementsAre(Bold(L"100%s:\n"), Warned(L"\tFehler: Unit-Test '100%s' konnte nicht instanziert werden.\n"),
                    Bold(L"CRecreateModel:\n"), Warned(L"\tSubtest '%d%n' hat keine erneuerbaren Daten.\n"), Ended()));
}

TEST_F(RunRecreate, RaisesBadFunctionCallWithoutACancellationQuery)
{
    m_callbacks.isCanceled = nullptr;

    EXPECT_THROW(Recreate({MakeModel({L"erneuerbar"})}), std::bad_function_call);
}

TEST_F(RunRecreate, RaisesBadFunctionCallWithoutANotification)
{
    m_callbacks.caseFinished = nullptr;

    EXPECT_THROW(Recreate({MakeModel({L"erneuerbar"})}), std::bad_function_call);
}

TEST_F(RunRecreate, NeedsNoCallbacksWithoutCases)
{
    m_callbacks = {};

    EXPECT_NO_THROW(Recreate({MakeModel({})}));
}

/// Tests that start in a folder other than the executable's.
class RunRecreateWorkingDirectory : public RunRecreate
{
protected:
    ScopedFolder m_folder;
    ScopedWorkingDirectory m_workingDirectory{m_folder.GetPath()};
    std::wstring m_before = LbOs::GetWorkingDirectory();
    LuTestSuiteEnvironment m_startedHere;
};

TEST_F(RunRecreateWorkingDirectory, IsTheExecutablesFolderUntilTheFormerOneIsRestored)
{
    std::wstring meanwhile;
    m_callbacks.caseFinished = [&](ECaseRunResult) { meanwhile = LbOs::GetWorkingDirectory(); };

    LuTestSuiteRun::Recreate(m_startedHere, {MakeModel({L"erneuerbar"})}, ETargetSystem(), false, m_callbacks);

    EXPECT_EQ(meanwhile + LbPath::c_Separator, LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable));
    EXPECT_EQ(LbOs::GetWorkingDirectory(), m_before);
}

TEST_F(RunRecreateWorkingDirectory, IsTheExecutablesFolderAfterACaseThatChangesIt)
{
    LuTestSuiteRun::Recreate(m_startedHere, {MakeModel({L"Umzug", L"Umzug"})}, ETargetSystem(), false, m_callbacks);

    const std::wstring directory = LbPath::WithoutSeparator(LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable));
    EXPECT_EQ(std::ranges::count(s_Calls, directory), 2);
    EXPECT_EQ(LbOs::GetWorkingDirectory(), m_before);
}

TEST_F(RunRecreateWorkingDirectory, IsRestoredWhenACallbackThrows)
{
    m_callbacks.caseFinished = [](ECaseRunResult) { throw 42; };

    EXPECT_THROW(
        LuTestSuiteRun::Recreate(m_startedHere, {MakeModel({L"erneuerbar"})}, ETargetSystem(), false, m_callbacks),
        int);

    EXPECT_EQ(LbOs::GetWorkingDirectory(), m_before);
}

TEST_F(RunRecreateWorkingDirectory, IsRestoredWhenCanceled)
{
    m_callbacks.isCanceled = [] { return true; };

    LuTestSuiteRun::Recreate(m_startedHere, {MakeModel({L"erneuerbar"})}, ETargetSystem(), false, m_callbacks);

    EXPECT_EQ(LbOs::GetWorkingDirectory(), m_before);
}

} // namespace
