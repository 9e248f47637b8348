#include <cwctype>
#include <string>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "tests/modules/outcomes.h"
#include "tests/support/runtest.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SCaseInfo;

class RunOutcomes : public RunTest, public testing::WithParamInterface<models::SOutcome>
{
};

/// Makes a name that GoogleTest accepts.
std::string getTestName(const testing::TestParamInfo<models::SOutcome>& info)
{
    std::string name = std::to_string(info.index) + "_";
    for (const wchar_t character : std::wstring(info.param.className) + L"_" + info.param.caseName)
    {
        name += character < 128 && std::iswalnum(static_cast<wint_t>(character)) ? static_cast<char>(character) : '_';
    }
    return name;
}

TEST_P(RunOutcomes, MatchTheTableOfOutcomes)
{
    const models::SOutcome& expected = GetParam();

    const SCaseInfo info = RunCase(expected.className, expected.caseName);

    EXPECT_EQ(info.result, expected.result);
    EXPECT_EQ(LbEncoding::ToUtf8(info.messages), LbEncoding::ToUtf8(expected.messages));
    EXPECT_TRUE(info.executed);
    EXPECT_FALSE(info.warning);
}

INSTANTIATE_TEST_SUITE_P(Models, RunOutcomes, testing::ValuesIn(models::c_Outcomes), getTestName);

class Run : public RunTest
{
};

TEST_F(Run, GivesOneRecordPerCaseInPlanOrder)
{
    const auto result = RunTest::Run(MakeSetup(
        {MakeUnitTest(L"CPassedModel", {L"zwei mit Lücke", L"eins"}), MakeUnitTest(L"CFailedModel", {L"allein"})}));

    ASSERT_EQ(result.cases.size(), 3U);
    EXPECT_EQ(result.cases[0].unitTest, 0U);
    EXPECT_EQ(result.cases[0].testCase, 0U);
    EXPECT_EQ(result.cases[1].unitTest, 0U);
    EXPECT_EQ(result.cases[1].testCase, 1U);
    EXPECT_EQ(result.cases[2].unitTest, 1U);
    EXPECT_EQ(result.cases[2].testCase, 0U);
}

TEST_F(Run, DoesNotSetThreadAndProcessForCasesOnTheCallingThread)
{
    const SCaseInfo info = RunCase(L"CPassedModel", L"eins");

    EXPECT_EQ(info.threadIndex, -1);
    EXPECT_EQ(info.processIndex, -1);
}

TEST_F(Run, TimesTheSubtest)
{
    EXPECT_GT(RunCase(L"CPassedModel", L"eins").time, 0U);
}

TEST_F(Run, TimesACaseWhoseClassThrows)
{
    EXPECT_GT(RunCase(L"CRunUnitTestThrows", L"Fall").time, 0U);
}

TEST_F(Run, RecordsNoTimeForACaseThatNeverRan)
{
    EXPECT_EQ(RunCase(L"CUnknownModel", L"Fall").time, 0U);
}

TEST_F(Run, GivesEachCaseItsOwnMessageStream)
{
    const auto result = RunTest::Run(MakeSetup({MakeUnitTest(L"CMessageModel", {L"Fehler", L"Information"})}));

    EXPECT_EQ(result.cases.at(0).messages, L"\t\tERROR: 3 statt 4\n");
    EXPECT_EQ(result.cases.at(1).messages, L"\t\tINFO:  Größe 12 µm\n");
}

TEST_F(Run, KeepsMessagesThatFitExactly)
{
    EXPECT_EQ(RunCase(L"CLongMessageModel", L"genau die Grenze").messages.size(), 1'048'575U);
}

TEST_F(Run, CutsMessagesAtTheirLimit)
{
    const std::wstring messages = RunCase(L"CLongMessageModel", L"über der Grenze").messages;

    EXPECT_EQ(messages.size(), 1'048'575U);
    EXPECT_EQ(messages.substr(messages.size() - 2), L"ab");
}

TEST_F(Run, NeverCutsACharacterInHalf)
{
    const std::wstring messages = RunCase(L"CLongMessageModel", L"Zeichenpaar auf der Grenze").messages;

    EXPECT_EQ(messages.size(), 1'048'574U);
    EXPECT_EQ(messages.back(), L'a');
}

TEST_F(Run, DiscardsTheLongMessagesOfTheCaseBefore)
{
    const auto result = RunTest::Run(MakeSetup({MakeUnitTest(L"CLongMessageModel", {L"über der Grenze", L"kurz"})}));

    EXPECT_EQ(result.cases.at(1).messages, L"kurz");
}

TEST_F(Run, RunsACaseWithANameOf1023Characters)
{
    const SCaseInfo info = RunCase(L"CLongNameModel", std::wstring(1023, L'n'));

    EXPECT_EQ(info.result, ECaseRunResult::Ok);
    EXPECT_EQ(info.messages, L"\t\tINFO:  gelaufen\n");
}

TEST_F(Run, DoesNotRunACaseWithANameOf1024Characters)
{
    const SCaseInfo info = RunCase(L"CLongNameModel", std::wstring(1024, L'n'));

    EXPECT_EQ(info.result, ECaseRunResult::Unknown);
    EXPECT_EQ(info.messages.find(L"gelaufen"), std::wstring::npos);
    EXPECT_EQ(info.time, 0U);
}

TEST_F(Run, CountsACaseWithTooLongANameAsExecuted)
{
    const auto result = RunTest::Run(MakeSetup({MakeUnitTest(L"CLongNameModel", {std::wstring(1024, L'n')})}));

    EXPECT_TRUE(result.cases.at(0).executed);
    EXPECT_EQ(result.stats.total.GetCount(ECaseRunResult::Unknown), 1U);
}

TEST_F(Run, LooksForAClassWithANameOf1023Characters)
{
    EXPECT_EQ(RunCase(std::wstring(1023, L'K'), L"Fall").result, ECaseRunResult::NoMatchingCase);
}

TEST_F(Run, DoesNotLookForAClassWithANameOf1024Characters)
{
    EXPECT_EQ(RunCase(std::wstring(1024, L'K'), L"Fall").result, ECaseRunResult::Unknown);
}

TEST_F(Run, RunsWithADataDirectoryOf1023Characters)
{
    LuTestSuite::SUnitTest unitTest = MakeUnitTest(L"CPassedModel", {L"eins"});
    unitTest.dataDirectory.assign(1023, L'd');

    EXPECT_EQ(RunTest::Run(MakeSetup({unitTest})).cases.at(0).result, ECaseRunResult::Ok);
}

TEST_F(Run, DoesNotRunWithADataDirectoryOf1024Characters)
{
    LuTestSuite::SUnitTest unitTest = MakeUnitTest(L"CPassedModel", {L"eins"});
    unitTest.dataDirectory.assign(1024, L'd');

    EXPECT_EQ(RunTest::Run(MakeSetup({unitTest})).cases.at(0).result, ECaseRunResult::Unknown);
}

TEST_F(Run, ContinuesAfterACaseWhoseNameIsTooLong)
{
    const auto result = RunTest::Run(MakeSetup({MakeUnitTest(L"CNameModel", {std::wstring(1024, L'n'), L"Groß"})}));

    EXPECT_EQ(result.cases.at(1).result, ECaseRunResult::Ok);
}

} // namespace
