// JSON and page of the history.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "testing/lutestsuiterunner/history/historyjson.h"
#include "testing/lutestsuiterunner/history/page.h"
#include "tests/support/syntheticruns.h"

using namespace Runner::History;

namespace
{

/// Case 0 fails with a message in the newest run, 59. Case 1 is flaky with one build. Case 2 is slower from run 40 on.
/// Case 3 is missing in the newest run, case 4 in runs 0 to 9. All indices begin at 0; reports count runs from 1.
class HistoryReports : public testing::Test
{
protected:
    HistoryReports()
    {
        SyntheticRuns::SSettings settings;
        settings.cases = 40;
        settings.runs = 60;
        settings.factor = [](std::size_t testCase, std::size_t run) { return testCase == 2 && run >= 40 ? 1.5 : 1.0; };
        settings.fails = [](std::size_t testCase, std::size_t run) {
            return (testCase == 0 && run == 59) || (testCase == 1 && run % 20 == 10);
        };
        m_archive = MakeArchive(settings);
        m_archive.names[0] = {L"CKlasse", L"<b>größer & \"mehr\"</b>"};
        for (SRun& run : m_archive.runs)
        {
            run.label.build = L"eins";
        }
        m_archive.runs[59].messages.push_back({0, L"Wert 4 < 5"});
        std::erase_if(m_archive.runs[59].cells, [](const SCell& cell) { return cell.caseIndex == 3; });
        for (std::size_t run = 0; run < 10; ++run)
        {
            std::erase_if(m_archive.runs[run].cells, [](const SCell& cell) { return cell.caseIndex == 4; });
        }
        m_analyses.push_back(Analyze(L"Release x64", m_archive.GetTable(), {}, AnalyzeSteps(m_archive.GetTable(), {})));
    }

    bool hasPagePart(const std::string& part) const
    {
        return MakePage(m_analyses, {}, 0).find(part) != std::string::npos;
    }

    SyntheticRuns::SArchive m_archive;
    std::vector<SAnalysis> m_analyses;
};

} // namespace

TEST_F(HistoryReports, JsonHasEachFinding)
{
    const nlohmann::json json = nlohmann::json::parse(MakeJson(m_analyses, {}, 0));
    const nlohmann::json& findings = json["configurations"][0]["findings"];
    ASSERT_EQ(findings["new-failures"].size(), 1U);
    EXPECT_EQ(findings["new-failures"][0]["case"], "<b>größer & \"mehr\"</b>");
    EXPECT_EQ(findings["new-failures"][0]["since"]["number"], 60);
    EXPECT_EQ(findings["new-failures"][0]["since"]["name"], "Lauf 060");
    ASSERT_EQ(findings["flaky"].size(), 1U);
    EXPECT_EQ(findings["flaky"][0]["flaky"]["returns"], 3);
    EXPECT_EQ(findings["quarantine"].size(), 1U);
    ASSERT_EQ(findings["slower"].size(), 1U);
    EXPECT_NEAR(findings["slower"][0]["since"]["number"].get<double>(), 41.0, 1.0);
    EXPECT_EQ(findings["missing"][0]["since"]["number"], 60);
    EXPECT_EQ(findings["new"][0]["since"]["number"], 11);
    EXPECT_EQ(findings["fixed"].size(), 0U);
    EXPECT_EQ(json["configurations"][0]["counts"]["slower"], 1);
    EXPECT_EQ(json["configurations"][0]["runs"].size(), 60U);
    EXPECT_EQ(json["configurations"][0]["reshuffled"]["archives"], 20);
}

TEST_F(HistoryReports, JsonShowsTheOutcomesOfEachRun)
{
    const nlohmann::json json = nlohmann::json::parse(MakeJson(m_analyses, {}, 0));
    const std::string outcomes = json["configurations"][0]["findings"]["new"][0]["outcomes"];
    EXPECT_EQ(outcomes, std::string(10, '-') + std::string(50, 'P'));
}

TEST_F(HistoryReports, PageNamesFindingsAndEscapesTexts)
{
    EXPECT_TRUE(hasPagePart("&lt;b&gt;größer &amp; &quot;mehr&quot;&lt;/b&gt;"));
    EXPECT_FALSE(hasPagePart("<b>größer"));
    EXPECT_TRUE(hasPagePart("Wert 4 &lt; 5"));
    EXPECT_TRUE(hasPagePart("<section id=\"k1-slower\"><h3>Langsamer <small>1</small></h3>"));
    EXPECT_TRUE(hasPagePart("3-mal hin und zurück, 3 von 60 fehlgeschlagen; auch mit demselben Build"));
}

TEST_F(HistoryReports, PageNeedsNoOtherFile)
{
    const std::string page = MakePage(m_analyses, {}, 0);
    EXPECT_EQ(page.find("src="), std::string::npos);
    EXPECT_EQ(page.find("<link"), std::string::npos);
    EXPECT_EQ(page.find("http:"), std::string::npos);
    EXPECT_EQ(page.find("https:"), std::string::npos);
}

TEST_F(HistoryReports, PageShowsTheAlarmsOfShuffledRuns)
{
    EXPECT_TRUE(hasPagePart("20-mal in anderen zufälligen Reihenfolgen"));
}

TEST_F(HistoryReports, ArchiveOfOneRunIsShown)
{
    SyntheticRuns::SSettings settings;
    settings.cases = 3;
    settings.runs = 1;
    const SyntheticRuns::SArchive archive = MakeArchive(settings);
    std::vector<SAnalysis> analyses;
    analyses.push_back(Analyze(L"", archive.GetTable(), {}, AnalyzeSteps(archive.GetTable(), {})));
    EXPECT_NE(MakePage(analyses, {}, 0).find("hat sich nichts bewegt"), std::string::npos);
    EXPECT_EQ(nlohmann::json::parse(MakeJson(analyses, {}, 0))["configurations"][0]["runs"].size(), 1U);
}
