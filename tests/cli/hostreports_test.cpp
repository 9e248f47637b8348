#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "tests/modules/outcomes.h"
#include "tests/support/golden.h"
#include "tests/support/hostprocess.h"
#include "tests/support/openedfiles.h"
#include "tests/support/scopedfolder.h"

namespace
{

using Names = std::vector<std::wstring>;

/// Reports of runs whose host starts in the test's folder.
class HostReports : public testing::Test
{
protected:
    SHostRun Run(const std::vector<std::wstring>& options)
    {
        m_options.workingDirectory = m_folder.GetPath();
        std::vector<std::wstring> arguments = {L"-d", m_data.GetPath(), L"--dll", L"datasetmodels"};
        for (const wchar_t* module : models::c_Modules)
        {
            arguments.insert(arguments.end(), {L"--dll", module});
        }
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunHost(arguments, m_options);
    }

    /// Writes one class per level of folders, because the order inside a directory depends on the file system.
    void WriteManyOutcomes() const
    {
        m_data.MakeFolder(L"CResultModel");
        m_data.MakeFolder(L"weiter/CMessageModel");
        m_data.WriteFile(L"weiter/noch weiter/CDataSetModel/a & b's größte Maße.txt", "schlecht");
        m_data.WriteFile(L"weiter/noch weiter/CDataSetModel/#ExtraInfo.xml",
                         "<ExtraInfo><Contact role=\"Test\"><Name>Jörg Müller</Name><Email>joerg@example.org</Email>"
                         "</Contact></ExtraInfo>");
    }

    Names GetFileNames() const { return LbFileSystem::GetFileNames(m_folder.GetPath()); }
    std::string Read(const wchar_t* name) const { return LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(name)); }

    ScopedFolder m_data;
    ScopedFolder m_folder;
    SHostOptions m_options;
};

TEST_F(HostReports, AreWrittenToTheCallersWorkingDirectory)
{
    WriteManyOutcomes();

    const SHostRun run = Run({L"--xml", L"Report.xml", L"--html", L"Report.html"});

    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(GetFileNames(), (Names{L"LuTestSuite.css", L"LuTestSuite.js", L"Report.html", L"Report.xml"}));
    if (Read(L"Report.xml").find("<PscmChangeset></PscmChangeset>") != std::string::npos)
    {
        GTEST_SKIP() << "the golden reports have rows of the repository, which this build does not know";
    }
    ExpectGolden("cli/report.xml", NormalizeXmlReport(Read(L"Report.xml")));
    ExpectGolden("cli/report.html", NormalizeHtmlReport(Read(L"Report.html")));
}

TEST_F(HostReports, ChangeNothingOnTheConsole)
{
    WriteManyOutcomes();

    EXPECT_EQ(Run({L"--xml", L"Report.xml", L"--html", L"Report.html"}).output, Run({}).output);
}

TEST_F(HostReports, FollowTheirOptions)
{
    WriteManyOutcomes();

    Run({L"--html", L"Report.html", L"--xml", L"Report.xml", L"--no-css", L"--no-js", L"--small-report",
         L"--message-report-max", L"1"});

    EXPECT_EQ(GetFileNames(), (Names{L"Report.html", L"Report.xml"}));
    EXPECT_EQ(Read(L"Report.html").find("<table id=\"testcases\">"), std::string::npos);
    const std::string xml = Read(L"Report.xml");
    EXPECT_NE(xml.find("<dump type=\"info\">erste</dump>\n\t\t\t<dump type=\"info\">...</dump>"), std::string::npos);
    EXPECT_EQ(xml.find("<dump type=\"error\">dritte</dump>"), std::string::npos);
}

TEST_F(HostReports, DoNotChangeTheExitStatusIfTheyCannotBeWritten)
{
    m_data.MakeFolder(L"CPassedModel");

    const SHostRun run = Run({L"--xml", m_data.GetPath(), L"--html", m_data.GetPath()});

    EXPECT_EQ(run.exitStatus, 0);
    const std::string path = LbEncoding::ToUtf8(m_data.GetPath());
    EXPECT_TRUE(run.output.ends_with(ToPlatformLines("XML-Report " + path + " konnte nicht erzeugt werden.\n" +
                                                     "HTML-Report " + path + " konnte nicht erzeugt werden.\n")))
        << run.output;
}

TEST_F(HostReports, CanBeComparedWithEachOther)
{
    WriteManyOutcomes();
    Run({L"--xml", L"alt.xml"});
    Run({L"--xml", L"neu.xml"});

    const SHostRun run = Run({L"--diff-in", L"alt.xml", L"--diff-in", L"neu.xml", L"--diff-out", L"Vergleich.html"});

    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_NE(Read(L"Vergleich.html").find("<h2>Case Diff</h2>"), std::string::npos);
    EXPECT_EQ(Read(L"Vergleich.html").find("<h2>Class Diff</h2>"), std::string::npos);
}

TEST_F(HostReports, HaveAnAutomaticNameAndAreOpened)
{
    if (!OpenedFiles::CanStandIn())
    {
        GTEST_SKIP() << "the desktop cannot be replaced here";
    }
    m_data.MakeFolder(L"CPassedModel");
    const OpenedFiles opened;
    m_options.variables = {{L"XDG_DATA_HOME", LbPath::WithoutSeparator(m_folder.GetPath())},
                           {L"PATH", opened.GetSearchPath()}};

    const SHostRun run = Run({L"-a"});

    EXPECT_EQ(run.exitStatus, 0);
    const std::wstring reports = m_folder.GetPathOf(L"LuTestSuite/Orvell/Reports/");
    const Names names = LbFileSystem::GetFileNames(reports);
    ASSERT_EQ(names.size(), 3U);
    EXPECT_EQ(opened.Await(), Names{reports + names[2]});
}

TEST_F(HostReports, NeitherWaitForTheDesktopNorFailWithoutOne)
{
    m_data.MakeFolder(L"CPassedModel");
    if (OpenedFiles::CanStandIn())
    {
        m_options.variables = {{L"PATH", m_folder.GetPath()}};
    }

    const SHostRun run = Run({L"--html", L"Report.html", L"-o"});

    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.output, Run({}).output);
    EXPECT_NE(Read(L"Report.html").find("</html>"), std::string::npos);
}

} // namespace
