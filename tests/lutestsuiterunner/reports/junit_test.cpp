#include "testing/lutestsuiterunner/reports/junit.h"

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/xmlnode.h"
#include "testing/lutestsuiterunner/model/textescape.h"
#include "testing/lutestsuiterunner/reports/xmltext.h"
#include "tests/lutestsuiterunner/runstatemaker.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using Runner::EAttemptKind;

/// The report of a run, as a reader of XML sees it.
class CReport
{
public:
    explicit CReport(const Runner::CRunState& state, std::size_t limit = Runner::c_JunitLimit,
                     const Runner::SOpenCases& open = {})
    {
        Runner::WriteJunit(m_folder.GetPathOf(L"junit.xml"), state, limit, open);
        m_document.Load(m_folder.GetPathOf(L"junit.xml"), "testsuites");
    }

    XMLNode GetRoot() const { return m_document.GetRoot(); }

    XMLNode FindSuite(const std::wstring& name) const { return find(GetRoot(), "testsuite", name); }

    XMLNode FindCase(const std::wstring& suite, const std::wstring& name) const
    {
        return find(FindSuite(suite), "testcase", name);
    }

    std::string GetBytes() const { return LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"junit.xml")); }

private:
    static XMLNode find(XMLNode parent, const char* element, const std::wstring& name)
    {
        for (const XMLNode child : parent.GetChildren(element))
        {
            if (child.GetAttribute("name") == name)
            {
                return child;
            }
        }
        return {};
    }

    ScopedFolder m_folder;
    XMLDocument m_document;
};

std::wstring getCounts(const XMLNode& node)
{
    return node.GetAttribute("tests") + L" " + node.GetAttribute("failures") + L" " + node.GetAttribute("errors") +
           L" " + node.GetAttribute("skipped");
}

TEST(RunnerJunit, HasASuiteNamedAfterTheClassOfEachUnitTest)
{
    CRunStateMaker run;
    run.RunRest();
    const CReport report(run.Get());

    // If a class is in two folders, the name of each of its suites contains the folder.
    EXPECT_EQ(getCounts(report.FindSuite(L"a/CFirst")), L"2 0 0 0");
    EXPECT_EQ(getCounts(report.FindSuite(L"b/CFirst")), L"1 0 0 0");
    EXPECT_EQ(getCounts(report.FindSuite(L"CSecond")), L"4 0 0 1");
    EXPECT_EQ(getCounts(report.GetRoot()), L"7 0 0 ");
    EXPECT_EQ(report.FindSuite(L"CSecond").GetAttribute("hostname"), L"Rechner");
    EXPECT_EQ(report.FindSuite(L"CSecond").GetAttribute("timestamp"), L"2024-01-02T03:04:05");
}

TEST(RunnerJunit, GivesTimeAndFileOfACase)
{
    Runner::SPlan plan = MakeSamplePlan();
    plan.workingDirectory = plan.dataDirectory;
    CRunStateMaker run(plan);
    run.RunRest();
    const CReport report(run.Get());
    const XMLNode testCase = report.FindCase(L"a/CFirst", L"zwei.txt");

    EXPECT_EQ(testCase.GetAttribute("time"), L"0.002");
    EXPECT_EQ(testCase.GetAttribute("file"), L"a/CFirst/zwei.txt");
    EXPECT_EQ(testCase.GetAttribute("classname"), L"a/CFirst");
    EXPECT_TRUE(testCase.GetFirstChild().IsEmpty());
    EXPECT_FALSE(report.FindCase(L"CSecond", L"x.dat").HasAttribute("file"));
}

TEST(RunnerJunit, ShowsWhyACaseFailed)
{
    CRunStateMaker run;
    run.RunCase(0, ECaseRunResult::Different);
    Runner::SCaseEnded crashed = MakeEnd(1, ECaseRunResult::Unknown);
    crashed.info.messages.clear();
    crashed.reason = L"Signal 11";
    crashed.stacks = L"oben <main>\nunten\n";
    crashed.output = L"letzte Zeile\n";
    run.RunCase(crashed);
    run.RunRest();
    const CReport report(run.Get());
    const XMLNode failure = report.FindCase(L"a/CFirst", L"eins.txt").GetChild("failure");
    const XMLNode error = report.FindCase(L"a/CFirst", L"zwei.txt").GetChild("error");

    EXPECT_EQ(failure.GetAttribute("message"), L"Erwartet war 1");
    EXPECT_EQ(failure.GetAttribute("type"), L"different");
    EXPECT_EQ(failure.GetText(), L"ERROR: Erwartet war 1\nINFO:  Datei x\n");
    EXPECT_EQ(error.GetAttribute("message"), L"Signal 11");
    EXPECT_EQ(error.GetText(), L"Der Prozess endete: Signal 11\nLetzte Ausgabe:\nletzte Zeile\noben <main>\nunten\n");
    EXPECT_EQ(getCounts(report.FindSuite(L"a/CFirst")), L"2 1 1 0");
}

