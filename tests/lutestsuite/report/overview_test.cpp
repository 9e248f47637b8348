#include <utility>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/fulldevice.h"
#include "tests/support/golden.h"
#include "tests/support/os/filelimits.h"
#include "tests/support/page.h"
#include "tests/support/samplereports.h"
#include "tests/support/scopedfolder.h"
#include "tests/support/scopedworkingdirectory.h"
#include "tests/support/unwritable.h"

namespace
{

using SData = LuTestSuiteReport::SReportData;

class ReportDirectoryOverview : public testing::Test
{
protected:
    /// Adds a report to the archive. By default, one of the three cases of its run has failed.
    void AddReport(const std::wstring& name, const std::wstring& dateBegin,
                   const std::wstring& configuration = L"Release x64", std::uint32_t successful = 2,
                   std::uint32_t total = 3)
    {
        SData data;
        data.BuildConfiguration = configuration;
        data.DateBegin = dateBegin;
        data.ClassesTotal = 4;
        data.ClassesSuccessful = 3;
        data.CasesTotal = total;
        data.Successful = successful;
        m_folder.MakeFolder(L"Archive");
        LuTestSuiteReport::GenerateXMLReport(GetReportPath(name + L".xml"), data);
    }

    std::wstring GetReportPath(const std::wstring& file) const { return m_folder.GetPathOf(L"Archive/" + file); }

    void Generate(const std::wstring& root)
    {
        LuTestSuiteReport::GenerateReportDirectoryOverview(root, L"index", L"Archive", L"Report");
    }

    std::string GetPage()
    {
        Generate(m_folder.GetPath());
        return ReadPage(m_folder.GetPathOf(L"index.html"));
    }

    /// Rows about runs.
    std::vector<SPageRow> GetRunRows()
    {
        std::vector<SPageRow> rows = GetRows(GetPage(), "overview");
        std::erase_if(rows, [](const SPageRow& row) { return row.cells.at(0) == "Version"; });
        return rows;
    }

    CapturedOutput m_output;
    ScopedFolder m_folder;
};

constexpr const wchar_t* c_First = L"Report.x64.release.[2024-05-01]-[10-00-00]";
constexpr const wchar_t* c_Second = L"Report.x64.release.[2024-05-02]-[10-00-00]";
constexpr const wchar_t* c_Third = L"Report.x64.release.[2024-05-03]-[10-00-00]";

TEST_F(ReportDirectoryOverview, ShowsAnArchiveOfSeveralConfigurations)
{
    AddReport(c_First, L"2024-05-01 09:58:00");
    AddReport(c_Second, L"2024-05-02 09:58:00", L"Release x64", 3);
    AddReport(c_Third, L"2024-05-03 09:58:00", L"Release x64", 0);
    AddReport(L"Report.x64.debug.[2024-05-03]-[11-00-00]", L"2024-05-03 10:58:00", L"Debug x64");
    AddReport(L"Report.x86.release.[2024-05-03]-[12-00-00]", L"2024-05-03 11:58:00", L"Release Win32");
    AddReport(L"Report.x86.debug.[2024-05-03]-[13-00-00]", L"2024-05-03 12:58:00", L"Debug Win32");
    m_folder.WriteFile(L"Archive/" + std::wstring(c_Second) + L".html", "<html/>");

    std::string page = GetPage();

    const std::string root = LbEncoding::ToUtf8(m_folder.GetPath());
    page.replace(page.find(root), root.size(), "ROOT");
    ExpectGolden("report/overview.html", page);
    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(ReportDirectoryOverview, ShowsAnEmptyArchive)
{
    EXPECT_TRUE(GetHeadings(GetPage()).empty());
    EXPECT_TRUE(LbFileSystem::IsDirectory(GetReportPath(L"Diff")));
}

TEST_F(ReportDirectoryOverview, AcceptsARootWithoutSeparator)
{
    Generate(LuTestSuiteUtils::RemoveBackslash(m_folder.GetPath()));

    EXPECT_TRUE(LbFileSystem::IsFile(m_folder.GetPathOf(L"index.html")));
}

TEST_F(ReportDirectoryOverview, ShowsTheNewestRunFirst)
{
    AddReport(c_First, L"2024-05-02 10:00:00");
    AddReport(c_Second, L"2024-05-03 10:00:00");
    AddReport(c_Third, L"2024-05-01 10:00:00");

    const std::vector<SPageRow> rows = GetRunRows();

    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[0].cells.at(1), "2024-05-03 10:00:00");
    EXPECT_EQ(rows[1].cells.at(1), "2024-05-02 10:00:00");
    EXPECT_EQ(rows[2].cells.at(1), "2024-05-01 10:00:00");
}

TEST_F(ReportDirectoryOverview, ComparesEachRunWithTheNextNewerRun)
{
    AddReport(c_First, L"2024-05-01 10:00:00");
    AddReport(c_Second, L"2024-05-02 10:00:00");

    const std::vector<SPageRow> rows = GetRunRows();

    const std::string name = "Diff.x64.release.[2024-05-01]-[10-00-00]-vs-[2024-05-02]-[10-00-00].html";
    EXPECT_EQ(rows.at(0).cells.at(6), "");
    EXPECT_EQ(rows.at(1).cells.at(6), "<a href=\"Archive/Diff/" + name + "\">Diff</a>");

    const std::string diff = ReadPage(GetReportPath(L"Diff/" + LbEncoding::FromUtf8(name)));
    const std::vector<std::string> sources = GetRows(diff, "diffsource").at(1).cells;
    EXPECT_EQ(sources.at(1), LbEncoding::ToUtf8(GetReportPath(c_First + std::wstring(L".xml"))));
    EXPECT_EQ(sources.at(2), LbEncoding::ToUtf8(GetReportPath(c_Second + std::wstring(L".xml"))));
    EXPECT_TRUE(LbFileSystem::IsFile(GetReportPath(L"Diff/LuTestSuite.css")));
    EXPECT_TRUE(LbFileSystem::IsFile(GetReportPath(L"Diff/LuTestSuite.js")));
}

TEST_F(ReportDirectoryOverview, LinksAnExistingDiffWithoutRewritingIt)
{
    AddReport(c_First, L"2024-05-01 10:00:00");
    AddReport(c_Second, L"2024-05-02 10:00:00");
    const std::wstring diff = m_folder.WriteFile(
        L"Archive/Diff/Diff.x64.release.[2024-05-01]-[10-00-00]-vs-[2024-05-02]-[10-00-00].html", "schon da");

    EXPECT_NE(GetRunRows().at(1).cells.at(6), "");
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(diff), "schon da");
}

