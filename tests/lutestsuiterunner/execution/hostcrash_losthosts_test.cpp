#include <gtest/gtest.h>

#include "testing/lutestsuiterunner/execution/hostcrash.h"
#include "tests/lutestsuiterunner/runstatemaker.h"
#include "tests/support/scopedfolder.h"

namespace
{

Runner::SPlan makeShardPlan()
{
    Runner::SPlan plan = MakeSamplePlan();
    plan.part = Runner::SShardPlace{"ganz", {0, 1, 2, 3, 4, 5}};
    return plan;
}

/// A run whose hosts ended one after another and left no crash note. `hosts` contains, for each host, the cases that it
/// was running.
class CLostHosts : public CRunStateMaker
{
public:
    explicit CLostHosts(const std::vector<std::vector<std::uint32_t>>& hosts, Runner::SPlan plan = makeShardPlan())
        : CRunStateMaker(std::move(plan))
    {
        for (std::uint32_t journal = 0; journal < hosts.size(); ++journal)
        {
            BeginJournal(journal + 2);
            for (const std::uint32_t index : hosts[journal])
            {
                Apply(MakeStart(index));
            }
        }
    }

    Runner::SUnderWay Find() const { return Runner::FindUnderWay(Get(), m_folder.GetPath()); }

private:
    const ScopedFolder m_folder;
};

using Cases = std::vector<std::uint32_t>;

TEST(RunnerLostHosts, MakeTheirCasesSuspectsAfterTheFirstLoss)
{
    const Runner::SUnderWay underWay = CLostHosts({{0, 2}}).Find();

    EXPECT_EQ(underWay.suspects, (Cases{0, 2}));
    EXPECT_TRUE(underWay.repeated.empty());
}

TEST(RunnerLostHosts, LetTheirCasesRunAloneAfterTheSecondLoss)
{
    const Runner::SUnderWay underWay = CLostHosts({{0, 2}, {0, 2, 3}}).Find();

    EXPECT_EQ(underWay.repeated, (Cases{0, 2}));
    EXPECT_EQ(underWay.suspects, Cases{3});
    EXPECT_TRUE(underWay.crashed.empty());
}

TEST(RunnerLostHosts, BlameTheCaseThatRanAloneAtTheThirdLoss)
{
    const Runner::SUnderWay underWay = CLostHosts({{0, 2}, {0, 2}, {2}}).Find();

    ASSERT_EQ(underWay.crashed.size(), 1U);
    EXPECT_EQ(underWay.crashed[0].caseIndex, 2U);
    EXPECT_EQ(underWay.crashed[0].end, Runner::EAttemptEnd::HostEnded);
    EXPECT_EQ(underWay.crashed[0].reason, L"3 Prozesse, die den Lauf ausführten, gingen ohne Meldung bei diesem "
                                          L"Testfall verloren, der letzte führte nur ihn aus");
    EXPECT_EQ(underWay.repeated, Cases{0});
}

TEST(RunnerLostHosts, BlameNoCaseThatRanBesideAnother)
{
    const Runner::SUnderWay underWay = CLostHosts({{0, 2}, {0, 2}, {0, 2}}).Find();

    EXPECT_TRUE(underWay.crashed.empty());
    EXPECT_EQ(underWay.repeated, (Cases{0, 2}));
}

TEST(RunnerLostHosts, BlameNoCaseOutsideADistributedRun)
{
    const Runner::SUnderWay underWay = CLostHosts({{2}, {2}, {2}}, MakeSamplePlan()).Find();

    EXPECT_TRUE(underWay.crashed.empty());
    EXPECT_TRUE(underWay.repeated.empty());
}

/// Hosts that run a shard one after another. A canceled host records the cancellation while it runs a case.
class RunnerCanceledHosts : public testing::Test, protected CRunStateMaker
{
protected:
    RunnerCanceledHosts() : CRunStateMaker(makeShardPlan()) {}

