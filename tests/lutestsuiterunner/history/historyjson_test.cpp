#include "testing/lutestsuiterunner/history/historyjson.h"

#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/lutestsuiterunner/history/findingsarchive.h"

using namespace Runner::History;

namespace
{

class HistoryJson : public CFindingsArchive
{
};

TEST_F(HistoryJson, HasEachFinding)
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

TEST_F(HistoryJson, ShowsTheOutcomesOfEachRun)
{
    const nlohmann::json json = nlohmann::json::parse(MakeJson(m_analyses, {}, 0));
    const std::string outcomes = json["configurations"][0]["findings"]["new"][0]["outcomes"];
    EXPECT_EQ(outcomes, std::string(10, '-') + std::string(50, 'P'));
}

TEST_F(HistoryJson, ShowsAnArchiveOfOneRun)
{
    SyntheticRuns::SSettings settings;
    settings.cases = 3;
    settings.runs = 1;
    const SyntheticRuns::SArchive archive = MakeArchive(settings);
    std::vector<SAnalysis> analyses;
    analyses.push_back(Analyze(L"", archive.GetTable(), {}, AnalyzeSteps(archive.GetTable(), {})));
    EXPECT_EQ(nlohmann::json::parse(MakeJson(analyses, {}, 0))["configurations"][0]["runs"].size(), 1U);
}

} // namespace