TEST_F(ReportDirectoryOverview, HasNoDiffLinkForTheOnlyRunOfAConfiguration)
{
    AddReport(c_First, L"2024-05-01 10:00:00");
    AddReport(L"Report.x64.debug.[2024-05-02]-[10-00-00]", L"2024-05-02 10:00:00", L"Debug x64");

    const std::vector<SPageRow> rows = GetRunRows();

    EXPECT_EQ(rows.at(0).cells.at(6), "");
    EXPECT_EQ(rows.at(1).cells.at(6), "");
    EXPECT_TRUE(LbFileSystem::GetFileNames(GetReportPath(L"Diff/")).empty());
}

TEST_F(ReportDirectoryOverview, LinksTheHtmlReportOnlyWhenItExists)
{
    AddReport(c_First, L"2024-05-01 10:00:00");
    AddReport(c_Second, L"2024-05-02 10:00:00");
    m_folder.WriteFile(L"Archive/" + std::wstring(c_Second) + L".html", "<html/>");

    const std::vector<SPageRow> rows = GetRunRows();

    EXPECT_EQ(rows.at(0).cells.at(5), "<a href=\"Archive/Report.x64.release.[2024-05-02]-[10-00-00].html\">Report</a>");
    EXPECT_EQ(rows.at(1).cells.at(5), "");
}

TEST_F(ReportDirectoryOverview, HasARedBarForARunWithoutCases)
{
    AddReport(c_First, L"2024-05-01 10:00:00", L"Release x64", 0, 0);

    const SPageRow row = GetRunRows().at(0);

    EXPECT_EQ(row.cells.at(3), "0.00% (0/0)");
    EXPECT_EQ(row.cells.at(4), "<div class=\"ok\" style=\"width:0px\">&nbsp;</div>"
                               "<div class=\"error\" style=\"width:500px\">&nbsp;</div>");
}

TEST_F(ReportDirectoryOverview, CutsTheWidthOfABarToWholePixels)
{
    AddReport(c_First, L"2024-05-01 10:00:00", L"Release x64", 2, 3);

    const SPageRow row = GetRunRows().at(0);

    EXPECT_EQ(row.cells.at(2), "75.00% (3/4)");
    EXPECT_EQ(row.cells.at(3), "66.67% (2/3)");
    EXPECT_EQ(row.cells.at(4), "<div class=\"ok\" style=\"width:333px\">&nbsp;</div>"
                               "<div class=\"error\" style=\"width:167px\">&nbsp;</div>");
}

