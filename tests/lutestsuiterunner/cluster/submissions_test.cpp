#include "testing/lutestsuiterunner/cluster/submissions.h"

#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "base/lbpath.h"
#include "testing/lutestsuiterunner/journal/appendfile.h"
#include "tests/lutestsuiterunner/cluster/distributedrun.h"

namespace
{

TEST(RunnerSubmissions, ListShardsAsRanges)
{
    EXPECT_EQ(Runner::FormatNumbers({1, 2, 3, 7, 9, 10}), L"1-3,7,9-10");
    EXPECT_EQ(Runner::FormatNumbers({4}), L"4");
}

TEST(RunnerSubmissions, CanBeClaimedOnlyOnce)
{
    const CPlayedRun run;
    EXPECT_TRUE(Runner::ReadSubmissions(run.GetFolder()).empty());
    EXPECT_TRUE(Runner::ClaimSubmission(run.GetFolder(), {1, {1, 2}, {0, 7}}));
    EXPECT_FALSE(Runner::ClaimSubmission(run.GetFolder(), {1, {1}, {0}}));
    const auto submissions = Runner::ReadSubmissions(run.GetFolder());

    ASSERT_EQ(submissions.size(), 1U);
    EXPECT_EQ(submissions[0].shards, (std::vector<std::uint32_t>{1, 2}));
    EXPECT_EQ(submissions[0].verdicts, (std::vector<std::uint64_t>{0, 7}));
}

TEST(RunnerSubmissions, GroupLossesByReason)
{
    const CPlayedRun run;
    EXPECT_TRUE(Runner::ClaimSubmission(
        run.GetFolder(),
        {1, {1, 2, 4, 5}, {0, 7, 0, 0}, {L"TIMEOUT auf node1", L"TIMEOUT auf node1", L"", L"größer"}}));

    EXPECT_EQ(Runner::DescribeLosses(Runner::ReadSubmissions(run.GetFolder())[0]),
              (std::vector<std::wstring>{L"Teil 1-2 verloren (TIMEOUT auf node1), neu vergeben",
                                         L"Teil 5 verloren (größer), neu vergeben"}));
}

TEST(RunnerSubmissions, HaveNoShardsIfTheirFileIsIncomplete)
{
    const CPlayedRun run;
    Runner::CAppendFile(run.GetFolder() + LbPath::ToNative(L"tasks/submission-1.json")).Append("{\"sha");

    ASSERT_EQ(Runner::ReadSubmissions(run.GetFolder()).size(), 1U);
    EXPECT_TRUE(Runner::ReadSubmissions(run.GetFolder())[0].shards.empty());
}

TEST(RunnerSubmissions, FailIfTheFolderOfTheRunIsMissing)
{
    EXPECT_THROW(Runner::ClaimSubmission(LbPath::ToNative(L"/gibt es nicht/"), {1, {1}, {0}}), LbException);
    EXPECT_THROW(Runner::MarkCanceled(LbPath::ToNative(L"/gibt es nicht/")), LbException);
}

} // namespace
