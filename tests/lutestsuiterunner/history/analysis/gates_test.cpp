#include "testing/lutestsuiterunner/history/analysis/gates.h"

#include <gtest/gtest.h>

#include "tests/support/syntheticruns.h"

using namespace Runner::History;

namespace
{

std::wstring getMistake(const std::wstring& rule)
{
    try
    {
        ReadGate(rule);
    }
    catch (const std::wstring& message)
    {
        return message;
    }
    return {};
}

SAnalysis analyzeOne(const std::wstring& configuration, const SyntheticRuns::SArchive& archive)
{
    return Analyze(configuration, archive.GetTable(), {}, AnalyzeSteps(archive.GetTable(), {}));
}

std::vector<SAnalysis> analyzeAll(const SyntheticRuns::SArchive& archive)
{
    std::vector<SAnalysis> analyses;
    analyses.push_back(analyzeOne(L"Release x64", archive));
    return analyses;
}

/// Ten cases in twelve runs: two cases fail only in the newest run, a third one fails in the last four runs.
SyntheticRuns::SArchive makeArchive()
{
    SyntheticRuns::SSettings settings;
    settings.cases = 10;
    settings.runs = 12;
    settings.fails = [](std::size_t testCase, std::size_t run) {
        return (testCase < 2 && run == 11) || (testCase == 2 && run >= 8);
    };
    return MakeArchive(settings);
}

} // namespace

TEST(HistoryGates, RuleConsistsOfNameComparisonAndNumber)
{
    const SGate gate = ReadGate(L"slower<=12");
    EXPECT_EQ(gate.kind, "slower");
    EXPECT_EQ(gate.limit, 12U);
    EXPECT_TRUE(gate.Holds(12));
    EXPECT_FALSE(gate.Holds(13));
    EXPECT_TRUE(ReadGate(L"slower<5").Holds(4));
    EXPECT_FALSE(ReadGate(L"slower<5").Holds(5));
    EXPECT_TRUE(ReadGate(L"missing=0").Holds(0));
    EXPECT_FALSE(ReadGate(L"missing=0").Holds(1));
}

TEST(HistoryGates, MessageNamesTheMistakeInARule)
{
    EXPECT_NE(getMistake(L"slower>5").find(L"hat nicht die Form"), std::wstring::npos);
    EXPECT_NE(getMistake(L"slower").find(L"hat nicht die Form"), std::wstring::npos);
    EXPECT_NE(getMistake(L"slower<").find(L"endet nicht mit einer Zahl"), std::wstring::npos);
    EXPECT_NE(getMistake(L"slower<5%").find(L"endet nicht mit einer Zahl"), std::wstring::npos);
    EXPECT_NE(getMistake(L"slower<99999999999").find(L"endet nicht mit einer Zahl"), std::wstring::npos);
    EXPECT_NE(getMistake(L"uglier=0").find(L"bekannt sind new-failures, "), std::wstring::npos);
    EXPECT_NE(getMistake(L"").find(L"hat nicht die Form"), std::wstring::npos);
}

TEST(HistoryGates, FailedGateNamesItsCases)
{
    const SyntheticRuns::SArchive archive = makeArchive();
    const SGateResult result = CheckGate(ReadGate(L"new-failures=0"), analyzeAll(archive), 0);
    EXPECT_FALSE(result.holds);
    ASSERT_EQ(result.cases.size(), 3U);
    EXPECT_EQ(result.cases[0], L"CKlasse:Fall 000000 (seit Lauf 012)");
    EXPECT_EQ(result.cases[2], L"CKlasse:Fall 000002 (seit Lauf 009)");
}

TEST(HistoryGates, LimitToNewestRunsLeavesOutOlderFindings)
{
    const SyntheticRuns::SArchive archive = makeArchive();
    EXPECT_EQ(CheckGate(ReadGate(L"new-failures=2"), analyzeAll(archive), 1).count, 2U);
    EXPECT_EQ(CheckGate(ReadGate(L"new-failures=3"), analyzeAll(archive), 4).count, 3U);
}

TEST(HistoryGates, CountsOfAllConfigurationsAreAdded)
{
    const SyntheticRuns::SArchive archive = makeArchive();
    std::vector<SAnalysis> analyses = analyzeAll(archive);
    analyses.push_back(analyzeOne(L"Debug x64", archive));
    const SGateResult result = CheckGate(ReadGate(L"new-failures<5"), analyses, 0);
    EXPECT_EQ(result.count, 6U);
    EXPECT_FALSE(result.holds);
    EXPECT_EQ(result.cases[5], L"CKlasse:Fall 000002 (seit Lauf 009, Debug x64)");
}

TEST(HistoryGates, NoGateHoldsIfTheNewestRunMayBeUnreadable)
{
    const SyntheticRuns::SArchive archive = makeArchive();
    const std::vector<SGate> gates = {ReadGate(L"missing=0"), ReadGate(L"new-failures<9")};
    const SGateResults readable = CheckGates(gates, analyzeAll(archive), 0, {});
    ASSERT_EQ(readable.results.size(), 2U);
    EXPECT_TRUE(readable.results[0].holds);
    EXPECT_TRUE(readable.results[1].holds);

    const SGateResults unreadable = CheckGates(gates, analyzeAll(archive), 0, {L"b.xml"});
    ASSERT_EQ(unreadable.results.size(), 2U);
    EXPECT_FALSE(unreadable.results[0].holds);
    EXPECT_FALSE(unreadable.results[1].holds);
    EXPECT_EQ(unreadable.unreadable, std::vector<std::wstring>{L"b.xml"});
}
