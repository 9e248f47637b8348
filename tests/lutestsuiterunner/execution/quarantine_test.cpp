#include "testing/lutestsuiterunner/execution/quarantine.h"

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "tests/support/scopedfolder.h"

namespace
{

class RunnerQuarantine : public testing::Test
{
protected:
    RunnerQuarantine()
    {
        m_plan.dataDirectory = m_folder.GetPath();
        for (const wchar_t* className : {L"CFirst", L"CSecond"})
        {
            LuTestSuite::SUnitTest& unitTest = m_plan.unitTests.emplace_back();
            unitTest.className = className;
            unitTest.dataDirectory = m_folder.GetPath() + className + L"/";
            for (const wchar_t* caseName : {L"eins", L"zwei", L"drei"})
            {
                unitTest.cases.emplace_back().name = caseName;
            }
        }
        m_plan.cases = Runner::PlanCases(m_plan.unitTests, 1);
    }

    Runner::Quarantine Read(const std::string& text)
    {
        return Runner::ReadQuarantine(m_folder.WriteFile(L"quarantaene.txt", text), {}, m_plan);
    }

    std::vector<std::uint32_t> GetQuarantined() const
    {
        std::vector<std::uint32_t> cases;
        for (std::uint32_t index = 0; index < m_plan.cases.size(); ++index)
        {
            if (m_plan.cases[index].isQuarantined)
            {
                cases.push_back(index);
            }
        }
        return cases;
    }

    /// A run in which the case had these results, attempt by attempt.
    Runner::CRunState MakeState(std::uint32_t caseIndex, const std::vector<LuTestSuiteRun::ECaseRunResult>& results)
    {
        Runner::CRunState state(m_plan);
        std::uint64_t sequence = 0;
        for (std::uint32_t attempt = 1; attempt <= results.size(); ++attempt)
        {
            Runner::SCaseStarted started;
            started.caseIndex = caseIndex;
            started.attempt = attempt;
            state.Apply({1, ++sequence}, started);
            Runner::SCaseEnded ended;
            ended.caseIndex = caseIndex;
            ended.attempt = attempt;
            ended.info.result = results[attempt - 1];
            state.Apply({1, ++sequence}, ended);
        }
        return state;
    }

    ScopedFolder m_folder;
    Runner::SPlan m_plan;
};

using enum LuTestSuiteRun::ECaseRunResult;

TEST_F(RunnerQuarantine, MatchesPatternsLikeTheSelectionOption)
{
    Read("# Kommentar\r\n\r\n  /CFirst:zwei$  \n:drei$\n");

    EXPECT_EQ(GetQuarantined(), (std::vector<std::uint32_t>{1, 2, 5}));
}

TEST_F(RunnerQuarantine, NamesEntriesThatMatchNoCase)
{
    const Runner::Quarantine quarantine = Read("CFirst\nCThird\n");

    EXPECT_EQ(Runner::FindIdleEntries(quarantine), (std::vector<std::wstring>{L"CThird"}));
}

TEST_F(RunnerQuarantine, RefusesInvalidPatterns)
{
    try
    {
        Read("# Kommentar\nCFirst\n([\n");
        ADD_FAILURE() << "no exception";
    }
    catch (const std::wstring& message)
    {
        EXPECT_TRUE(message.starts_with(m_folder.GetPathOf(L"quarantaene.txt") +
                                        L", Zeile 3: Ungültiger regulärer Ausdruck '(['"))
            << LbEncoding::ToUtf8(message);
    }
}

TEST_F(RunnerQuarantine, RefusesAMissingFile)
{
    EXPECT_THROW(Runner::ReadQuarantine(m_folder.GetPathOf(L"fehlt"), {}, m_plan), LbException);
}

TEST_F(RunnerQuarantine, CountsConsecutivePassedRuns)
{
    Runner::Quarantine quarantine = Read("CFirst:zwei\n");
    for (std::uint32_t run = 1; run <= 3; ++run)
    {
        Runner::CountPassedRuns(quarantine, MakeState(1, {Ok}), m_folder.GetPath());
        Runner::WritePassedRuns(quarantine, std::to_string(run), m_folder.GetPath());
        EXPECT_EQ(quarantine[0].passedRuns, run);
    }
}

TEST_F(RunnerQuarantine, CountsAResumedRunOnce)
{
    Runner::Quarantine quarantine = Read("CFirst:zwei\n");
    Runner::CountPassedRuns(quarantine, MakeState(1, {Ok}), m_folder.GetPath());
    Runner::WritePassedRuns(quarantine, "früher", m_folder.GetPath());
    m_plan.runId = "dieser";
    for (std::uint32_t resumed = 0; resumed < 3; ++resumed)
    {
        Runner::CountPassedRuns(quarantine, MakeState(1, {Ok}), m_folder.GetPath());
        Runner::WritePassedRuns(quarantine, m_plan.runId, m_folder.GetPath());
        EXPECT_EQ(quarantine[0].passedRuns, 2U);
    }
    Runner::CountPassedRuns(quarantine, MakeState(1, {Error}), m_folder.GetPath());
    EXPECT_EQ(quarantine[0].passedRuns, 0U);
}

TEST_F(RunnerQuarantine, StartsCountingAgainAfterAFlakyRun)
{
    Runner::Quarantine quarantine = Read("CFirst:zwei\n");
    Runner::CountPassedRuns(quarantine, MakeState(1, {Ok}), m_folder.GetPath());
    Runner::WritePassedRuns(quarantine, "lauf 1", m_folder.GetPath());

    // A flaky case does not count as passed.
    Runner::CountPassedRuns(quarantine, MakeState(1, {Error, Ok}), m_folder.GetPath());

    EXPECT_EQ(quarantine[0].passedRuns, 0U);
}

TEST_F(RunnerQuarantine, KeepsTheCountIfTheCaseDidNotRun)
{
    Runner::Quarantine quarantine = Read("CFirst:zwei\n");
    Runner::CountPassedRuns(quarantine, MakeState(1, {Ok}), m_folder.GetPath());
    Runner::WritePassedRuns(quarantine, "lauf 1", m_folder.GetPath());

    Runner::CountPassedRuns(quarantine, MakeState(0, {Error}), m_folder.GetPath());

    EXPECT_EQ(quarantine[0].passedRuns, 1U);
}

TEST_F(RunnerQuarantine, RefusesADamagedFileOfCounts)
{
    Runner::Quarantine quarantine = Read("CFirst:zwei\n");
    m_folder.WriteFile(L"quarantine.json", "{\"entries\": ");

    EXPECT_THROW(Runner::CountPassedRuns(quarantine, MakeState(1, {Ok}), m_folder.GetPath()), LbException);
}

} // namespace
