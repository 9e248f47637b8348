#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/golden.h"
#include "tests/support/page.h"
#include "tests/support/samplereports.h"
#include "tests/support/scopedfolder.h"
#include "tests/support/scopedworkingdirectory.h"
#include "tests/support/unwritable.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using SData = LuTestSuiteReport::SReportData;

struct SPageOptions
{
    bool writeCss = false;
    bool writeJs = false;
    bool smallReport = false;
    bool tolerateWarnings = false;
};

class HTMLReport : public testing::Test
{
protected:
    void Generate(const std::wstring& path, const SData& data, const SPageOptions& options = {})
    {
        LuTestSuiteReport::GenerateHTMLReport(path, data, options.writeCss, options.writeJs, options.smallReport,
                                              options.tolerateWarnings);
    }

    std::string GetPage(const SData& data, const SPageOptions& options = {})
    {
        Generate(m_path, data, options);
        return ReadPage(m_path);
    }

    CapturedOutput m_output;
    ScopedFolder m_folder;
    std::wstring m_path = m_folder.GetPathOf(L"report.html");
};

TEST_F(HTMLReport, ShowsARunWithEveryOutcome)
{
    ExpectGolden("report/mixed.html", GetPage(MakeMixedReport()));
    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(HTMLReport, ToleratesWarnings)
{
    ExpectGolden("report/mixed_tolerant.html", GetPage(MakeMixedReport(), {.tolerateWarnings = true}));
}

TEST_F(HTMLReport, ShowsAnEmptyRun)
{
    ExpectGolden("report/empty.html", GetPage(SData()));
}

TEST_F(HTMLReport, HasNoClassSummaryWhenEveryClassPassed)
{
    EXPECT_EQ(GetHeadings(GetPage(MakePassedReport())),
              (std::vector<std::string>{"Build Version", "Test Setup", "Result", "Testcases"}));
}

TEST_F(HTMLReport, HasNoClassSummaryForToleratedWarnings)
{
    SData data = MakePassedReport();
    data.ClassesFlagged = 1;
    data.Classes[0].Warnings = 1;

    EXPECT_TRUE(GetRows(GetPage(data, {.tolerateWarnings = true}), "testclasses").empty());
}

TEST_F(HTMLReport, ListsClassesWithWarningsThatAreNotTolerated)
{
    SData data = MakePassedReport();
    data.ClassesFlagged = 1;
    data.Classes[0].Warnings = 1;

    EXPECT_EQ(GetRows(GetPage(data), "testclasses"),
              (std::vector<SPageRow>{{"", {"Class Name", "Total Cases", "Unsuccessful", "Warnings", "Contact"}},
                                     {"warning", {"CDruck", "2", "0", "1", ""}}}));
}

TEST_F(HTMLReport, ListsFailedClassesOnlyWhenWarningsAreTolerated)
{
    const std::vector<SPageRow> rows = GetRows(GetPage(MakeMixedReport(), {.tolerateWarnings = true}), "testclasses");

    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[1],
              (SPageRow{"failure", {"CLeser", "5", "4", "0", "<a href=\"mailto:joerg@example.org\">Jörg Müller</a>"}}));
    EXPECT_EQ(
        rows[2],
        (SPageRow{"error", {"CNetz", "4", "4", "0", "<a href=\"mailto:netz@example.org\">netz@example.org</a>"}}));
}

TEST_F(HTMLReport, ShowsAClassWithErrorsAndFailuresAsError)
{
    SData data = MakePassedReport();
    data.ClassesSuccessful = 1;
    data.Classes[0] = MakeReportClass(L"CDruck", 3, 1, 1, 1);

    EXPECT_EQ(GetRow(GetPage(data), "testclasses", "CDruck"), (SPageRow{"error", {"CDruck", "3", "2", "1", ""}}));
}

TEST_F(HTMLReport, OmitsTheCasesWhenItIsSmall)
{
    EXPECT_EQ(GetHeadings(GetPage(MakeMixedReport(), {.smallReport = true})),
              (std::vector<std::string>{"Build Version", "Test Setup", "Result", "Class Summary"}));
    EXPECT_EQ(GetHeadings(GetPage(MakePassedReport(), {.smallReport = true})),
              (std::vector<std::string>{"Build Version", "Test Setup", "Result"}));
}