    /// Adds a canceled host that leaves the case open.
    void LeaveOpen(std::uint32_t index)
    {
        BeginJournal(++m_journal);
        Apply(MakeStart(index));
        Apply(Runner::SRunCanceled{L"Ende verlangt", 3});
    }

    /// Adds a canceled host that ends with the case, or ends the case in its child process.
    void EndCanceled(std::uint32_t index)
    {
        BeginJournal(++m_journal);
        Runner::SCaseEnded ended = MakeEnd(index, LuTestSuiteRun::ECaseRunResult::Canceled);
        ended.end = Runner::EAttemptEnd::Canceled;
        RunCase(ended);
        Apply(Runner::SRunCanceled{L"Ende verlangt", 3});
        Apply(Runner::SRunFinished{L"2024-01-02 03:04:09", 4});
    }

    /// Adds a host that runs the case and leaves no record of its end.
    void Lose(std::uint32_t index)
    {
        BeginJournal(++m_journal);
        Apply(MakeStart(index));
    }

    Runner::SUnderWay Find() const { return Runner::FindUnderWay(Get(), m_folder.GetPath()); }

    const ScopedFolder m_folder;

private:
    std::uint32_t m_journal = 1;
};

TEST_F(RunnerCanceledHosts, DoNotBlameTheirCase)
{
    for (int host = 0; host < 4; ++host)
    {
        LeaveOpen(2);
    }
    const Runner::SUnderWay underWay = Find();

    EXPECT_TRUE(underWay.crashed.empty());
    EXPECT_TRUE(underWay.repeated.empty());
    EXPECT_EQ(underWay.suspects, Cases{2});
    EXPECT_EQ(Get().GetAttempts(2).back().lostHosts, 3U);
    EXPECT_EQ(Get().GetAttempts(2).back().canceledHosts, 3U);
}

TEST_F(RunnerCanceledHosts, DoNotCountAsLostHosts)
{
    Lose(2);
    LeaveOpen(2);
    Lose(2);
    EXPECT_EQ(Find().repeated, Cases{2});
    LeaveOpen(2);
    EXPECT_EQ(Find().suspects, Cases{2});
    Lose(2);

    ASSERT_EQ(Find().crashed.size(), 1U);
    EXPECT_TRUE(Find().crashed[0].reason.starts_with(L"3 Prozesse, "));
}

TEST_F(RunnerCanceledHosts, BlameTheirCaseIfTheyLeftACrashNote)
{
    LeaveOpen(2);
    m_folder.WriteFile(L"output/crash-2.txt", "Fehler: Der Prozess wurde mitten im Aufruf beendet\n");

    EXPECT_EQ(Find().crashed.size(), 1U);
}

TEST_F(RunnerCanceledHosts, LetTheNextHostRunTheirCasesLast)
{
    LeaveOpen(4);
    EndCanceled(2);
    LeaveOpen(0);
    Lose(3);
    EXPECT_EQ(Runner::FindCanceled(Get()), (Cases{4, 2, 0}));
    LeaveOpen(4);

    EXPECT_EQ(Runner::FindCanceled(Get()), (Cases{2, 0, 4}));
}

TEST_F(RunnerCanceledHosts, DoNotPostponeCasesThatAnotherHostFinished)
{
    LeaveOpen(2);
    EndCanceled(0);
    BeginJournal(4);
    RunCase(2, LuTestSuiteRun::ECaseRunResult::Ok);
    RunCase(0, LuTestSuiteRun::ECaseRunResult::Error);

    EXPECT_TRUE(Runner::FindCanceled(Get()).empty());
}

TEST(RunnerCanceledHost, PostponesNoCaseOutsideADistributedRun)
{
    CRunStateMaker run;
    run.Apply(MakeStart(2));
    run.Apply(Runner::SRunCanceled{L"Ende verlangt", 3});

    EXPECT_TRUE(Runner::FindCanceled(run.Get()).empty());
}

} // namespace