TEST_F(ReportDirectoryOverview, LimitsTheBarToFullWidth)
{
    AddReport(c_First, L"2024-05-01 10:00:00", L"Release x64", 9, 3);

    EXPECT_EQ(GetRunRows().at(0).cells.at(4), "<div class=\"ok\" style=\"width:500px\">&nbsp;</div>"
                                              "<div class=\"error\" style=\"width:0px\">&nbsp;</div>");
}

TEST_F(ReportDirectoryOverview, UsesTheFileNameAsVersionWithoutATimeStamp)
{
    AddReport(L"Report 7.2", L"2024-05-01 10:00:00");

    EXPECT_EQ(GetRunRows().at(0).cells.at(0), "Report 7.2");
}

TEST_F(ReportDirectoryOverview, DistinguishesRunsWithEqualTimeStamps)
{
    const std::wstring stamp = L"[2024-05-01]-[10-00-00]";
    AddReport(L"Report.1." + stamp, L"2024-05-01 10:00:00");
    AddReport(L"Report.2." + stamp, L"2024-05-01 10:00:01");
    AddReport(L"Report.3." + stamp, L"2024-05-01 10:00:02");
    AddReport(L"Report.4." + stamp + L".neu", L"2024-05-01 10:00:03", L"Debug x64");
    AddReport(c_Second, L"2024-05-02 10:00:00");

    const std::vector<SPageRow> rows = GetRunRows();

    ASSERT_EQ(rows.size(), 5U);
    EXPECT_EQ(rows[0].cells.at(0), "[2024-05-02]-[10-00-00]");
    EXPECT_EQ(rows[1].cells.at(0), "Report.3.[2024-05-01]-[10-00-00]");
    EXPECT_EQ(rows[4].cells.at(0), "[2024-05-01]-[10-00-00]") << "the only one of its configuration";
    EXPECT_EQ(rows[1].cells.at(6), "<a href=\"Archive/Diff/Diff.x64.release.Report.3.[2024-05-01]-[10-00-00]-vs-"
                                   "[2024-05-02]-[10-00-00].html\">Diff</a>");
    for (const auto& [older, newer] : {std::pair(L"1", L"2"), std::pair(L"2", L"3")})
    {
        const std::wstring name =
            L"Diff.x64.release.Report." + std::wstring(older) + L'.' + stamp + L"-vs-Report." + newer + L'.' + stamp;
        const auto sources = GetRows(ReadPage(GetReportPath(L"Diff/" + name + L".html")), "diffsource").at(1).cells;
        EXPECT_TRUE(sources.at(1).ends_with(LbEncoding::ToUtf8(L"Report." + (older + (L"." + stamp)) + L".xml")));
        EXPECT_TRUE(sources.at(2).ends_with(LbEncoding::ToUtf8(L"Report." + (newer + (L"." + stamp)) + L".xml")));
    }
}

