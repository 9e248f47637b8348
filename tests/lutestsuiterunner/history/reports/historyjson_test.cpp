#include "testing/lutestsuiterunner/history/reports/historyjson.h"

#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "testing/lutestsuiterunner/history/analysis/randomnumbers.h"
#include "tests/lutestsuiterunner/history/analysis/findingsarchive.h"
#include "tests/support/golden.h"

using namespace Runner::History;

namespace
{

class HistoryJson : public CFindingsArchive
{
};

/// Approximately normally distributed noise in percent. Each operation is exact, so all platforms get the same noise.
double makeNoise(CRandomNumbers& random)
{
    constexpr int c_Parts = 8;
    double sum = 0.0;
    for (int part = 0; part < c_Parts; ++part)
    {
        sum += static_cast<double>(random.Below(1024)) / 1024.0 - 0.5;
    }
    return sum * 3.0;
}

SMeasured makeMeasured(std::size_t testCase, std::size_t run, CRandomNumbers& random)
{
    const bool isLate = run >= 33;
    SMeasured measured;
    const double level = 0.001 * static_cast<double>(testCase + 1) * (testCase % 20 == 3 && isLate ? 1.25 : 1.0);
    measured.seconds = static_cast<float>(level * (1.0 + makeNoise(random) / 100.0) * (run % 9 == 0 ? 1.5 : 1.0));
    const std::size_t size = 1000 * (testCase + 1) * (testCase % 20 == 5 && isLate ? 2U : 1U);
    measured.memory = size + random.Below(size / 50);
    measured.allocations = 500 + (testCase % 20 == 7 && run == 49 ? 1U : 0U);
    const bool isFlaky = testCase % 20 == 9 && random.Below(10) == 0;
    measured.result = isFlaky || (testCase % 20 == 11 && isLate) ? ECaseRunResult::Error : ECaseRunResult::Ok;
    return measured;
}

SyntheticRuns::SArchive makeExactArchive(std::size_t cases, std::size_t runs)
{
    SyntheticRuns::SArchive archive;
    archive.runs.resize(runs);
    CRandomNumbers random(42);
    for (std::size_t testCase = 0; testCase < cases; ++testCase)
    {
        archive.names.push_back({L"CGröße", LbFormat(L"Fall %03u", static_cast<std::uint32_t>(testCase))});
        for (std::size_t run = 0; run < runs; ++run)
        {
            archive.runs[run].label.name = LbFormat(L"Lauf %02u", static_cast<std::uint32_t>(run));
            const SMeasured measured = makeMeasured(testCase, run, random);
            archive.runs[run].cells.push_back({static_cast<std::uint32_t>(testCase), measured});
        }
    }
    return archive;
}

TEST_F(HistoryJson, ListsFindingsByKind)
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

TEST_F(HistoryJson, ListsTheOutcomesOfAllRunsInAFinding)
{
    const nlohmann::json json = nlohmann::json::parse(MakeJson(m_analyses, {}, 0));
    const std::string outcomes = json["configurations"][0]["findings"]["new"][0]["outcomes"];
    EXPECT_EQ(outcomes, std::string(10, '-') + std::string(50, 'P'));
}

TEST_F(HistoryJson, ListsOutcomesAndMeasurementsOfARequestedCaseInAllRuns)
{
    SyntheticRuns::SSettings settings;
    settings.cases = 2;
    settings.runs = 3;
    settings.fails = [](std::size_t, std::size_t run) { return run == 1; };
    SyntheticRuns::SArchive archive = MakeArchive(settings);
    archive.runs[0].cells[1].measured.memory = 1000;
    archive.runs[2].cells[1].measured.result = ECaseRunResult::Canceled;
    std::vector<SAnalysis> analyses;
    analyses.push_back(Analyze(L"", archive.GetTable(), {}, AnalyzeSteps(archive.GetTable(), {})));
    const nlohmann::json json = nlohmann::json::parse(MakeJson(analyses, {}, 0, {1}));
    const nlohmann::json& series = json["configurations"][0]["cases"];

    ASSERT_EQ(series.size(), 1U);
    EXPECT_EQ(series[0]["case"], "Fall 000001");
    EXPECT_EQ(series[0]["outcomes"], "PFC");
    ASSERT_EQ(series[0]["seconds"].size(), 3U);
    EXPECT_FLOAT_EQ(series[0]["seconds"][1].get<float>(), archive.runs[1].cells[1].measured.seconds);
    EXPECT_TRUE(series[0]["seconds"][2].is_null());
    EXPECT_EQ(series[0]["memory"][0], 1000);
    EXPECT_TRUE(series[0]["memory"][1].is_null());
}

TEST_F(HistoryJson, ShowsAnArchiveWithOneRun)
{
    SyntheticRuns::SSettings settings;
    settings.cases = 3;
    settings.runs = 1;
    const SyntheticRuns::SArchive archive = MakeArchive(settings);
    std::vector<SAnalysis> analyses;
    analyses.push_back(Analyze(L"", archive.GetTable(), {}, AnalyzeSteps(archive.GetTable(), {})));
    EXPECT_EQ(nlohmann::json::parse(MakeJson(analyses, {}, 0))["configurations"][0]["runs"].size(), 1U);
}

TEST_F(HistoryJson, NamesTheUnreadableRunsThatMakeAllGatesFail)
{
    const SGateResults gates = CheckGates({ReadGate(L"missing<9")}, m_analyses, 0, {L"größer.xml", L"."});
    const nlohmann::json json = nlohmann::json::parse(MakeJson(m_analyses, gates, 0));

    EXPECT_EQ(json["gates"][0]["holds"], false);
    EXPECT_EQ(json["unreadable"], nlohmann::json({"größer.xml", "."}));
    EXPECT_EQ(nlohmann::json::parse(MakeJson(m_analyses, {}, 0))["unreadable"], nlohmann::json::array());
}

TEST_F(HistoryJson, HasTheSameBytesOnAllPlatforms)
{
    const SyntheticRuns::SArchive archive = makeExactArchive(60, 50);
    std::vector<SAnalysis> analyses;
    analyses.push_back(Analyze(L"Release x64", archive.GetTable(), {}, AnalyzeSteps(archive.GetTable(), {})));
    const SGateResults gates = CheckGates({ReadGate(L"slower<2")}, analyses, 0, {});
    ExpectGolden("history/exact.json", MakeJson(analyses, gates, 0));
}

} // namespace
