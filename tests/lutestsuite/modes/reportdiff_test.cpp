// The mode that compares two XML reports.

#include <algorithm>
#include <filesystem>
#include <regex>
#include <system_error>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/fulldevice.h"
#include "tests/support/openedfiles.h"
#include "tests/support/page.h"
#include "tests/support/samplereports.h"
#include "tests/support/scopedenvironment.h"
#include "tests/support/scopedfolder.h"

namespace
{

class GenerateReportDiff : public testing::Test
{
protected:
    /// A setup that compares these files and writes no style sheet or script beside the page.
    LuTestSuiteSetup MakeSetup(std::vector<std::wstring> inputs) const
    {
        LuTestSuiteSetup setup;
        setup.diffInputs = std::move(inputs);
        setup.writeCss = false;
        setup.writeJs = false;
        return setup;
    }

    std::wstring WriteReport(const std::wstring& name, const LuTestSuiteReport::SReportData& data)
    {
        const std::wstring path = m_folder.GetPathOf(name);
        LuTestSuiteReport::GenerateXMLReport(path, data);
        return path;
    }

    void Generate(const LuTestSuiteSetup& setup) { LuTestSuiteUtils::GenerateReportDiff(setup); }

    CapturedOutput m_output;
    ScopedFolder m_folder;
    std::wstring m_a = WriteReport(L"alt.xml", MakeMixedReport());
    std::wstring m_b = WriteReport(L"neu.1.xml", MakeLaterReport());
};

TEST_F(GenerateReportDiff, WritesThePageBesideTheReference)
{
    m_folder.MakeFolder(L"anderswo");
    const std::wstring b = WriteReport(L"anderswo/neu.xml", MakeLaterReport());

    Generate(MakeSetup({m_a, b}));

    const std::string page = ReadPage(m_folder.GetPathOf(L"Diff-[alt][neu].html"));
    EXPECT_EQ(GetHeadings(page), (std::vector<std::string>{"Diff Sources", "Build Version", "Test Setup", "Result",
                                                           "Class Diff", "Case Diff"}));
    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(GenerateReportDiff, RemovesOnlyTheLastExtensionFromNames)
{
    Generate(MakeSetup({m_a, m_b}));

    EXPECT_TRUE(LbFileSystem::IsFile(m_folder.GetPathOf(L"Diff-[alt][neu.1].html")));
}

TEST_F(GenerateReportDiff, WritesThePageToThePathInTheSetup)
{
    LuTestSuiteSetup setup = MakeSetup({m_a, m_b});
    setup.diffOutput = m_folder.GetPathOf(L"vergleich.html");

    Generate(setup);

    EXPECT_EQ(LbFileSystem::GetFileNames(m_folder.GetPath()),
              (std::vector<std::wstring>{L"alt.xml", L"neu.1.xml", L"vergleich.html"}));
}

TEST_F(GenerateReportDiff, AppliesThePageSettingsOfTheSetup)
{
    LuTestSuiteSetup setup = MakeSetup({m_a, m_b});
    setup.diffOutput = m_folder.GetPathOf(L"vergleich.html");
    setup.writeCss = true;
    setup.smallReport = true;
    setup.tolerateWarnings = false;

    Generate(setup);

    EXPECT_TRUE(LbFileSystem::IsFile(m_folder.GetPathOf(L"LuTestSuite.css")));
    EXPECT_FALSE(LbFileSystem::Exists(m_folder.GetPathOf(L"LuTestSuite.js")));
    const std::vector<SPageRow> rows = GetRows(ReadPage(setup.diffOutput), "testcases");
    EXPECT_TRUE(std::ranges::none_of(rows.begin() + 1, rows.end(), &std::string::empty, &SPageRow::rowClass));
    // Only the reference run contains the leaking case, which counts as worse only if warnings count.
    EXPECT_TRUE(std::ranges::any_of(rows, [](const SPageRow& row) { return row.cells.at(4) == "Leck"; }));
}

TEST_F(GenerateReportDiff, RequiresExactlyTwoFiles)
{
    for (const std::vector<std::wstring>& inputs :
         {std::vector<std::wstring>{m_a}, std::vector<std::wstring>{m_a, m_b, m_a}})
    {
        m_output.Clear();
        Generate(MakeSetup(inputs));
        EXPECT_EQ(m_output.GetText(), L"Fehler Diff: Es müssen zwei Dateien angegeben werden.\n");
    }
    EXPECT_EQ(LbFileSystem::GetFileNames(m_folder.GetPath()).size(), 2U);
}

TEST_F(GenerateReportDiff, NamesTheFirstMissingFile)
{
    const std::wstring missing = m_folder.GetPathOf(L"fehlt.xml");

    Generate(MakeSetup({missing, m_folder.GetPathOf(L"fehlt auch.xml")}));
    EXPECT_EQ(m_output.GetText(), L"Fehler Diff: Datei " + missing + L" existiert nicht.\n");

    m_output.Clear();
    Generate(MakeSetup({m_a, missing}));
    EXPECT_EQ(m_output.GetText(), L"Fehler Diff: Datei " + missing + L" existiert nicht.\n");
}

TEST_F(GenerateReportDiff, NamesTheFileThatCannotBeRead)
{
    const std::wstring broken = m_folder.WriteFile(L"kaputt.xml", "<testsuite>");
    const std::wstring line = L"Fehler Diff: Daten der Datei " + broken + L" konnten nicht geladen werden.\n";

    for (const std::vector<std::wstring>& inputs :
         {std::vector<std::wstring>{broken, m_b}, std::vector<std::wstring>{m_a, broken}})
    {
        m_output.Clear();
        Generate(MakeSetup(inputs));
        EXPECT_EQ(m_output.GetText(), L"Fehler in Config-File: XML-Syntax Fehler\n" + line);
    }
    EXPECT_EQ(LbFileSystem::GetFileNames(m_folder.GetPath()).size(), 3U);
}

TEST_F(GenerateReportDiff, PrintsOneLineWhenThePageCannotBeWritten)
{
    LuTestSuiteSetup setup = MakeSetup({m_a, m_b});
    setup.diffOutput = m_folder.GetPathOf(L"fehlt/vergleich.html");

    Generate(setup);

    EXPECT_EQ(m_output.GetText(), L"HTML-Report " + setup.diffOutput + L" konnte nicht erzeugt werden.\n");
}

TEST_F(GenerateReportDiff, NeverReplacesAComparedFile)
{
    const std::string before = LbFileSystem::ReadFile8Bit(m_b);
    m_folder.MakeFolder(L"anderswo");
    LuTestSuiteSetup setup = MakeSetup({m_a, m_b});
    for (const std::wstring& output : {m_a, m_b, m_folder.GetPathOf(L"anderswo/../neu.1.xml")})
    {
        m_output.Clear();
        setup.diffOutput = output;
        Generate(setup);
        EXPECT_EQ(m_output.GetText(), L"Fehler Diff: Die Ausgabe würde die Datei " + output + L" überschreiben.\n");
    }
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(m_b), before);
    EXPECT_EQ(LbFileSystem::GetFileNames(m_folder.GetPath()), (std::vector<std::wstring>{L"alt.xml", L"neu.1.xml"}));
}

TEST_F(GenerateReportDiff, NeverReplacesAComparedFileUnderAnotherName)
{
    const std::string before = LbFileSystem::ReadFile8Bit(m_b);
    LuTestSuiteSetup setup = MakeSetup({m_a, m_b});
    setup.diffOutput = m_folder.GetPathOf(L"vergleich.html");
    std::error_code error;
    std::filesystem::create_hard_link(LbEncoding::ToNative(m_b), LbEncoding::ToNative(setup.diffOutput), error);
    ASSERT_FALSE(error) << error.message();

    Generate(setup);

    EXPECT_EQ(m_output.GetText(),
              L"Fehler Diff: Die Ausgabe würde die Datei " + setup.diffOutput + L" überschreiben.\n");
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(m_b), before);
}