TEST_F(ReportDirectoryOverview, ShowsOnlyReportsWithThePrefix)
{
    AddReport(L"Alt [2024-05-01]-[10-00-00]", L"2024-05-01 10:00:00");
    m_folder.WriteFile(L"Archive/Report.txt", "kein Report");

    EXPECT_TRUE(GetRunRows().empty());
    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(ReportDirectoryOverview, OmitsUnreadableReports)
{
    AddReport(c_First, L"2024-05-01 10:00:00");
    const std::wstring broken = m_folder.WriteFile(L"Archive/Report.kaputt.xml", "<testsuite><Statistics>");

    EXPECT_EQ(GetRunRows().size(), 1U);
    EXPECT_EQ(m_output.GetText(), L"Fehler: Report " + broken + L" konnte nicht gelesen werden.\n");
}

TEST_F(ReportDirectoryOverview, OmitsReportsOfUnknownConfigurations)
{
    AddReport(c_First, L"2024-05-01 10:00:00", L"Release ARM");

    EXPECT_TRUE(GetRunRows().empty());
    EXPECT_EQ(m_output.GetText(), L"Warnung: Report " + GetReportPath(c_First + std::wstring(L".xml")) +
                                      L" hat die unbekannte Konfiguration 'Release ARM'.\n");
}

TEST_F(ReportDirectoryOverview, OmitsLinksToDiffsThatCannotBeWritten)
{
    AddReport(c_First, L"2024-05-01 10:00:00");
    AddReport(c_Second, L"2024-05-02 10:00:00");
    m_folder.WriteFile(L"Archive/Diff", "kein Ordner");

    const std::vector<SPageRow> rows = GetRunRows();

    EXPECT_EQ(rows.at(1).cells.at(6), "");
    EXPECT_EQ(m_output.GetText(),
              L"HTML-Report " +
                  GetReportPath(L"Diff/Diff.x64.release.[2024-05-01]-[10-00-00]-vs-[2024-05-02]-[10-00-00].html") +
                  L" konnte nicht erzeugt werden.\n");
}

TEST_F(ReportDirectoryOverview, DoesNotLinkAnUnfinishedDiff)
{
    AddReport(c_First, L"2024-05-01 10:00:00");
    AddReport(c_Second, L"2024-05-02 10:00:00");
    const std::wstring name = L"Archive/Diff/Diff.x64.release.[2024-05-01]-[10-00-00]-vs-[2024-05-02]-[10-00-00].html";
    const std::wstring diff = m_folder.GetPathOf(name);
    m_folder.MakeFolder(L"Archive/Diff");
    {
        const std::shared_ptr<void> limit = LbOs::LimitFileSize(1000);
        if (!limit)
        {
            GTEST_SKIP() << "the size of files cannot be limited here";
        }
        Generate(m_folder.GetPath());
    }
    EXPECT_TRUE(m_output.GetText().starts_with(L"HTML-Report " + diff + L" konnte nicht erzeugt werden.\n"))
        << LbEncoding::ToUtf8(m_output.GetText());
    EXPECT_TRUE(LbFileSystem::GetFileNames(GetReportPath(L"Diff/")).empty());

    EXPECT_NE(GetRunRows().at(1).cells.at(6), "") << "the next overview writes the comparison";
}

TEST_F(ReportDirectoryOverview, LinksADiffWhoseStyleSheetCannotBeWritten)
{
    AddReport(c_First, L"2024-05-01 10:00:00");
    AddReport(c_Second, L"2024-05-02 10:00:00");
    m_folder.MakeFolder(L"Archive/Diff/LuTestSuite.css");

    EXPECT_NE(GetRunRows().at(1).cells.at(6), "");
    EXPECT_NE(m_output.GetText(), L"");
}

TEST_F(ReportDirectoryOverview, EncodesCharactersThatWouldBreakALink)
{
    const std::wstring name = L"Report 100% #1 & größer [2024-05-01]-[10-00-00]";
    AddReport(name, L"2024-05-01 10:00:00");
    m_folder.WriteFile(L"Archive/" + name + L".html", "<html/>");

    EXPECT_EQ(GetRunRows().at(0).cells.at(5),
              "<a href=\"Archive/Report%20100%25%20%231%20%26%20gr%C3%B6%C3%9Fer%20[2024-05-01]-[10-00-00].html\">"
              "Report</a>");
}

TEST_F(ReportDirectoryOverview, ShowsEscapedTextsOfReportsUnchanged)
{
    AddReport(c_First, L"1. Mai &lt;früh&gt;");

    EXPECT_EQ(GetRunRows().at(0).cells.at(1), "1. Mai &lt;früh&gt;");
}

TEST_F(ReportDirectoryOverview, EscapesNamesOfFiles)
{
    const std::wstring name = L"Report R&D 'neu'";
    const ScopedFolder folder;
    const std::wstring root = folder.MakeFolder(L"A&B");
    folder.MakeFolder(L"A&B/Archive");
    AddReport(name, L"2024-05-01 10:00:00");
    AddReport(L"Report Z", L"2024-05-02 10:00:00");
    for (const wchar_t* report : {L"Report R&D 'neu'.xml", L"Report Z.xml"})
    {
        LbFileSystem::CopyContent(GetReportPath(report), root + L"Archive" + LbPath::c_Separator + report);
    }

    Generate(root);

    const std::string page = ReadPage(root + L"index.html");
    EXPECT_EQ(GetRow(page, "overview", "Report R&amp;D &apos;neu&apos;").cells.at(1), "2024-05-01 10:00:00");
    EXPECT_TRUE(GetRow(page, "overview-info", "Directory:").cells.at(1).find("A&amp;B") != std::string::npos);
    const std::string diff =
        ReadPage(folder.GetPathOf(L"A&B/Archive/Diff/Diff.x64.release.Report R&D 'neu'-vs-Report Z.html"));
    EXPECT_NE(GetRow(diff, "diffsource", "Data Source").cells.at(1).find("R&amp;D &apos;neu&apos;.xml"),
              std::string::npos);
}

TEST_F(ReportDirectoryOverview, EscapesMarkupInNamesOfFiles)
{
    const std::wstring name = L"Report <b>\"1\"";
    AddReport(name, L"2024-05-01 10:00:00");
    if (!LbFileSystem::IsFile(GetReportPath(name + L".xml")))
    {
        GTEST_SKIP() << "a file cannot have such a name here";
    }

    EXPECT_EQ(GetRunRows().at(0).cells.at(0), "Report &lt;b&gt;&quot;1&quot;");
}

TEST_F(ReportDirectoryOverview, EscapesInvalidMarkupOfReports)
{
    AddReport(c_First, L"A &amp; B & C");

    EXPECT_EQ(GetRunRows().at(0).cells.at(1), "A &amp; B &amp; C");
}

TEST_F(ReportDirectoryOverview, RefusesAnEmptyRoot)
{
    const ScopedWorkingDirectory directory(m_folder.GetPath());

    Generate(L"");

    EXPECT_EQ(m_output.GetText(), L"Fehler: Ungültiges Verzeichnis \n");
    EXPECT_FALSE(LbFileSystem::Exists(m_folder.GetPathOf(L"index.html")));
    EXPECT_FALSE(LbFileSystem::Exists(m_folder.GetPathOf(L"Archive")));
}

TEST_F(ReportDirectoryOverview, FindsReportsInTheRootItself)
{
    AddReport(c_First, L"2024-05-01 10:00:00");
    AddReport(c_Second, L"2024-05-02 10:00:00");
    m_folder.WriteFile(L"Archive/" + std::wstring(c_First) + L".html", "<html/>");

    LuTestSuiteReport::GenerateReportDirectoryOverview(GetReportPath(L""), L"index", L"", L"Report");

    const std::vector<SPageRow> rows = GetRows(ReadPage(GetReportPath(L"index.html")), "overview");
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[2].cells.at(5), "<a href=\"Report.x64.release.[2024-05-01]-[10-00-00].html\">Report</a>");
    EXPECT_EQ(rows[2].cells.at(6), "<a href=\"Diff/Diff.x64.release.[2024-05-01]-[10-00-00]-vs-"
                                   "[2024-05-02]-[10-00-00].html\">Diff</a>");
    EXPECT_TRUE(LbFileSystem::IsDirectory(GetReportPath(L"Diff")));
}

