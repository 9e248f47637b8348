#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "tests/support/fulldevice.h"
#include "tests/support/openedfiles.h"
#include "tests/support/runtest.h"
#include "tests/support/scopedenvironment.h"
#include "tests/support/scopedfolder.h"
#include "tests/support/scopedworkingdirectory.h"
#include "tests/support/unwritable.h"

namespace
{

using Names = std::vector<std::wstring>;

/// Tests of the reports at the end of a run.
class RunReports : public RunTest
{
protected:
    RunReports()
        : m_setup(MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins"}), MakeUnitTest(L"CFailedModel", {L"allein"})}))
    {
    }

    /// Runs the cases. Expects the usual verdict, which reports must not change.
    void Run()
    {
        const auto result = RunTest::Run(m_setup);
        EXPECT_EQ(result.stats.total.executed, 2U);
        EXPECT_EQ(result.stats.unitTestsExecuted, 2U);
        EXPECT_EQ(result.stats.unitTestsPassed, 1U);
    }

    static LuTestSuiteReport::SReportData Load(const std::wstring& path)
    {
        LuTestSuiteReport::SReportData data;
        EXPECT_TRUE(LuTestSuiteReport::LoadReportDataFromXMLFile(path, data));
        return data;
    }

    std::wstring GetPathOf(std::wstring_view name) const { return m_folder.GetPathOf(name); }
    Names GetFileNames() const { return LbFileSystem::GetFileNames(m_folder.GetPath()); }

    LuTestSuiteSetup m_setup;
    ScopedFolder m_folder;
};

TEST_F(RunReports, AreOnlyWrittenOnRequest)
{
    const ScopedUserFolder user;
    m_setup.openReports = true;

    Run();

    EXPECT_FALSE(LbFileSystem::Exists(user.GetPath() + L"LuTestSuite"));
}

TEST_F(RunReports, ContainTheExecutedCases)
{
    m_setup.xmlReport = GetPathOf(L"Report.xml");

    Run();

    const auto data = Load(m_setup.xmlReport);
    EXPECT_EQ(data.CasesTotal, 2U);
    EXPECT_EQ(data.Failures, 1U);
    ASSERT_EQ(data.Cases.size(), 2U);
    EXPECT_EQ(data.Cases[0].ClassName, L"CPassedModel");
    EXPECT_EQ(data.Cases[0].CaseName, L"eins");
    EXPECT_EQ(data.Cases[1].Result, LuTestSuiteRun::ECaseRunResult::Error);
    EXPECT_EQ(data.ClassesTotal, 2U);
    EXPECT_EQ(data.ClassesSuccessful, 1U);
}

TEST_F(RunReports, AreWrittenAfterTheSummary)
{
    m_setup.xmlReport = m_folder.MakeFolder(L"Ordner");

    Run();

    EXPECT_TRUE(m_output.GetText().ends_with(L"\tCFailedModel: 1 fehlerhafte Testfälle\n"
                                             L"XML-Report " +
                                             m_setup.xmlReport + L" konnte nicht erzeugt werden.\n"));
}

TEST_F(RunReports, AreWrittenForARunWithoutCases)
{
    m_setup = MakeSetup(m_folder.MakeFolder(L"leer"));
    m_setup.xmlReport = GetPathOf(L"Report.xml");
    m_setup.htmlReport = GetPathOf(L"Report.html");

    RunTest::Run(m_setup);

    EXPECT_EQ(Load(m_setup.xmlReport).CasesTotal, 0U);
    EXPECT_TRUE(LbFileSystem::IsFile(m_setup.htmlReport));
}

TEST_F(RunReports, HaveCompanionFilesUnlessDisabled)
{
    m_setup.htmlReport = GetPathOf(L"Report.html");
    m_setup.writeCss = m_setup.writeJs = false;
    Run();
    EXPECT_EQ(GetFileNames(), Names{L"Report.html"});

    m_setup.writeCss = true;
    Run();
    EXPECT_EQ(GetFileNames(), (Names{L"LuTestSuite.css", L"Report.html"}));

    m_setup.writeJs = true;
    Run();
    EXPECT_EQ(GetFileNames(), (Names{L"LuTestSuite.css", L"LuTestSuite.js", L"Report.html"}));
}

TEST_F(RunReports, OmitTheCasesWhenSmall)
{
    m_setup.htmlReport = GetPathOf(L"Report.html");
    Run();
    EXPECT_NE(LbFileSystem::ReadFile8Bit(m_setup.htmlReport).find("id=\"testcases\""), std::string::npos);

    m_setup.smallReport = true;
    Run();
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(m_setup.htmlReport).find("id=\"testcases\""), std::string::npos);
}

TEST_F(RunReports, AreWrittenIndependentlyOfEachOther)
{
    for (const SUnwritablePlace& place : GetUnwritablePlaces(m_folder, L"Report"))
    {
        m_setup.xmlReport = place.path;
        m_setup.htmlReport = GetPathOf(L"gut.html");
        Run();
        EXPECT_TRUE(LbFileSystem::RemoveTree(m_setup.htmlReport)) << place.name;
        EXPECT_TRUE(m_output.GetText().ends_with(L"\nXML-Report " + place.path + L" konnte nicht erzeugt werden.\n"))
            << place.name;

        m_setup.xmlReport = GetPathOf(L"gut.xml");
        m_setup.htmlReport = place.path;
        m_output.Clear();
        Run();
        EXPECT_EQ(Load(m_setup.xmlReport).CasesTotal, 2U) << place.name;
        EXPECT_TRUE(m_output.GetText().ends_with(L"\nHTML-Report " + place.path + L" konnte nicht erzeugt werden.\n"))
            << place.name;
        m_output.Clear();
    }
}

TEST_F(RunReports, HaveAutomaticNamesInThePerUserFolder)
{
    const ScopedUserFolder user;
    m_setup.autoXml = m_setup.autoHtml = true;

    Run();

    const Names names = LbFileSystem::GetFileNames(LuTestSuiteUtils::GetLocalTestSuiteDir() + L"Reports");
    ASSERT_EQ(names.size(), 4U);
    const std::wregex time(LR"(LuTestSuiteReport-\[\d{4}-\d\d-\d\d\]-\[\d\d-\d\d-\d\d\]\.(html|xml))");
    EXPECT_EQ(names[0], L"LuTestSuite.css");
    EXPECT_EQ(names[1], L"LuTestSuite.js");
    EXPECT_TRUE(std::regex_match(names[2], time));
    EXPECT_TRUE(std::regex_match(names[3], time));
    EXPECT_EQ(names[2].substr(0, 41), names[3].substr(0, 41));
}

TEST_F(RunReports, PreferAutomaticNamesToGivenNames)
{
    const ScopedUserFolder user;
    m_setup.xmlReport = GetPathOf(L"Report.xml");
    m_setup.htmlReport = GetPathOf(L"Report.html");
    m_setup.autoHtml = true;

    Run();

    EXPECT_EQ(GetFileNames(), Names{L"Report.xml"});
}

TEST_F(RunReports, CannotHaveAutomaticNamesWithoutAPerUserFolder)
{
    const ScopedEnvironmentVariable linux1(L"XDG_DATA_HOME", L"");
    const ScopedEnvironmentVariable linux2(L"HOME", L"");
    const ScopedEnvironmentVariable windows(L"APPDATA", L"");
    if (!LbOs::GetUserDataDirectory().empty())
    {
        GTEST_SKIP() << "the system finds the folder without these variables";
    }
    m_setup.xmlReport = GetPathOf(L"Report.xml");
    m_setup.autoHtml = true;

    Run();

    EXPECT_EQ(GetFileNames(), Names{L"Report.xml"});
    EXPECT_NE(m_output.GetText().find(L"\nFehler: Der Ordner für Reports fehlt: "), std::wstring::npos);
}

TEST_F(RunReports, AreOpenedOnTheDesktopWithoutWaitingForIt)
{
    if (!OpenedFiles::CanStandIn())
    {
        GTEST_SKIP() << "the desktop cannot be replaced here";
    }
    const OpenedFiles opened;
    const ScopedEnvironmentVariable path(L"PATH", opened.GetSearchPath());
    m_setup.openReports = true;
    m_setup.xmlReport = GetPathOf(L"Report.xml");
    Run();
    m_setup.htmlReport = MakeFullFile(m_folder, L"voll.html");
    Run();
    m_setup.htmlReport = GetPathOf(L"Über mich & \"dich\" $x.html");
    Run();

    // The opener waits until this call, so the runs did not wait for it. Only pages that were written are opened.
    EXPECT_EQ(opened.Await(), Names{m_setup.htmlReport});
}

TEST_F(RunReports, DoNotFailTheRunWithoutADesktop)
{
    if (!OpenedFiles::CanStandIn())
    {
        GTEST_SKIP() << "the desktop cannot be removed here";
    }
    const ScopedFolder empty;
    const ScopedEnvironmentVariable path(L"PATH", empty.GetPath());
    m_setup.openReports = true;
    m_setup.htmlReport = GetPathOf(L"Report.html");

    Run();

    EXPECT_TRUE(m_output.GetText().ends_with(L"1 fehlerhafte Testfälle\n"));
}

/// Tests of runs whose working directory is removed. Unless a test changes them, the paths of the reports are relative.
class RunReportsWithoutDirectory : public testing::Test
{
protected:
    RunReportsWithoutDirectory() : m_setup(MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins"})}))
    {
        m_setup.xmlReport = L"verloren.xml";
        m_setup.htmlReport = L"verloren.html";
    }

    void ExpectNothingBesideTheExecutable() const
    {
        for (const std::wstring& name : {m_setup.xmlReport, m_setup.htmlReport})
        {
            EXPECT_FALSE(LbFileSystem::Exists(LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable) + name));
        }
    }

