#include "testing/lutestsuiterunner/execution/hostcrash.h"

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/os/crash.h"
#include "tests/support/scopedfolder.h"

namespace
{

using Cases = std::vector<std::uint32_t>;

/// A run of two cases in the host's process and one in a child; all are under way.
class RunnerHostCrash : public testing::Test
{
protected:
    Runner::SUnderWay Find(const Cases& started, std::uint32_t repetitions = 1) const
    {
        Runner::SPlan plan;
        LuTestSuite::SUnitTest unitTest;
        unitTest.className = L"CModel";
        for (const wchar_t* caseName : {L"eins", L"zwei", L"im Kind"})
        {
            unitTest.cases.emplace_back().name = caseName;
        }
        unitTest.cases.back().parameters[L"External"] = true;
        plan.unitTests = {unitTest};
        plan.cases = Runner::PlanCases(plan.unitTests, repetitions);
        Runner::CRunState state(plan);
        std::uint64_t sequence = 0;
        for (const std::uint32_t index : started)
        {
            Runner::SCaseStarted record;
            record.caseIndex = index;
            state.Apply({1, ++sequence}, record);
        }
        return Runner::FindUnderWay(state, m_folder.GetPath());
    }

    void WriteNote(const std::string& text) const { m_folder.WriteFile(L"output/crash-1.txt", text); }

    ScopedFolder m_folder;
};

TEST_F(RunnerHostCrash, SuspectsTheCasesInTheHostIfThereIsNoCrashNote)
{
    const Runner::SUnderWay underWay = Find({0, 1, 2});

    EXPECT_TRUE(underWay.crashed.empty());
    EXPECT_EQ(underWay.suspects, (Cases{0, 1}));
    EXPECT_EQ(underWay.others, (Cases{2}));
}

TEST_F(RunnerHostCrash, BlamesTheCaseThatTheCrashNoteNames)
{
    WriteNote("Fehler: Absturz in 'CModel:zwei': SIGSEGV (Zugriff)\nFehler: Zugleich in Arbeit: 'CModel:eins'\n");

    const Runner::SUnderWay underWay = Find({0, 1});

    ASSERT_EQ(underWay.crashed.size(), 1U);
    EXPECT_EQ(underWay.crashed[0].caseIndex, 1U);
    EXPECT_EQ(underWay.crashed[0].end, Runner::EAttemptEnd::HostEnded);
    EXPECT_EQ(underWay.crashed[0].reason, L"Absturz des Prozesses, der den Lauf ausführte: SIGSEGV (Zugriff)");
    EXPECT_EQ(underWay.suspects, (Cases{0}));
}

TEST_F(RunnerHostCrash, SuspectsAllRunningCasesIfTheNamedCaseRunsTwice)
{
    WriteNote("Fehler: Absturz in 'CModel:zwei': SIGSEGV (Zugriff)\n");

    // The cases 2 and 3 are repetitions of "zwei".
    const Runner::SUnderWay underWay = Find({0, 2, 3}, 2);

    EXPECT_TRUE(underWay.crashed.empty());
    EXPECT_EQ(underWay.suspects, (Cases{0, 2, 3}));
    EXPECT_EQ(Find({0, 3}, 2).crashed.size(), 1U);
}

TEST_F(RunnerHostCrash, BlamesTheOnlyRunningCaseIfTheNoteNamesNoCase)
{
    WriteNote("Fehler: Der Prozess wurde mitten im Aufruf beendet\r\n");

    const Runner::SUnderWay underWay = Find({0});

    ASSERT_EQ(underWay.crashed.size(), 1U);
    EXPECT_EQ(underWay.crashed[0].reason,
              L"Ende des Prozesses, der den Lauf ausführte: Der Prozess wurde mitten im Aufruf beendet");
}

TEST_F(RunnerHostCrash, BlamesTheCaseThatEndedTheProcess)
{
    WriteNote("Fehler: Der Prozess wurde mitten im Aufruf beendet: 'CModel:zwei'\n"
              "Fehler: Zugleich in Arbeit: 'CModel:eins'\n");

    const Runner::SUnderWay underWay = Find({0, 1});

    ASSERT_EQ(underWay.crashed.size(), 1U);
    EXPECT_EQ(underWay.crashed[0].caseIndex, 1U);
    EXPECT_EQ(underWay.crashed[0].reason,
              L"Ende des Prozesses, der den Lauf ausführte: Der Prozess wurde mitten im Aufruf beendet");
    EXPECT_EQ(underWay.suspects, (Cases{0}));
}

TEST_F(RunnerHostCrash, SuspectsAllRunningCasesIfTheNoteNamesNoCase)
{
    WriteNote("Fehler: Der Prozess wurde mitten im Aufruf beendet\n");

    EXPECT_EQ(Find({0, 1}).suspects, (Cases{0, 1}));
}

TEST_F(RunnerHostCrash, BlamesNoCaseIfTheNoteNamesAnotherCase)
{
    WriteNote("Fehler: Absturz in 'CModel:drei': SIGSEGV (Zugriff)\n");

    EXPECT_EQ(Find({0}).suspects, (Cases{0}));
}

TEST_F(RunnerHostCrash, ReadsTheCrashTextThatTheProcessWrote)
{
    {
        const Runner::CCrashNote note(m_folder.GetPath(), 1);
        LbOs::WriteCrashText("Fehler: Absturz in 'CModel:eins': nur ein Test\n");
    }

    EXPECT_EQ(Find({0}).crashed.size(), 1U);
}

TEST_F(RunnerHostCrash, LeavesNoCrashNoteIfTheRunDoesNotCrash)
{
    {
        const Runner::CCrashNote note(m_folder.GetPath(), 1);
    }

    EXPECT_FALSE(LbFileSystem::Exists(m_folder.GetPathOf(L"output/crash-1.txt")));
}

} // namespace
