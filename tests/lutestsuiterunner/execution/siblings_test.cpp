#include "testing/lutestsuiterunner/execution/siblings.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <mutex>
#include <numeric>
#include <thread>

#include <gtest/gtest.h>

#include "tests/lutestsuiterunner/cluster/distributedrun.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using Runner::CSiblings;
using Cases = std::vector<std::uint32_t>;

/// More cases than the sample shard has, so that the orders of the hosts differ.
constexpr std::uint32_t c_ShardCases = 60;

Cases listCases(std::uint32_t count)
{
    Cases cases(count);
    std::iota(cases.begin(), cases.end(), 0U);
    return cases;
}

class RunnerSiblings : public testing::Test
{
protected:
    /// What the host that writes this journal of shard 1 knows about the other hosts.
    std::unique_ptr<CSiblings> Make(std::uint32_t journal)
    {
        return std::make_unique<CSiblings>(m_run.GetShardFolder(1), journal, c_ShardCases, [this] { return m_now; });
    }

    void Wait(std::chrono::milliseconds time) { m_now += time; }

    /// Runs `count` cases, and returns those that were executed. Each case takes a second and is then passed to
    /// `onCase`.
    Cases Run(CSiblings& siblings, std::uint32_t count, const std::function<void(std::uint32_t)>& onCase = {})
    {
        Cases executed;
        Runner::RunBesideSiblings(listCases(count), siblings, [&](const Cases& some, const Runner::IsNeeded& isNeeded) {
            for (const std::uint32_t index : some)
            {
                if (isNeeded(index))
                {
                    executed.push_back(index);
                    Wait(CSiblings::sc_LongInterval);
                    onCase ? onCase(index) : void();
                }
            }
        });
        return executed;
    }

    const CPlayedRun m_run;

private:
    std::chrono::steady_clock::time_point m_now;
};

TEST_F(RunnerSiblings, ShowCasesThatPassedOnAnotherHost)
{
    const auto other = m_run.Join(1);
    const auto siblings = Make(2);
    EXPECT_FALSE(siblings->HasPassed(0));
    CPlayedRun::RunCase(*other, 0);
    Wait(CSiblings::sc_LongInterval);

    EXPECT_TRUE(siblings->HasPassed(0));
    EXPECT_FALSE(siblings->HasPassed(1));
}

TEST_F(RunnerSiblings, AreNoticedIfTheyBeginLater)
{
    const auto own = m_run.Join(1);
    const auto siblings = Make(1);
    CPlayedRun::RunCase(*m_run.Join(1), 2);
    Wait(CSiblings::sc_LongInterval);

    EXPECT_TRUE(siblings->HasPassed(2));
    EXPECT_EQ(siblings->CountEarlier(), 0U);
}

TEST_F(RunnerSiblings, DoNotShowFailedCasesAsPassed)
{
    CPlayedRun::RunCase(*m_run.Join(1), 0, ECaseRunResult::Error);

    EXPECT_FALSE(Make(2)->HasPassed(0));
}

TEST_F(RunnerSiblings, AreAtWorkOnlyWhileTheyWriteRecords)
{
    const auto other = m_run.Join(1);
    other->Write(MakeStart(0));
    const auto siblings = Make(2);
    Wait(CSiblings::sc_Silence);
    EXPECT_EQ(siblings->CountEarlier(), 0U);
    EXPECT_FALSE(siblings->IsUnderWay(0));
    other->Write(MakeStart(1));
    Wait(CSiblings::sc_LongInterval);

    EXPECT_EQ(siblings->CountEarlier(), 1U);
    EXPECT_TRUE(siblings->IsUnderWay(0));
}

TEST_F(RunnerSiblings, CountAsAtWorkAtFirstUnlessTheyHaveEnded)
{
    m_run.RunShard(1);
    EXPECT_EQ(Make(2)->CountEarlier(), 0U);
    m_run.Join(1)->Write(MakeStart(0));

    EXPECT_EQ(Make(3)->CountEarlier(), 1U);
    EXPECT_TRUE(Make(3)->IsUnderWay(0));
}