TEST_F(ReportDirectoryOverview, RefusesAFileAsRoot)
{
    const std::wstring root = m_folder.WriteFile(L"Datei", "") + LbPath::c_Separator;

    Generate(root);

    EXPECT_EQ(m_output.GetText(), L"Fehler: Ungültiges Verzeichnis " + root + L"\n");
}

TEST_F(ReportDirectoryOverview, RefusesAFileAsReportDirectory)
{
    const std::wstring directory = m_folder.WriteFile(L"Archive", "") + LbPath::c_Separator;

    Generate(m_folder.GetPath());

    EXPECT_EQ(m_output.GetText(), L"Fehler: Ungültiges Verzeichnis " + directory + L"\n");
    EXPECT_FALSE(LbFileSystem::Exists(m_folder.GetPathOf(L"index.html")));
}

TEST_F(ReportDirectoryOverview, PrintsOneLineWhenItCannotBeWritten)
{
    constexpr std::wstring_view c_Ending = L".html";
    std::vector<SUnwritablePlace> places = GetUnwritablePlaces(m_folder, L"zu.html");
    places.push_back({"full disk", MakeFullFile(m_folder, L"voll.html"), {}});
    int count = 0;
    for (const SUnwritablePlace& place : places)
    {
        // The overview is always below the reports' folder, so other places cannot be tested.
        if (!place.path.starts_with(m_folder.GetPath()))
        {
            continue;
        }
        ++count;
        SCOPED_TRACE(place.name);
        m_output.Clear();
        const std::size_t start = m_folder.GetPath().size();

        LuTestSuiteReport::GenerateReportDirectoryOverview(
            m_folder.GetPath(), place.path.substr(start, place.path.size() - start - c_Ending.size()), L"Archive",
            L"Report");

        EXPECT_EQ(m_output.GetText(),
                  L"Fehler beim Erzeugen der Report-Übersicht für Verzeichnis " + m_folder.GetPath() + L"\n");
    }
    EXPECT_GE(count, 6);
}

} // namespace