TEST_F(GenerateReportDiff, ReplacesAFileThatItDoesNotRead)
{
    LuTestSuiteSetup setup = MakeSetup({m_a, m_b});
    setup.diffOutput = m_folder.WriteFile(L"vergleich.html", "alt");

    Generate(setup);

    EXPECT_FALSE(GetHeadings(ReadPage(setup.diffOutput)).empty());
    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(GenerateReportDiff, OpensThePageOnTheDesktop)
{
    if (!OpenedFiles::CanStandIn())
    {
        GTEST_SKIP() << "the desktop cannot be replaced here";
    }
    const OpenedFiles opened;
    const ScopedEnvironmentVariable path(L"PATH", opened.GetSearchPath());
    LuTestSuiteSetup setup = MakeSetup({m_a, m_b});
    Generate(setup);
    setup.openReports = true;
    setup.diffOutput = m_folder.GetPathOf(L"fehlt/vergleich.html");
    Generate(setup);
    setup.diffOutput = MakeFullFile(m_folder, L"voll.html");
    Generate(setup);
    setup.diffOutput = m_folder.GetPathOf(L"vergleich.html");
    Generate(setup);

    // Pages that were not requested or could not be written are not opened, even if an older page exists.
    EXPECT_EQ(opened.Await(), std::vector<std::wstring>{setup.diffOutput});
}

TEST_F(GenerateReportDiff, ShowsValidNumbersForImplausibleReports)
{
    const auto makeReport = [](const std::string& time, const std::string& memory) {
        const std::string times = "<TimeTotal>" + time + "</TimeTotal><TimeAvg>" + time + "</TimeAvg><TimeMax>" + time +
                                  "</TimeMax><TimeMin>" + time + "</TimeMin>";
        return "<testsuite><Statistics>" + times + "<CasesTotal>0</CasesTotal><Successful>4294967295</Successful>" +
               "</Statistics><testcase classname='C' name='a'><time>" + time + "</time><memory>" + memory +
               "</memory></testcase></testsuite>";
    };
    LuTestSuiteSetup setup = MakeSetup({m_a, m_b});
    setup.diffOutput = m_folder.GetPathOf(L"vergleich.html");
    for (const char* timeA : {"0", "1e-45", "1E-50", "-1e-45", "1e99", "-1E99", "inf", "nan", "-nan"})
    {
        for (const char* timeB : {"0", "1e99", "-1e99", "-inf", "nan"})
        {
            m_folder.WriteFile(L"alt.xml", makeReport(timeA, "0"));
            m_folder.WriteFile(L"neu.1.xml", makeReport(timeB, "18446744073709551615"));
            Generate(setup);
            const std::string page = ReadPage(setup.diffOutput);
            EXPECT_EQ(GetRows(page, "testcases").size(), 2U);
            EXPECT_FALSE(std::regex_search(page, std::regex("<td>-?(inf|nan)"))) << timeA << ", " << timeB;
        }
    }
}

TEST_F(GenerateReportDiff, ComparesARunWithItself)
{
    Generate(MakeSetup({m_a, m_a}));

    EXPECT_EQ(GetHeadings(ReadPage(m_folder.GetPathOf(L"Diff-[alt][alt].html"))),
              (std::vector<std::string>{"Diff Sources", "Build Version", "Test Setup", "Result", "Case Diff"}));
}

} // namespace
