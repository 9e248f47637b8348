#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/golden.h"
#include "tests/support/page.h"
#include "tests/support/samplereports.h"
#include "tests/support/scopedfolder.h"
#include "tests/support/unwritable.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using SCase = LuTestSuiteReport::SReportCase;
using SClass = LuTestSuiteReport::SReportClass;
using SData = LuTestSuiteReport::SReportData;

struct SDiffOptions
{
    bool smallReport = false;
    bool tolerateWarnings = false;
};

class HTMLDiffReport : public testing::Test
{
protected:
    std::string GetPage(const SData& a, const SData& b, const SDiffOptions& options = {})
    {
        LuTestSuiteReport::GenerateHTMLDiffReport(m_path, L"A.xml", L"B.xml", a, b, false, false, options.smallReport,
                                                  options.tolerateWarnings);
        return ReadPage(m_path);
    }

    /// Rows of the case table without its heading.
    std::vector<SPageRow> GetCaseRows(const std::vector<SCase>& a, const std::vector<SCase>& b,
                                      const SDiffOptions& options = {})
    {
        SData dataA;
        SData dataB;
        dataA.Cases = a;
        dataB.Cases = b;
        std::vector<SPageRow> rows = GetRows(GetPage(dataA, dataB, options), "testcases");
        rows.erase(rows.begin());
        return rows;
    }

    /// The class attribute of the only row in the case table.
    std::string GetState(const std::vector<SCase>& a, const std::vector<SCase>& b, bool tolerateWarnings = false)
    {
        const std::vector<SPageRow> rows = GetCaseRows(a, b, {.tolerateWarnings = tolerateWarnings});
        EXPECT_EQ(rows.size(), 1U);
        return rows.at(0).rowClass;
    }

    /// Rows of the class table without its heading; empty if there is no table.
    std::vector<SPageRow> GetClassRows(const std::vector<SClass>& a, const std::vector<SClass>& b,
                                       bool tolerateWarnings = false)
    {
        SData dataA;
        SData dataB;
        dataA.Classes = a;
        dataB.Classes = b;
        std::vector<SPageRow> rows =
            GetRows(GetPage(dataA, dataB, {.tolerateWarnings = tolerateWarnings}), "testclasses");
        rows.erase(rows.begin(), rows.empty() ? rows.begin() : rows.begin() + 1);
        return rows;
    }

    std::string GetClassState(const SClass& a, const SClass& b, bool tolerateWarnings = false)
    {
        const std::vector<SPageRow> rows = GetClassRows({a}, {b}, tolerateWarnings);
        return rows.empty() ? "" : rows.at(0).rowClass;
    }

    static SCase MakeCase(ECaseRunResult result = ECaseRunResult::Ok, bool warning = false)
    {
        return MakeReportCase(L"C", L"a", result, warning);
    }

    CapturedOutput m_output;
    ScopedFolder m_folder;
    std::wstring m_path = m_folder.GetPathOf(L"diff.html");
};