TEST(RunnerJunit, ShowsDisabledCasesAsSkippedButNotInTheSecondShard)
{
    Runner::SPlan plan = MakeSamplePlan();
    plan.shard = {2, 2};
    plan.cases[5].isInShard = false;
    CRunStateMaker second(plan);
    second.RunRest();
    CRunStateMaker whole;
    whole.RunRest();

    const CReport report(whole.Get());
    EXPECT_EQ(report.FindCase(L"CSecond", L"aus.dat").GetChild("skipped").GetAttribute("message"), L"Deaktiviert");
    const CReport shard(second.Get());
    EXPECT_TRUE(shard.FindCase(L"CSecond", L"aus.dat").IsEmpty());
    EXPECT_TRUE(shard.FindCase(L"CSecond", L"z.dat").IsEmpty());
}

TEST(RunnerJunit, MarksFlakyCases)
{
    CRunStateMaker run;
    run.RunCase(0, ECaseRunResult::Error);
    run.RunCase(0, ECaseRunResult::Ok, 2, EAttemptKind::Retry);
    run.RunRest();
    const CReport report(run.Get());
    const XMLNode testCase = report.FindCase(L"a/CFirst", L"eins.txt");
    const XMLNode property = report.FindSuite(L"a/CFirst").GetChild("properties").GetChild("property");

    EXPECT_TRUE(testCase.GetChild("failure").IsEmpty());
    EXPECT_EQ(testCase.GetChild("system-out").GetText(),
              L"Unzuverlässig: erst beim 2. Versuch bestanden\n1. Versuch: Erwartet war 1\n2. Versuch: bestanden\n");
    EXPECT_EQ(property.GetAttribute("name"), L"flaky");
    EXPECT_EQ(property.GetAttribute("value"), L"eins.txt");
}

TEST(RunnerJunit, ListsFlakyCasesThatMakeTheRunRedInAnError)
{
    Runner::SPlan plan = MakeSamplePlan();
    plan.cases[3].isQuarantined = true;
    const auto makeReport = [](const Runner::SPlan& ofRun) {
        CRunStateMaker run(ofRun);
        for (const std::uint32_t index : {0U, 2U, 3U})
        {
            run.RunCase(index, ECaseRunResult::Error);
            run.RunCase(index, ECaseRunResult::Ok, 2, EAttemptKind::Retry);
        }
        run.RunRest();
        return CReport(run.Get());
    };
    const auto findError = [](const CReport& report) {
        return report.FindCase(L"LuTestSuiteRunner", L"Unzuverlässige Testfälle").GetChild("error");
    };

    const CReport red = makeReport(plan);
    const XMLNode error = findError(red);
    EXPECT_EQ(error.GetAttribute("message"), L"2 Testfälle sind unzuverlässig; ohne '--allow-flaky' ist der Lauf rot");
    EXPECT_EQ(error.GetText(), L"a/CFirst:eins.txt\nb/CFirst:eins.txt\n");

    plan.rules.isFlakyAllowed = true;
    const CReport green = makeReport(plan);
    EXPECT_TRUE(findError(green).IsEmpty());
}

TEST(RunnerJunit, ShowsInterruptedCasesAsErrorsAndRunningCasesAsSkipped)
{
    CRunStateMaker run;
    for (const std::uint32_t index : {0U, 1U, 2U})
    {
        run.Apply(MakeStart(index));
    }
    Runner::SOpenCases open;
    open.interrupted = {{0U, L"Fehler: Absturz in 'CFirst:eins.txt': nur ein Test\n"}, {2U, L""}};
    open.running = {1};
    const CReport report(run.Get(), Runner::c_JunitLimit, open);
    const XMLNode crashed = report.FindCase(L"a/CFirst", L"eins.txt").GetChild("error");

    const std::wstring message = L"Lief noch, als der Prozess endete, der den Lauf ausführte";
    EXPECT_EQ(crashed.GetAttribute("message"), message);
    EXPECT_EQ(crashed.GetText(), L"1. Versuch: " + message + L"\nMeldungen dieses Prozesses:\n" +
                                     L"Fehler: Absturz in 'CFirst:eins.txt': nur ein Test\n");
    EXPECT_EQ(report.FindCase(L"b/CFirst", L"eins.txt").GetChild("error").GetText(), L"1. Versuch: " + message + L"\n");
    const auto getSkipped = [&report](const wchar_t* suite, const wchar_t* name) {
        return report.FindCase(suite, name).GetChild("skipped").GetAttribute("message");
    };
    EXPECT_EQ(getSkipped(L"a/CFirst", L"zwei.txt"), L"Begonnen, noch nicht beendet");
    EXPECT_EQ(getSkipped(L"CSecond", L"x.dat"), L"Nicht ausgeführt");
}