    LuTestSuiteSetup m_setup;
    ScopedFolder m_folder;
    std::wstring m_directory = m_folder.MakeFolder(L"Arbeit");
    ScopedWorkingDirectory m_start{m_directory};
    CapturedOutput m_output;
    LuTestSuiteEnvironment m_environment;
};

TEST_F(RunReportsWithoutDirectory, FailIfTheRunRemovesTheWorkingDirectory)
{
    const std::wstring absolute = m_folder.GetPathOf(L"absolut.xml");
    m_setup.xmlReport = absolute;
    m_setup.resultCallback = [this](LuTestSuiteRun::ECaseRunResult) {
        EXPECT_TRUE(LbFileSystem::RemoveTree(m_directory));
    };
    LuTestSuiteRun::Run(m_setup, m_environment);

    EXPECT_TRUE(m_output.GetText().ends_with(L"\nFehler: Report verloren.html konnte nicht erzeugt werden: Sein "
                                             L"Arbeitsverzeichnis gibt es nicht mehr.\n"))
        << LbEncoding::ToUtf8(m_output.GetText());
    EXPECT_TRUE(LbFileSystem::IsFile(absolute));
    ExpectNothingBesideTheExecutable();
}

TEST_F(RunReportsWithoutDirectory, PreventARunWithRelativePaths)
{
    LbFileSystem::RemoveTree(m_directory);
    if (LbFileSystem::Exists(m_directory))
    {
        GTEST_SKIP() << "a working directory cannot be removed here";
    }
    EXPECT_THROW(LuTestSuiteRun::Run(m_setup, m_environment), LbException);

    EXPECT_EQ(m_output.GetText(), L"");
    ExpectNothingBesideTheExecutable();
}

TEST_F(RunReportsWithoutDirectory, AllowARunWithAbsolutePaths)
{
    LbFileSystem::RemoveTree(m_directory);
    m_setup.xmlReport = m_folder.GetPathOf(L"absolut.xml");
    m_setup.htmlReport.clear();

    EXPECT_EQ(LuTestSuiteRun::Run(m_setup, m_environment).stats.total.executed, 1U);

    EXPECT_TRUE(LbFileSystem::IsFile(m_setup.xmlReport));
}

} // namespace