TEST_F(RunnerSiblings, AreNotAtWorkAfterTheirCancellation)
{
    const auto other = m_run.Join(1);
    other->Write(MakeStart(0));
    other->Write(Runner::SRunCanceled{L"Ende verlangt", 3});

    EXPECT_EQ(Make(2)->CountEarlier(), 0U);
    EXPECT_FALSE(Make(2)->IsUnderWay(0));
}

TEST_F(RunnerSiblings, AreReadSeldomWhileTheyRecordNothing)
{
    const auto own = m_run.Join(1);
    const auto siblings = Make(1);
    CPlayedRun::RunCase(*m_run.Join(1), 0);
    Wait(CSiblings::sc_LongInterval - CSiblings::sc_ShortInterval);
    EXPECT_FALSE(siblings->HasPassed(0));
    Wait(CSiblings::sc_ShortInterval);

    EXPECT_TRUE(siblings->HasPassed(0));
}

TEST_F(RunnerSiblings, AreReadOftenSoonAfterANewRecord)
{
    const auto own = m_run.Join(1);
    const auto siblings = Make(1);
    const auto other = m_run.Join(1);
    Wait(CSiblings::sc_LongInterval);
    siblings->HasPassed(0);
    CPlayedRun::RunCase(*other, 0);
    EXPECT_FALSE(siblings->HasPassed(0));
    Wait(CSiblings::sc_ShortInterval);
    EXPECT_TRUE(siblings->HasPassed(0));
    Wait(CSiblings::sc_Silence);
    siblings->HasPassed(1);
    CPlayedRun::RunCase(*other, 1);
    Wait(CSiblings::sc_ShortInterval);

    EXPECT_FALSE(siblings->HasPassed(1));
}

TEST_F(RunnerSiblings, AreReadOftenAtFirstUnlessTheyHaveEnded)
{
    const auto other = m_run.Join(1);
    const auto siblings = Make(2);
    CPlayedRun::RunCase(*other, 0);
    Wait(CSiblings::sc_ShortInterval);

    EXPECT_TRUE(siblings->HasPassed(0));
}

TEST_F(RunnerSiblings, HaveTheirUnfinishedCasesTakenOverLast)
{
    const auto own = m_run.Join(1);
    const auto siblings = Make(1);
    const auto other = m_run.Join(1);
    other->Write(MakeStart(0));
    other->Write(MakeStart(3));
    Wait(CSiblings::sc_LongInterval);

    EXPECT_EQ(Run(*siblings, 5), (Cases{1, 2, 4, 0, 3}));
}

TEST_F(RunnerSiblings, KeepTheirCasesIfTheyFinishThem)
{
    const auto own = m_run.Join(1);
    const auto siblings = Make(1);
    const auto other = m_run.Join(1);
    other->Write(MakeStart(0));
    Wait(CSiblings::sc_LongInterval);
    const auto finish = [&other](std::uint32_t index) {
        if (index == 2)
        {
            other->Write(MakeEnd(0, ECaseRunResult::Ok));
        }
    };

    EXPECT_EQ(Run(*siblings, 3, finish), (Cases{1, 2}));
}

TEST_F(RunnerSiblings, HaveTheirUnfinishedCasesTakenOverAtOnceIfTheyEnded)
{
    const auto own = m_run.Join(1);
    const auto siblings = Make(1);
    const auto other = m_run.Join(1);
    other->Write(MakeStart(0));
    CPlayedRun::Finish(*other);
    Wait(CSiblings::sc_LongInterval);

    EXPECT_EQ(Run(*siblings, 3), (Cases{0, 1, 2}));
}

TEST_F(RunnerSiblings, RunCasesInReverseBesideAnEarlierHost)
{
    const auto other = m_run.Join(1);
    other->Write(MakeStart(0));
    const auto siblings = Make(2);
    const auto record = [&other, next = 0U](std::uint32_t) mutable {
        other->Write(MakeEnd(next, ECaseRunResult::Ok));
        other->Write(MakeStart(++next));
    };

    EXPECT_EQ(Run(*siblings, 9, record), (Cases{8, 7, 6, 5, 4}));
}