TEST(RunnerJunit, KeepsTheFailureOfACaseWhoseRetryWasInterrupted)
{
    CRunStateMaker run;
    run.RunCase(0, ECaseRunResult::Different);
    run.Apply(MakeStart(0, 2, EAttemptKind::Retry));
    Runner::SOpenCases open;
    open.interrupted = {{0U, L""}};
    const CReport report(run.Get(), Runner::c_JunitLimit, open);
    const XMLNode failure = report.FindCase(L"a/CFirst", L"eins.txt").GetChild("failure");

    EXPECT_EQ(failure.GetAttribute("message"), L"Erwartet war 1");
    EXPECT_TRUE(failure.GetText().starts_with(L"2. Versuch: Lief noch, als der Prozess endete"))
        << failure.GetText().size();
}

TEST(RunnerJunit, ListsTheCasesThatRanBeforeAFailureInASharedProcess)
{
    CRunStateMaker run;
    run.RunCase(3, ECaseRunResult::Ok);
    run.RunCase(0, ECaseRunResult::Error);
    run.RunCase(0, ECaseRunResult::Ok, 2, EAttemptKind::Confirm);
    run.RunRest();
    const CReport report(run.Get());
    const std::wstring text = report.FindCase(L"a/CFirst", L"eins.txt").GetChild("failure").GetText();

    EXPECT_NE(text.find(L"nur im gemeinsamen Prozess"), std::wstring::npos);
    EXPECT_NE(text.find(L"davor ein Testfall:\n  b/CSecond:x.dat\n"), std::wstring::npos) << text;
}

TEST(RunnerJunit, SaysThatNoCaseRanBeforeAFailureInASharedProcess)
{
    CRunStateMaker run;
    run.RunCase(0, ECaseRunResult::Error);
    run.RunCase(0, ECaseRunResult::Ok, 2, EAttemptKind::Confirm);
    run.RunRest();
    const CReport report(run.Get());
    const std::wstring text = report.FindCase(L"a/CFirst", L"eins.txt").GetChild("failure").GetText();

    EXPECT_NE(text.find(L"\nIm selben Prozess endete davor kein anderer Testfall\n"), std::wstring::npos) << text;
}

TEST(RunnerJunit, ShowsPassedCasesWithASkipMessageAsSkipped)
{
    CRunStateMaker run;
    const auto pass = [&run](std::uint32_t caseIndex, const std::wstring& messages) {
        Runner::SCaseEnded ended = MakeEnd(caseIndex, ECaseRunResult::Ok);
        ended.info.messages = messages;
        run.RunCase(ended);
    };
    pass(0, L"\t\tINFO:  zuvor\n\t\tINFO:  Übersprungen: keine <Lizenz>\n\t\tINFO:  Stelle: a.cpp:7\n");
    pass(1, L"\t\tINFO:  a.cpp:7: Übersprungen: nur ein Teil\n");
    pass(3, L"\t\tINFO:  Übersprungen:\n");
    run.RunRest();
    const CReport report(run.Get());
    const XMLNode skipped = report.FindCase(L"a/CFirst", L"eins.txt");

    EXPECT_EQ(skipped.GetChild("skipped").GetAttribute("message"), L"keine <Lizenz>");
    EXPECT_EQ(skipped.GetChild("system-out").GetText(),
              L"\t\tINFO:  zuvor\n\t\tINFO:  Übersprungen: keine <Lizenz>\n\t\tINFO:  Stelle: a.cpp:7\n");
    EXPECT_TRUE(report.FindCase(L"a/CFirst", L"zwei.txt").GetFirstChild().IsEmpty());
    EXPECT_EQ(report.FindCase(L"CSecond", L"x.dat").GetChild("skipped").GetAttribute("message"), L"Übersprungen");
    EXPECT_EQ(getCounts(report.FindSuite(L"a/CFirst")), L"2 0 0 1");
}

