#include "testing/lutestsuiterunner/cluster/shards.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <set>

#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/planfile.h"
#include "tests/lutestsuiterunner/samplerun.h"
#include "tests/support/scopedfolder.h"

namespace
{

using Cases = std::vector<std::uint32_t>;

Runner::SPlan MakeTimedPlan(const std::vector<std::uint64_t>& times)
{
    Runner::SPlan plan;
    plan.params.repetitions = 1;
    LuTestSuite::SUnitTest unitTest;
    unitTest.className = L"CClass";
    for (std::size_t index = 0; index < times.size(); ++index)
    {
        unitTest.cases.emplace_back().name = std::to_wstring(index);
    }
    plan.unitTests = {unitTest};
    plan.cases = Runner::PlanCases(plan.unitTests, 1);
    for (std::size_t index = 0; index < times.size(); ++index)
    {
        plan.cases[index].expected = times[index];
    }
    return plan;
}

/// The time of the longest shard divided by the mean.
double GetImbalance(const std::vector<Cases>& shards, const std::vector<std::uint64_t>& times)
{
    std::uint64_t sum = 0;
    std::uint64_t longest = 0;
    for (const Cases& cases : shards)
    {
        std::uint64_t load = 0;
        for (const std::uint32_t index : cases)
        {
            load += times[index];
        }
        sum += load;
        longest = std::max(longest, load);
    }
    return static_cast<double>(longest * shards.size()) / static_cast<double>(sum);
}

TEST(RunnerShards, ContainEachCaseExactlyOnce)
{
    constexpr std::uint32_t c_Cases = 23;
    for (const std::uint32_t count : {1U, 2U, 5U, 23U, 30U})
    {
        Cases all;
        for (const Cases& cases : Runner::DealOut(MakeTimedPlan(std::vector<std::uint64_t>(c_Cases, 0)), count))
        {
            EXPECT_TRUE(std::ranges::is_sorted(cases));
            EXPECT_LE(cases.size(), (c_Cases + count - 1) / count);
            all.insert(all.end(), cases.begin(), cases.end());
        }
        std::ranges::sort(all);
        EXPECT_EQ(all.size(), c_Cases);
        EXPECT_TRUE(std::ranges::adjacent_find(all) == all.end());
    }
}

TEST(RunnerShards, TakeEquallyLongEvenIfCaseTimesAreSkewed)
{
    constexpr double c_Mean = 1e8;
    std::mt19937 random(1);
    std::vector<std::uint64_t> times;
    for (int index = 0; index < 2000; ++index)
    {
        const double share = (static_cast<double>(random()) + 1.0) / 4294967297.0;
        times.push_back(static_cast<std::uint64_t>(-std::log(share) * c_Mean) + 1);
    }

    EXPECT_LT(GetImbalance(Runner::DealOut(MakeTimedPlan(times), 12), times), 1.001);
}

TEST(RunnerShards, GiveTheLongestCaseAShardOfItsOwn)
{
    const auto shards = Runner::DealOut(MakeTimedPlan({1, 1, 100, 1, 1}), 3);

    EXPECT_EQ(shards[0], Cases{2});
    EXPECT_EQ(shards[1].size() + shards[2].size(), 4U);
}

TEST(RunnerShards, BalanceFileSizesIfTimesAreUnknown)
{
    constexpr std::size_t c_Cases = 12;
    const ScopedFolder folder;
    Runner::SPlan plan = MakeTimedPlan(std::vector<std::uint64_t>(c_Cases, 0));
    std::vector<std::uint64_t> sizes;
    for (std::size_t index = 0; index < c_Cases; ++index)
    {
        // Every third file is large: if three shards took the cases in turn by name, one of them would get all large
        // files.
        sizes.push_back(index % 3 == 0 ? 1000 + index : 10 + index);
        plan.unitTests[0].cases[index].dataSetFile =
            folder.WriteFile(std::to_wstring(index), std::string(sizes.back(), 'x'));
    }

    EXPECT_LT(GetImbalance(Runner::DealOut(plan, 3), sizes), 1.5);
    EXPECT_LT(GetImbalance(Runner::DealOut(plan, 2), sizes), 1.01);
}

TEST(RunnerShards, HavePlansWithOnlyTheirOwnCases)
{
    Runner::SPlan whole = MakeSamplePlan(2);
    whole.digest = "ganz";
    whole.cases[7].isQuarantined = true;
    whole.cases[7].expected = 5;
    const Runner::SPlan plan = Runner::MakeShardPlan(whole, {1, 6, 7}, {2, 3}, {L"run"});

    ASSERT_EQ(plan.unitTests.size(), 2U);
    EXPECT_EQ(plan.unitTests[0].cases.size(), 1U);
    EXPECT_EQ(plan.unitTests[1].cases[0].name, L"x.dat");
    EXPECT_EQ(plan.unitTests[0].contacts.size(), 1U);
    ASSERT_TRUE(plan.part);
    EXPECT_EQ(*plan.part, (Runner::SShardPlace{"ganz", {0, 1, 6, 7}}));
    EXPECT_FALSE(plan.cases[0].isInShard);
    EXPECT_TRUE(plan.cases[1].isInShard);
    EXPECT_TRUE(plan.cases[3].isInShard);
    EXPECT_TRUE(plan.cases[3].isQuarantined);
    EXPECT_EQ(plan.cases[3].expected, 5U);
    EXPECT_TRUE(plan.disabled.empty());
}

TEST(RunnerShards, AreReadBackAsWritten)
{
    const ScopedFolder folder;
    Runner::SPlan plan = MakeSamplePlan();
    Runner::WriteShards(folder.GetPath(), plan, 2, {L"--retries=1", L"--", L"-d", L"Daten"});
    const auto entries = Runner::ReadShards(folder.GetPath());

    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(Runner::ReadPlan(folder.GetPathOf(L"plan.ndjson")).partCount, 2U);
    std::set<std::uint32_t> cases;
    for (std::uint32_t number = 1; number <= 2; ++number)
    {
        const Runner::SPlan part =
            Runner::ReadPlan(folder.GetPath() + Runner::GetShardFolderName(number) + Runner::c_PlanName);
        EXPECT_EQ(part.digest, entries[number - 1].digest);
        EXPECT_EQ(part.cases.size(), entries[number - 1].places);
        EXPECT_EQ(part.part->wholeDigest, plan.digest);
        cases.insert(part.part->indices.begin(), part.part->indices.end());
    }
    EXPECT_EQ(cases.size(), plan.cases.size());
}

TEST(RunnerShards, ReplaceTheShardsOfAnEarlierRun)
{
    const ScopedFolder folder;
    Runner::SPlan plan = MakeSamplePlan();
    Runner::WriteShards(folder.GetPath(), plan, 3, {});
    folder.WriteFile(L"proof.json", "{}");
    Runner::WriteShards(folder.GetPath(), plan, 2, {});

    EXPECT_FALSE(LbFileSystem::Exists(folder.GetPathOf(L"shard-3")));
    EXPECT_FALSE(LbFileSystem::Exists(folder.GetPathOf(L"proof.json")));
}

TEST(RunnerShards, CannotBeReadWithoutAValidList)
{
    const ScopedFolder folder;
    EXPECT_THROW(Runner::ReadShards(folder.GetPath()), LbException);
    folder.WriteFile(L"shards.json", "{\"shards\":[1]}");
    EXPECT_THROW(Runner::ReadShards(folder.GetPath()), LbException);
}

} // namespace