TEST_F(RunnerSiblings, HaveTheirCasesTakenOverInOrderOnceTheyAreSilent)
{
    m_run.Join(1)->Write(MakeStart(0));
    const auto siblings = Make(2);
    Cases expected;
    for (std::uint32_t index = c_ShardCases; index > c_ShardCases - CSiblings::sc_Silence.count(); --index)
    {
        expected.push_back(index - 1);
    }
    const Cases others = listCases(c_ShardCases - static_cast<std::uint32_t>(expected.size()));
    expected.insert(expected.end(), others.begin(), others.end());

    EXPECT_EQ(Run(*siblings, c_ShardCases), expected);
}

TEST_F(RunnerSiblings, MakeAThirdHostUseARandomOrder)
{
    m_run.Join(1)->Write(MakeStart(0));
    m_run.Join(1)->Write(MakeStart(8));
    const auto siblings = Make(3);
    Cases executed = Run(*siblings, 9);
    ASSERT_EQ(executed.size(), 9U);

    EXPECT_FALSE(std::is_sorted(executed.begin(), executed.end() - 2));
    EXPECT_FALSE(std::is_sorted(executed.rbegin() + 2, executed.rend()));
    std::sort(executed.end() - 2, executed.end());
    EXPECT_EQ(Cases(executed.end() - 2, executed.end()), (Cases{0, 8}));
}

/// Three hosts of a shard, each in a thread. They take turns: in its turn, a host ends its case and begins the next
/// one.
class CThreeHosts
{
public:
    void Run()
    {
        std::vector<std::thread> threads;
        for (std::size_t host = 0; host < sc_Hosts; ++host)
        {
            m_journals.push_back(m_run.Join(1));
        }
        for (std::size_t host = 0; host < sc_Hosts; ++host)
        {
            threads.emplace_back([this, host] { run(host); });
        }
        for (std::thread& thread : threads)
        {
            thread.join();
        }
    }

    /// The cases of all hosts in the order of their starts.
    const Cases& GetStarted() const { return m_started; }

private:
    static constexpr std::size_t sc_Hosts = 3;

    void run(std::size_t host)
    {
        std::unique_lock lock(m_mutex);
        waitForTurn(lock, host);
        Runner::CJournalWriter& writer = *m_journals[host];
        CSiblings siblings(m_run.GetShardFolder(1), writer.GetNumber(), c_ShardCases, [this] { return m_now; });
        RunBesideSiblings(listCases(c_ShardCases), siblings, [&](const Cases& some, const Runner::IsNeeded& isNeeded) {
            for (const std::uint32_t index : some)
            {
                m_now += CSiblings::sc_ShortInterval;
                if (isNeeded(index))
                {
                    writer.Write(MakeStart(index));
                    m_started.push_back(index);
                    passOn(host);
                    waitForTurn(lock, host);
                    writer.Write(MakeEnd(index, ECaseRunResult::Ok));
                }
            }
        });
        m_isDone[host] = true;
        passOn(host);
    }

    void waitForTurn(std::unique_lock<std::mutex>& lock, std::size_t host)
    {
        m_hasChanged.wait(lock, [this, host] { return m_turn == host; });
    }

    /// Passes the turn to the next host that has cases left.
    void passOn(std::size_t host)
    {
        m_turn = (host + 1) % sc_Hosts;
        while (m_isDone[m_turn] && m_turn != host)
        {
            m_turn = (m_turn + 1) % sc_Hosts;
        }
        m_hasChanged.notify_all();
    }

    const CPlayedRun m_run;
    std::vector<std::unique_ptr<Runner::CJournalWriter>> m_journals;
    std::mutex m_mutex; ///< held by the host whose turn it is
    std::condition_variable m_hasChanged;
    std::size_t m_turn = 0;
    std::array<bool, sc_Hosts> m_isDone{};
    std::chrono::steady_clock::time_point m_now;
    Cases m_started;
};

TEST(RunnerHostsOfOneShard, RepeatOnlyAFewCasesOfEachOther)
{
    CThreeHosts hosts;
    hosts.Run();

    Cases started = hosts.GetStarted();
    EXPECT_LE(started.size(), c_ShardCases + 3U * 2U);
    std::ranges::sort(started);
    started.erase(std::unique(started.begin(), started.end()), started.end());
    EXPECT_EQ(started, listCases(c_ShardCases));
}

} // namespace