TEST_F(HTMLReport, ShowsAnUnlimitedTimeOutAsADash)
{
    SData data = MakePassedReport();
    data.TimeOut = LuTestSuiteRun::c_NoLimit;
    EXPECT_EQ(GetRow(GetPage(data), "setup", "Testcase Time Out (sec.):").cells.at(1), "-");

    data.TimeOut = 4294967294;
    EXPECT_EQ(GetRow(GetPage(data), "setup", "Testcase Time Out (sec.):").cells.at(1), "-2");
}

TEST_F(HTMLReport, ShowsZeroPercentWithoutClassesAndCases)
{
    const std::string page = GetPage(SData());

    EXPECT_EQ(GetRow(page, "result", "Successful Classes / Total Classes:").cells.at(1), "0/0 = 0.00%");
    EXPECT_EQ(GetRow(page, "result", "Successful Cases / Total Cases:").cells.at(1), "0/0 = 0.00%");
}

TEST_F(HTMLReport, ShowsSubversionInformation)
{
    SData data = MakePassedReport();
    data.SvnInfo = std::make_unique<LuTestSuiteUtils::SSvnInfo>();
    data.SvnInfo->URL = L"https://svn.example.org/trunk";
    data.SvnInfo->Revision = L"12";
    data.SvnInfo->WorkingCopyRootPath = L"C:\\Quellen";
    data.SvnInfo->LastChangedAuthor = L"erika";
    data.SvnInfo->LastChangedRev = L"11";
    data.SvnInfo->LastChangedDate = L"2024-05-01";

    EXPECT_EQ(GetRows(GetPage(data), "build"),
              (std::vector<SPageRow>{{"", {"Build Configuration:", "Release x64"}},
                                     {"", {"SVN URL:", "https://svn.example.org/trunk"}},
                                     {"", {"SVN Revision", "12"}},
                                     {"", {"SVN Working Copy:", "C:\\Quellen"}},
                                     {"", {"SVN Last Changed Author:", "erika"}},
                                     {"", {"SVN Last Changed Rev:", "11"}},
                                     {"", {"SVN Last Changed Date:", "2024-05-01"}}}));
}

TEST_F(HTMLReport, EscapesNamesOfCasesButNotOfClasses)
{
    SData data;
    data.Cases = {MakeReportCase(L"CTest<int>", L"a<b")};

    const SPageRow row = GetRows(GetPage(data), "testcases").at(1);

    EXPECT_EQ(row.cells.at(1), "CTest<int>");
    EXPECT_EQ(row.cells.at(2), "a&lt;b");
}

TEST_F(HTMLReport, EscapesContactsInsideLinks)
{
    SData data = MakePassedReport();
    data.ClassesSuccessful = 1;
    data.Classes[0] = MakeReportClass(L"CDruck", 3, 1);
    data.Classes[0].ContactEMail = L"a@example.org\" onclick=\"alert(1)";
    data.Classes[0].ContactName = L"Müller & <b>Söhne</b> &amp; Co";

    EXPECT_EQ(GetRow(GetPage(data), "testclasses", "CDruck").cells.at(4),
              "<a href=\"mailto:a@example.org&quot; onclick=&quot;alert(1)\">"
              "Müller &amp; &lt;b&gt;Söhne&lt;/b&gt; &amp; Co</a>");
}

TEST_F(HTMLReport, NumbersCasesByTheirPositionInTheRecord)
{
    SData data;
    data.Cases = {MakeReportCase(L"C", L"a"), MakeReportCase(L"C", L"b")};
    data.Cases[0].Id = 7;
    data.Cases[1].Id = 9;

    const std::vector<SPageRow> rows = GetRows(GetPage(data), "testcases");

    EXPECT_EQ(rows.at(1).cells.at(0), "0");
    EXPECT_EQ(rows.at(2).cells.at(0), "1");
}

TEST_F(HTMLReport, ShowsAWarningOfAPassedCaseUnlessTolerated)
{
    SData data;
    data.Cases = {MakeReportCase(L"C", L"a", ECaseRunResult::Ok, true),
                  MakeReportCase(L"C", L"b", ECaseRunResult::Error, true)};

    const std::vector<SPageRow> rows = GetRows(GetPage(data), "testcases");
    EXPECT_EQ(rows.at(1).rowClass, "warning");
    EXPECT_EQ(rows.at(2).rowClass, "failure");
    EXPECT_EQ(GetRows(GetPage(data, {.tolerateWarnings = true}), "testcases").at(1).rowClass, "ok");
}