TEST_F(HTMLDiffReport, ComparesTwoRuns)
{
    ExpectGolden("report/diff.html", GetPage(MakeMixedReport(), MakeLaterReport()));
    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(HTMLDiffReport, OmitsPlainRowsWhenItIsSmall)
{
    ExpectGolden("report/diff_small.html",
                 GetPage(MakeMixedReport(), MakeLaterReport(), {.smallReport = true, .tolerateWarnings = true}));
}

TEST_F(HTMLDiffReport, HasOnlyPlainRowsIfARunIsComparedWithItself)
{
    const std::string page = GetPage(MakeMixedReport(), MakeMixedReport());

    EXPECT_EQ(GetHeadings(page),
              (std::vector<std::string>{"Diff Sources", "Build Version", "Test Setup", "Result", "Case Diff"}));
    EXPECT_EQ(GetRows(page, "testcases").size(), 1 + MakeMixedReport().Cases.size());
    for (const char* id : {"build", "setup", "result", "testcases"})
    {
        for (const SPageRow& row : GetRows(page, id))
        {
            EXPECT_EQ(row.rowClass, "") << row.cells.at(0);
        }
    }
}

TEST_F(HTMLDiffReport, NamesItsSources)
{
    EXPECT_EQ(GetRows(GetPage(SData(), SData()), "diffsource"),
              (std::vector<SPageRow>{{"", {"", "Reference Data\"A\"", "Test Data\"B\""}},
                                     {"", {"Data Source", "A.xml", "B.xml"}}}));
}

TEST_F(HTMLDiffReport, ShowsRatesAsBetterOrWorse)
{
    SData a;
    SData b;
    a.ClassesTotal = b.ClassesTotal = 3;
    a.CasesTotal = b.CasesTotal = 3;
    a.ClassesSuccessful = b.Successful = 1;
    b.ClassesSuccessful = a.Successful = 2;

    const std::string page = GetPage(a, b);

    EXPECT_EQ(GetRow(page, "result", "Successful Classes / Total Classes:"),
              (SPageRow{"better", {"Successful Classes / Total Classes:", "1/3 = 33.33%", "2/3 = 66.67%"}}));
    EXPECT_EQ(GetRow(page, "result", "Successful Cases / Total Cases:"),
              (SPageRow{"worse", {"Successful Cases / Total Cases:", "2/3 = 66.67%", "1/3 = 33.33%"}}));
}

TEST_F(HTMLDiffReport, ShowsChangedTimesAsDifferent)
{
    SData a;
    SData b;
    b.TimeTotal = 1.1920928955078125e-07F;
    b.TimeAvg = 1.0e-07F;
    a.TimeMax = 2.0F;

    const std::string page = GetPage(a, b);

    EXPECT_EQ(GetRow(page, "result", "Time total (sec):").rowClass, "diff");
    EXPECT_EQ(GetRow(page, "result", "Time per case avg (sec):").rowClass, "");
    EXPECT_EQ(GetRow(page, "result", "Time per case max (sec):").rowClass, "diff");
    EXPECT_EQ(GetRow(page, "result", "Time per case min (sec):").rowClass, "");
}

TEST_F(HTMLDiffReport, LeavesTheCellEmptyIfOneSideHasNoBuildInformation)
{
    EXPECT_EQ(GetRow(GetPage(SData(), MakeMixedReport()), "build", "PSCM Branch:").cells,
              (std::vector<std::string>{"PSCM Branch:", "", "main"}));
}

TEST_F(HTMLDiffReport, ComparesClassesByTheirUnsuccessfulCases)
{
    EXPECT_EQ(GetClassState(MakeReportClass(L"C", 3, 1, 1), MakeReportClass(L"C", 3, 0, 1)), "better");
    EXPECT_EQ(GetClassState(MakeReportClass(L"C", 3, 0, 1, 5), MakeReportClass(L"C", 3, 1, 1)), "worse");
    EXPECT_EQ(GetClassState(MakeReportClass(L"C", 3), MakeReportClass(L"C", 3)), "");
}

TEST_F(HTMLDiffReport, ComparesClassesByTheirWarningsUnlessTheyAreTolerated)
{
    const SClass without = MakeReportClass(L"C", 3);
    const SClass with = MakeReportClass(L"C", 3, 0, 0, 2);

    EXPECT_EQ(GetClassState(with, without), "better");
    EXPECT_EQ(GetClassState(without, with), "worse");
    EXPECT_EQ(GetClassState(without, with, true), "");
}

TEST_F(HTMLDiffReport, ShowsAClassWithAnotherNumberOfCasesAsDifferent)
{
    EXPECT_EQ(GetClassState(MakeReportClass(L"C", 3), MakeReportClass(L"C", 4)), "diff");
    EXPECT_EQ(GetClassState(MakeReportClass(L"C", 3), MakeReportClass(L"C", 4, 0, 0, 1), true), "diff");
}

TEST_F(HTMLDiffReport, ShowsAClassOfOneSideAsWorseIfItHasFailuresOrWarnings)
{
    const std::vector<SClass> failed = {MakeReportClass(L"C", 3, 1)};
    const std::vector<SClass> warned = {MakeReportClass(L"C", 3, 0, 0, 1)};
    const std::vector<SClass> good = {MakeReportClass(L"C", 3)};

    EXPECT_EQ(GetClassRows(failed, {}), (std::vector<SPageRow>{{"worse", {"C", "3", "", "1", "", "0", ""}}}));
    EXPECT_EQ(GetClassRows({}, failed), (std::vector<SPageRow>{{"worse", {"C", "", "3", "", "1", "", "0"}}}));
    EXPECT_EQ(GetClassRows({}, warned).size(), 1U);
    EXPECT_TRUE(GetClassRows({}, warned, true).empty());
    EXPECT_TRUE(GetClassRows(good, {}).empty());
}

TEST_F(HTMLDiffReport, LinksTheContactOfAClass)
{
    SClass a = MakeReportClass(L"C", 1);
    SClass b = MakeReportClass(L"C", 2);
    a.ContactEMail = L"a@example.org";
    EXPECT_EQ(GetClassRows({a}, {b}).at(0).cells.at(0), "C <a href=\"mailto:a@example.org\">a@example.org</a>");

    b.ContactEMail = L"b@example.org";
    b.ContactName = L"Berta";
    EXPECT_EQ(GetClassRows({a}, {b}).at(0).cells.at(0), "C <a href=\"mailto:b@example.org\">Berta</a>");
}

TEST_F(HTMLDiffReport, ShowsAPassedCaseThatFailedBeforeAsImproved)
{
    const std::vector<SPageRow> rows = GetCaseRows({MakeCase(ECaseRunResult::Error)}, {MakeCase()});

    EXPECT_EQ(rows.at(0).rowClass, "better");
    EXPECT_EQ(rows.at(0).cells.at(0), "Improved");
}

TEST_F(HTMLDiffReport, ShowsAFailedCaseThatPassedBeforeAsWorse)
{
    const std::vector<SPageRow> rows = GetCaseRows({MakeCase()}, {MakeCase(ECaseRunResult::TimeOut)});

    EXPECT_EQ(rows.at(0).rowClass, "worse");
    EXPECT_EQ(rows.at(0).cells.at(0), "Worse");
}

TEST_F(HTMLDiffReport, ShowsAFailureOfAnotherKindAsDifferent)
{
    const std::vector<SPageRow> rows =
        GetCaseRows({MakeCase(ECaseRunResult::Error, true)}, {MakeCase(ECaseRunResult::TimeOut)});

    EXPECT_EQ(rows.at(0).rowClass, "diff");
    EXPECT_EQ(rows.at(0).cells.at(0), "Different");
}

TEST_F(HTMLDiffReport, ShowsAResolvedWarningAsImprovedEvenWhenTolerated)
{
    EXPECT_EQ(GetState({MakeCase(ECaseRunResult::Ok, true)}, {MakeCase()}), "better");
    EXPECT_EQ(GetState({MakeCase(ECaseRunResult::Ok, true)}, {MakeCase()}, true), "better");
    EXPECT_EQ(GetState({MakeCase(ECaseRunResult::Error, true)}, {MakeCase(ECaseRunResult::Error)}), "better");
}

TEST_F(HTMLDiffReport, ShowsANewWarningAsWorseUnlessTolerated)
{
    EXPECT_EQ(GetState({MakeCase()}, {MakeCase(ECaseRunResult::Ok, true)}), "worse");
    EXPECT_EQ(GetState({MakeCase()}, {MakeCase(ECaseRunResult::Ok, true)}, true), "");
    EXPECT_EQ(GetState({MakeCase(ECaseRunResult::Ok, true)}, {MakeCase(ECaseRunResult::Ok, true)}), "");
}

TEST_F(HTMLDiffReport, ShowsAFixedCaseAsImprovedDespiteANewWarning)
{
    EXPECT_EQ(GetState({MakeCase(ECaseRunResult::Error)}, {MakeCase(ECaseRunResult::Ok, true)}), "better");
}

TEST_F(HTMLDiffReport, ShowsAFailedCaseOfOneSideAsWorse)
{
    EXPECT_EQ(GetState({MakeCase(ECaseRunResult::Error)}, {}), "worse");
    EXPECT_EQ(GetState({}, {MakeCase(ECaseRunResult::Error)}), "worse");
    EXPECT_EQ(GetState({MakeCase()}, {}), "");
    EXPECT_EQ(GetState({}, {MakeCase()}), "");
}

TEST_F(HTMLDiffReport, ShowsAWarnedCaseMissingInTestDataAsWorseUnlessTolerated)
{
    EXPECT_EQ(GetState({MakeCase(ECaseRunResult::Ok, true)}, {}), "worse");
    EXPECT_EQ(GetState({MakeCase(ECaseRunResult::Ok, true)}, {}, true), "");
}

TEST_F(HTMLDiffReport, ShowsAWarnedCaseMissingInReferenceDataAsWorseOnlyIfTolerated)
{
    EXPECT_EQ(GetState({}, {MakeCase(ECaseRunResult::Ok, true)}, true), "worse");
    EXPECT_EQ(GetState({}, {MakeCase(ECaseRunResult::Ok, true)}), "");
}

TEST_F(HTMLDiffReport, ShowsTheValuesOfBothSidesOfACase)
{
    SCase a = MakeReportCase(L"CTest<int>", L"a<b", ECaseRunResult::Ok);
    SCase b = a;
    a.Id = 3;
    b.Id = 5;
    b.Time = 1.25F;
    b.Memory = 1024;
    b.Info = L"Speicherleck von 8 Bytes detektiert.";

    EXPECT_EQ(GetCaseRows({a}, {b}), (std::vector<SPageRow>{{"",
                                                             {"", "3", "5", "CTest&lt;int&gt;", "a&lt;b", "0.500000",
                                                              "1.250000", "2.50", "2048", "1024", "0.50", "Ok", "Ok",
                                                              "", "Speicherleck von 8 Bytes detektiert."}}}));
}

TEST_F(HTMLDiffReport, EscapesTheNamesOfItsSources)
{
    LuTestSuiteReport::GenerateHTMLDiffReport(m_path, L"Report R&D <1>.xml", L"&amp;.xml", SData(), SData(), false,
                                              false, false, false);

    EXPECT_EQ(GetRows(ReadPage(m_path), "diffsource").at(1).cells,
              (std::vector<std::string>{"Data Source", "Report R&amp;D &lt;1&gt;.xml", "&amp;amp;.xml"}));
}

TEST_F(HTMLDiffReport, EscapesInvalidTextOfReportsButKeepsValidReferences)
{
    const std::wstring script = L"<script>\"'</script>";
    SClass a = MakeReportClass(L"C" + script, 1);
    const SClass b = MakeReportClass(L"C" + script, 2);
    a.ContactEMail = L"\"><b>";
    SData dataA;
    SData dataB;
    dataA.Classes = {a};
    dataB.Classes = {b};
    dataA.GPU = script;
    dataB.GPU = L"R&D &foo; &amp; &#65; &#x42; &#0; &#xFFFF; &#1114112; &#; &#x; &; & &#-1; &#99999999999; &lt";

    const std::string page = GetPage(dataA, dataB);

    const std::string shown = "&lt;script&gt;&quot;&apos;&lt;/script&gt;";
    EXPECT_EQ(GetRows(page, "testclasses").at(1).cells.at(0),
              "C" + shown + " <a href=\"mailto:&quot;&gt;&lt;b&gt;\">&quot;&gt;&lt;b&gt;</a>");
    EXPECT_EQ(GetRow(page, "setup", "GPU:").cells.at(1), shown);
    EXPECT_EQ(GetRow(page, "setup", "GPU:").cells.at(2),
              "R&amp;D &amp;foo; &amp; &#65; &#x42; &amp;#0; &amp;#xFFFF; &amp;#1114112; &amp;#; &amp;#x; &amp;; &amp; "
              "&amp;#-1; &amp;#99999999999; &amp;lt");
}

TEST_F(HTMLDiffReport, LeavesTheCellsOfAMissingSideEmpty)
{
    EXPECT_EQ(
        GetCaseRows({}, {MakeCase()}),
        (std::vector<SPageRow>{{"", {"", "", "0", "C", "a", "", "0.500000", "", "", "2048", "", "", "Ok", "", ""}}}));
}

TEST_F(HTMLDiffReport, ShowsARatioOfZeroIfTheReferenceIsZero)
{
    SCase a = MakeCase();
    a.Time = 0.0F;
    a.Memory = 0;

    const SPageRow row = GetCaseRows({a}, {MakeCase()}).at(0);

    EXPECT_EQ(row.cells.at(7), "0.00");
    EXPECT_EQ(row.cells.at(10), "0.00");
}

TEST_F(HTMLDiffReport, OrdersCasesByClassAndName)
{
    const std::vector<SPageRow> rows = GetCaseRows({MakeReportCase(L"D", L"a"), MakeReportCase(L"C", L"b")},
                                                   {MakeReportCase(L"C", L"a"), MakeReportCase(L"C", L"c")});

    ASSERT_EQ(rows.size(), 4U);
    EXPECT_EQ(rows[0].cells.at(4), "a");
    EXPECT_EQ(rows[1].cells.at(4), "b");
    EXPECT_EQ(rows[2].cells.at(4), "c");
    EXPECT_EQ(rows[3].cells.at(3), "D");
}

TEST_F(HTMLDiffReport, ComparesTheWorstRunOfARepeatedCase)
{
    const SCase ok = MakeCase();
    const SCase warned = MakeCase(ECaseRunResult::Ok, true);
    const SCase failed = MakeCase(ECaseRunResult::Error);
    const SCase unfinished = MakeCase(ECaseRunResult::TimeOut);

    EXPECT_EQ(GetState({ok, ok, ok}, {ok, failed, ok}), "worse");
    EXPECT_EQ(GetState({failed, ok}, {ok, ok}), "better");
    EXPECT_EQ(GetState({failed, ok}, {ok, failed}), "");
    EXPECT_EQ(GetState({ok, ok}, {warned, ok}), "worse");
    EXPECT_EQ(GetState({failed, ok}, {unfinished, failed}), "diff");
    EXPECT_EQ(GetCaseRows({}, {unfinished, failed, ok}).at(0).cells.at(12), "Zeitlimit überschritten");
}

TEST_F(HTMLDiffReport, ComparesTheWorstFolderOfAClass)
{
    const SClass good = MakeReportClass(L"C", 3);
    const SClass warned = MakeReportClass(L"C", 3, 0, 0, 1);
    const SClass bad = MakeReportClass(L"C", 3, 1);

    EXPECT_EQ(GetClassRows({good, good}, {bad, good}).at(0).rowClass, "worse");
    EXPECT_EQ(GetClassRows({good, good}, {warned, good}).at(0).rowClass, "worse");
    EXPECT_TRUE(GetClassRows({bad, good}, {good, bad}).empty());
}

TEST_F(HTMLDiffReport, PrintsOneLineWhenItCannotBeWritten)
{
    for (const SUnwritablePlace& place : GetUnwritablePlaces(m_folder, L"zu.html"))
    {
        SCOPED_TRACE(place.name);
        m_output.Clear();

        LuTestSuiteReport::GenerateHTMLDiffReport(place.path, L"A.xml", L"B.xml", MakeMixedReport(), MakeLaterReport(),
                                                  true, true, false, false);

        EXPECT_EQ(m_output.GetText(), L"HTML-Report " + place.path + L" konnte nicht erzeugt werden.\n");
        EXPECT_FALSE(LbFileSystem::Exists(m_folder.GetPathOf(L"LuTestSuite.css")));
    }
}

} // namespace
