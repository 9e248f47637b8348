#include "testing/lutestsuiterunner/console/progress.h"

#include <vector>

#include <gtest/gtest.h>

#include "tests/lutestsuiterunner/runstatemaker.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using Runner::EAttemptKind;

TEST(RunnerProgress, ShowsCountsTimesAndRunningCases)
{
    const Runner::SProgress progress = {12, 700, 3, 61, 3600, {{L"a/CFoo:bär.txt", 7}, {L"CBar:x", 0}}};

    EXPECT_EQ(Runner::FormatProgress(progress),
              L"12/700, fehlgeschlagen: 3, Zeit: 1:01, noch etwa 1:00:00, a/CFoo:bär.txt (0:07), CBar:x (0:00)");
}

TEST(RunnerProgress, EstimatesNoTimeBeforeTheFirstCaseEnds)
{
    EXPECT_EQ(Runner::FormatProgress({0, 5, 0, 2, 0, {}}), L"0/5, fehlgeschlagen: 0, Zeit: 0:02");
}

TEST(RunnerProgress, ShortensNamesButNotTheirTimesToTheWidth)
{
    const Runner::SProgress progress = {12, 700, 3, 61, 0, {{L"folder/CFoo:long name.txt", 754}, {L"CBar:x", 0}}};
    const std::wstring start = L"12/700, fehlgeschlagen: 3, Zeit: 1:01";
    const std::wstring whole = start + L", folder/CFoo:long name.txt (12:34), CBar:x (0:00)";

    EXPECT_EQ(Runner::FormatProgress(progress, whole.size()), whole);
    EXPECT_EQ(Runner::FormatProgress(progress, whole.size() - 1), start + L", folder/CFoo:long name.txt (12:34)");
    EXPECT_EQ(Runner::FormatProgress(progress, start.size() + 23), start + L", ...g name.txt (12:34)");
    EXPECT_EQ(Runner::FormatProgress(progress, start.size() + 12), start);
    EXPECT_EQ(Runner::FormatProgress(progress, 1), start);
}

class RunnerProgressLine : public testing::Test
{
protected:
    static Runner::SPlan MakePlan()
    {
        Runner::SPlan plan = MakeSamplePlan();
        plan.cases[5].isQuarantined = true;
        return plan;
    }

    /// Records an attempt, and reports it to the progress line.
    void End(Runner::CProgressLine& line, std::uint32_t index, ECaseRunResult result, std::uint32_t attempt = 1)
    {
        m_run.RunCase(index, result, attempt, attempt == 1 ? EAttemptKind::First : EAttemptKind::Retry);
        line.OnStarted(index);
        line.OnEnded(index, m_run.Get().GetAttempts(index).back(), /*isFinal*/ false);
    }

    CRunStateMaker m_run{MakePlan()};
};

TEST_F(RunnerProgressLine, CountsACaseAsFailedUntilARetryPasses)
{
    const std::vector<std::uint32_t> cases = {0, 1, 5};
    Runner::CProgressLine line(m_run.Get(), cases, {});
    End(line, 0, ECaseRunResult::Error);
    End(line, 1, ECaseRunResult::Error);
    // This case is in quarantine, so it does not count as failed.
    End(line, 5, ECaseRunResult::Error);
    EXPECT_EQ(line.GetProgress().failed, 2U);
    EXPECT_EQ(line.GetProgress().done, 3U);

    End(line, 0, ECaseRunResult::Error, 2);
    End(line, 1, ECaseRunResult::Ok, 2);
    EXPECT_EQ(line.GetProgress().failed, 1U);
    EXPECT_EQ(line.GetProgress().done, 3U);
}

TEST_F(RunnerProgressLine, CountsCasesFromBeforeAnInterruption)
{
    m_run.RunCase(0, ECaseRunResult::Ok);
    m_run.RunCase(1, ECaseRunResult::Error);
    m_run.RunCase(5, ECaseRunResult::Error);
    const std::vector<std::uint32_t> cases = {2, 3, 4};
    Runner::CProgressLine line(m_run.Get(), cases, {});
    End(line, 2, ECaseRunResult::Ok);

    const Runner::SProgress progress = line.GetProgress();
    EXPECT_EQ(progress.done, 4U);
    EXPECT_EQ(progress.total, 6U);
    EXPECT_EQ(progress.failed, 1U);
}

TEST(RunnerProgress, FormatsDurations)
{
    EXPECT_EQ(Runner::FormatDuration(0), L"0:00");
    EXPECT_EQ(Runner::FormatDuration(3599), L"59:59");
    EXPECT_EQ(Runner::FormatDuration(36061), L"10:01:01");
}

} // namespace