TEST_F(HTMLReport, EndsEachMessageWithALineBreak)
{
    SData data;
    data.Cases = {MakeReportCase(L"C", L"a")};
    data.Cases[0].Dumps = {{true, L"eins &amp; zwei"}, {false, L"drei"}};

    EXPECT_EQ(GetRows(GetPage(data), "testcases").at(1).cells.at(7), "eins &amp; zwei<br/>drei<br/>");
}

TEST_F(HTMLReport, WritesStyleSheetAndScriptByteForByte)
{
    Generate(m_path, SData(), {.writeCss = true, .writeJs = true});

    EXPECT_EQ(LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"LuTestSuite.css")),
              LuTestSuiteUtils::GetDefaultStylesheet());
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"LuTestSuite.js")),
              LuTestSuiteUtils::GetJavascriptSource());
}

TEST_F(HTMLReport, WritesNeitherStyleSheetNorScriptUnlessRequested)
{
    Generate(m_path, SData());

    EXPECT_EQ(LbFileSystem::GetFileNames(m_folder.GetPath()), std::vector<std::wstring>{L"report.html"});
}

TEST_F(HTMLReport, WritesIntoTheWorkingDirectoryIfThePathHasNoFolder)
{
    const ScopedWorkingDirectory directory(m_folder.GetPath());

    Generate(L"bericht.html", SData(), {.writeCss = true});

    EXPECT_EQ(LbFileSystem::GetFileNames(m_folder.GetPath()),
              (std::vector<std::wstring>{L"LuTestSuite.css", L"bericht.html"}));
}

TEST_F(HTMLReport, WritesNothingWithoutAPath)
{
    Generate(L"", MakePassedReport(), {.writeCss = true, .writeJs = true});

    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(HTMLReport, PrintsOneLineWhenItCannotBeWritten)
{
    for (const SUnwritablePlace& place : GetUnwritablePlaces(m_folder, L"zu.html"))
    {
        SCOPED_TRACE(place.name);
        m_output.Clear();

        Generate(place.path, MakeMixedReport(), {.writeCss = true, .writeJs = true});

        EXPECT_EQ(m_output.GetText(), L"HTML-Report " + place.path + L" konnte nicht erzeugt werden.\n");
        EXPECT_FALSE(LbFileSystem::Exists(m_folder.GetPathOf(L"LuTestSuite.css")));
    }
}

TEST_F(HTMLReport, IsWrittenEvenIfItsStyleSheetCannotBeWritten)
{
    m_folder.MakeFolder(L"LuTestSuite.css");

    Generate(m_path, MakePassedReport(), {.writeCss = true, .writeJs = true});

    EXPECT_EQ(m_output.GetText(), L"HTML-Report " + m_path + L" konnte nicht erzeugt werden.\n");
    EXPECT_TRUE(ReadPage(m_path).ends_with("</html>\n"));
    EXPECT_FALSE(LbFileSystem::Exists(m_folder.GetPathOf(L"LuTestSuite.js")));
}

TEST_F(HTMLReport, EmbedsTheIndentedStyleSheet)
{
    Generate(m_path, SData());

    std::string expected = "\t\t<style type=\"text/css\">\n\t\t\t";
    for (const char character : LuTestSuiteUtils::GetDefaultStylesheet())
    {
        if (character != '\r')
        {
            expected += character;
        }
        if (character == '\n')
        {
            expected += "\t\t\t";
        }
    }
    EXPECT_NE(LbFileSystem::ReadFile8Bit(m_path).find(expected + "\n\t\t</style>\n"), std::string::npos);
}

TEST_F(HTMLReport, KeepsAnEmptyStyleElementWithoutStyleSheet)
{
    LuStreamWriteASCIIFile file(m_path);
    LuTestSuiteUtils::LuMarkupWriter writer(file);
    LuTestSuiteReport::writeHTMLHeader(writer, false);
    file.Close();

    EXPECT_EQ(LbFileSystem::ReadFile8Bit(m_path),
              "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Strict//EN\" "
              "\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-strict.dtd\">\n"
              "<html xmlns=\"http://www.w3.org/1999/xhtml\">\n"
              "\t<head>\n"
              "\t\t<meta http-equiv=\"Content-Type\" content=\"text/html; charset=iso-8859-1\"/>\n"
              "\t\t<title>LuTestSuite Report</title>\n"
              "\t\t<style type=\"text/css\">\n"
              "\t\t</style>\n"
              "\t\t<link rel=\"stylesheet\" type=\"text/css\" href=\"LuTestSuite.css\"/>\n"
              "\t\t<script src=\"LuTestSuite.js\" type=\"text/javascript\"></script>\n"
              "\t</head>\n");
}

} // namespace