TEST(RunnerJunit, ShowsFailedCasesWithASkipMessageAsFailures)
{
    CRunStateMaker run;
    Runner::SCaseEnded failed = MakeEnd(0, ECaseRunResult::Error);
    failed.info.messages = L"INFO:  Übersprungen: keine Lizenz\nERROR: doch nicht\n";
    run.RunCase(failed);
    run.RunRest();
    const CReport report(run.Get());

    EXPECT_EQ(report.FindCase(L"a/CFirst", L"eins.txt").GetChild("failure").GetAttribute("message"), L"doch nicht");
    EXPECT_EQ(getCounts(report.FindSuite(L"a/CFirst")), L"2 1 0 0");
}

TEST(RunnerJunit, ShowsFailuresInQuarantineAsSkipped)
{
    Runner::SPlan plan = MakeSamplePlan();
    plan.cases[0].isQuarantined = true;
    CRunStateMaker run(plan);
    run.RunCase(0, ECaseRunResult::Error);
    run.RunRest();
    const CReport report(run.Get());
    const XMLNode testCase = report.FindCase(L"a/CFirst", L"eins.txt");

    EXPECT_EQ(testCase.GetChild("skipped").GetAttribute("message"), L"In Quarantäne: Erwartet war 1");
    EXPECT_NE(testCase.GetChild("system-out").GetText().find(L"INFO:  Datei x"), std::wstring::npos);
    EXPECT_EQ(getCounts(report.FindSuite(L"a/CFirst")), L"2 0 0 1");
}

TEST(RunnerJunit, ShowsMissingCasesAsSkippedUntilTheRunEndsThenAsErrors)
{
    CRunStateMaker run;
    EXPECT_EQ(getCounts(CReport(run.Get()).FindSuite(L"b/CFirst")), L"1 0 0 1");
    run.Apply(Runner::SRunFinished{L"", 1});

    EXPECT_EQ(getCounts(CReport(run.Get()).FindSuite(L"b/CFirst")), L"1 0 1 0");
}

TEST(RunnerJunit, ShowsProblemsAndCancellationOfTheRunAsErrors)
{
    CRunStateMaker run;
    run.Apply(Runner::SRunProblem{L"Das Modul fehlt"});
    run.Apply(Runner::SRunCanceled{L"SIGTERM", 1});
    run.RunRest();
    const CReport report(run.Get());

    EXPECT_EQ(getCounts(report.FindSuite(L"LuTestSuiteRunner")), L"2 0 2 0");
    EXPECT_EQ(report.FindCase(L"LuTestSuiteRunner", L"Problem 1").GetChild("error").GetText(), L"Das Modul fehlt");
    EXPECT_EQ(getCounts(report.GetRoot()), L"9 0 2 ");
}

TEST(RunnerJunit, ShowsAnErrorIfTheRunHasNotEnded)
{
    CRunStateMaker run;
    run.RunCase(0, ECaseRunResult::Ok);
    const CReport report(run.Get());

    EXPECT_EQ(report.FindCase(L"LuTestSuiteRunner", L"Ende").GetChild("error").GetText(),
              L"Der Lauf ist nicht beendet");
    EXPECT_EQ(getCounts(report.FindSuite(L"LuTestSuiteRunner")), L"1 0 1 0");
}

TEST(RunnerJunit, EscapesAnyNameAndMessageReversibly)
{
    std::mt19937 random(5);
    for (int round = 0; round < 50; ++round)
    {
        Runner::SPlan plan = MakeSamplePlan();
        const std::wstring name = MakeRandomText(random, 20);
        plan.unitTests[1].cases[0].name = name;
        CRunStateMaker run(plan);
        Runner::SCaseEnded failed = MakeEnd(2, ECaseRunResult::Error);
        failed.info.messages = L"x" + MakeRandomText(random, 40) + L"x";
        run.RunCase(failed);
        run.RunRest();
        const CReport report(run.Get());
        const XMLNode testCase = report.FindSuite(L"b/CFirst").GetChild("testcase");
        const auto unescape = [](const std::wstring& text) {
            return Runner::FromEscapedUtf8(LbEncoding::ToUtf8(text));
        };

        ASSERT_EQ(unescape(testCase.GetAttribute("name")), name);
        ASSERT_EQ(unescape(testCase.GetChild("failure").GetText()), failed.info.messages);
    }
}

TEST(RunnerJunit, CutsTheLongestTextsOfALargeReport)
{
    CRunStateMaker run;
    for (std::uint32_t index = 0; index < 3; ++index)
    {
        Runner::SCaseEnded failed = MakeEnd(index, ECaseRunResult::Error);
        failed.info.messages = index == 1 ? L"kurz" : std::wstring(20000, L'&');
        run.RunCase(failed);
    }
    run.RunRest();
    constexpr std::size_t c_Limit = 30000;
    const CReport report(run.Get(), c_Limit);
    const std::wstring text = report.FindCase(L"a/CFirst", L"eins.txt").GetChild("failure").GetText();

    EXPECT_LE(report.GetBytes().size(), c_Limit);
    EXPECT_GT(report.GetBytes().size(), c_Limit * 9 / 10);
    EXPECT_EQ(report.FindCase(L"a/CFirst", L"zwei.txt").GetChild("failure").GetText(), L"kurz");
    EXPECT_EQ(text.substr(text.find_first_not_of(L'&')), L"\n[... gekürzt, vollständig im Journal]\n");
}

TEST(RunnerJunit, CutsALongListOfQuarantinedCasesAndCountsTheRest)
{
    Runner::SPlan plan = MakeSamplePlan();
    for (int index = 0; index < 1000; ++index)
    {
        plan.unitTests[1].cases.push_back({{}, L"Fall " + std::to_wstring(index), {}});
    }
    plan.cases = Runner::PlanCases(plan.unitTests, 1);
    for (Runner::SPlannedCase& planned : plan.cases)
    {
        planned.isQuarantined = true;
    }
    CRunStateMaker run(plan);
    run.RunRest();
    constexpr std::size_t c_Limit = 20000;
    const CReport report(run.Get(), c_Limit);
    const auto properties = report.FindSuite(L"b/CFirst").GetChild("properties").GetChildren("property");
    const auto count = std::distance(properties.begin(), properties.end());
    std::wstring leftOut;
    for (const XMLNode property : properties)
    {
        leftOut = property.GetAttribute("name") == L"left-out" ? property.GetAttribute("value") : std::wstring();
    }

    EXPECT_LE(report.GetBytes().size(), c_Limit);
    EXPECT_GT(count, 10);
    EXPECT_EQ(leftOut, std::to_wstring(1001 - (count - 1)));
}

std::size_t countCases(const XMLNode& root)
{
    std::size_t count = 0;
    for (const XMLNode suite : root.GetChildren("testsuite"))
    {
        const auto cases = suite.GetChildren("testcase");
        count += static_cast<std::size_t>(std::distance(cases.begin(), cases.end()));
    }
    return count;
}

TEST(RunnerJunit, OmitsPassedCasesBeforeFailedOnesIfTheReportIsTooLarge)
{
    Runner::SPlan plan = MakeSamplePlan();
    for (int index = 0; index < 300; ++index)
    {
        plan.unitTests[1].cases.push_back({{}, L"Fall " + std::to_wstring(index), {}});
    }
    plan.cases = Runner::PlanCases(plan.unitTests, 1);
    CRunStateMaker run(plan);
    run.RunCase(static_cast<std::uint32_t>(plan.cases.size() - 1), ECaseRunResult::Error);
    run.RunRest();
    const CReport whole(run.Get());
    for (const std::size_t limit : {whole.GetBytes().size() - 1, whole.GetBytes().size() / 2})
    {
        const CReport report(run.Get(), limit);

        EXPECT_LE(report.GetBytes().size(), limit);
        EXPECT_LT(countCases(report.GetRoot()), countCases(whole.GetRoot()));
        EXPECT_FALSE(report.FindCase(L"CSecond", L"z.dat").IsEmpty()) << "limit of " << limit << " bytes";
        EXPECT_NE(report.FindSuite(L"CSecond").GetChild("system-out").GetText().find(L"ausgelassen"),
                  std::wstring::npos);
        // The counts include cases that are left out.
        EXPECT_EQ(getCounts(report.FindSuite(L"b/CFirst")), L"301 0 0 0");
    }
}

TEST(RunnerXmlText, IsCutOnlyBetweenCharactersAndEntities)
{
    const std::string text = Runner::ToXmlText(L"a&ü€\U0001F600b");
    for (std::size_t size = 0; size <= text.size(); ++size)
    {
        std::string cut = text;
        Runner::CutXmlText(cut, size);

        EXPECT_LE(cut.size(), size);
        EXPECT_TRUE(LbEncoding::IsUtf8(cut)) << size;
        EXPECT_EQ(cut.find('&') != std::string::npos, cut.find(';') != std::string::npos) << size;
    }
}

TEST(RunnerXmlText, WritesSecondsWithThreeDecimals)
{
    EXPECT_EQ(Runner::ToXmlSeconds(0), "0.000");
    EXPECT_EQ(Runner::ToXmlSeconds(499'999), "0.000");
    EXPECT_EQ(Runner::ToXmlSeconds(61'005'400'000), "61.005");
    EXPECT_EQ(Runner::ToXmlSeconds(999'999'999), "1.000");
}

} // namespace
