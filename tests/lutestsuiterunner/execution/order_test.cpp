#include "testing/lutestsuiterunner/execution/order.h"

#include <algorithm>
#include <numeric>
#include <set>

#include <gtest/gtest.h>

namespace
{

using Runner::EOrder;
using Cases = std::vector<std::uint32_t>;

/// Cases "0", "1", ... of one class.
Runner::SPlan MakePlan(std::uint32_t count, const std::wstring& root = L"/daten/")
{
    Runner::SPlan plan;
    plan.dataDirectory = root;
    LuTestSuite::SUnitTest unitTest;
    unitTest.className = L"CClass";
    unitTest.dataDirectory = root + L"CClass/";
    for (std::uint32_t index = 0; index < count; ++index)
    {
        unitTest.cases.emplace_back().name = std::to_wstring(index);
    }
    plan.unitTests = {unitTest};
    plan.cases = Runner::PlanCases(plan.unitTests, 1);
    return plan;
}

Cases Sort(EOrder order, const Runner::PreviousCases& previous, std::uint64_t seed = 0)
{
    Cases cases(previous.size());
    std::iota(cases.begin(), cases.end(), 0U);
    Runner::SortCases(cases, order, previous, seed);
    return cases;
}

/// The names of the cases that each shard has.
std::vector<std::set<std::wstring>> Partition(Runner::SPlan plan, const Runner::PreviousCases& previous,
                                              std::uint32_t count)
{
    std::vector<std::set<std::wstring>> shards;
    for (std::uint32_t number = 1; number <= count; ++number)
    {
        plan.shard = {number, count};
        Runner::SelectShard(plan, previous);
        std::set<std::wstring>& names = shards.emplace_back();
        for (std::uint32_t index = 0; index < plan.cases.size(); ++index)
        {
            if (plan.cases[index].isInShard)
            {
                names.insert(Runner::GetCaseName(plan, index));
            }
        }
    }
    return shards;
}

Runner::SPreviousCase Took(std::uint64_t time)
{
    return {time, false};
}

TEST(RunnerOrder, PutsFailedCasesFirstAndNewCasesSecond)
{
    EXPECT_EQ(Sort(EOrder::FailedFirst,
                   {Took(1), std::nullopt, Runner::SPreviousCase{1, true}, Took(5), Runner::SPreviousCase{9, true}}),
              (Cases{2, 4, 1, 0, 3}));
}

TEST(RunnerOrder, PutsUnknownCasesFirstAndLongCasesSecond)
{
    EXPECT_EQ(Sort(EOrder::LongestFirst, {Took(1), std::nullopt, Took(7), Took(7), Took(9)}), (Cases{1, 4, 2, 3, 0}));
}

TEST(RunnerOrder, PutsACaseWithoutATimeBeforeLongCases)
{
    EXPECT_EQ(Sort(EOrder::LongestFirst, {Took(3), Runner::SPreviousCase{0, true}, Took(7)}), (Cases{1, 2, 0}));
}

TEST(RunnerOrder, GivesACaseWithoutATimeTheMeanWeight)
{
    const auto shards = Partition(MakePlan(3), {Took(10), Runner::SPreviousCase{0, true}, Took(20)}, 2);

    EXPECT_EQ(shards[0], (std::set<std::wstring>{L"CClass:2"}));
    EXPECT_EQ(shards[1].size(), 2U);
}

TEST(RunnerOrder, ShufflesCasesTheSameWayForTheSameSeed)
{
    const Runner::PreviousCases previous(100);

    EXPECT_EQ(Sort(EOrder::Random, previous, 7), Sort(EOrder::Random, previous, 7));
    EXPECT_NE(Sort(EOrder::Random, previous, 7), Sort(EOrder::Random, previous, 8));
    Cases cases = Sort(EOrder::Random, previous, 7);
    EXPECT_NE(cases, Sort(EOrder::Listed, previous));
    std::ranges::sort(cases);
    EXPECT_EQ(cases, Sort(EOrder::Listed, previous));
}

TEST(RunnerOrder, AssignsEachCaseToOneOfAnyNumberOfShards)
{
    constexpr std::uint32_t c_Cases = 23;
    for (const std::uint32_t count : {1U, 2U, 5U, 23U, 30U})
    {
        std::size_t sum = 0;
        std::set<std::wstring> all;
        for (const std::set<std::wstring>& names : Partition(MakePlan(c_Cases), Runner::PreviousCases(c_Cases), count))
        {
            sum += names.size();
            all.insert(names.begin(), names.end());
            EXPECT_LE(names.size(), (c_Cases + count - 1) / count);
        }
        EXPECT_EQ(sum, c_Cases);
        EXPECT_EQ(all.size(), c_Cases);
    }
}

TEST(RunnerOrder, AssignsCasesIndependentlyOfOrderAndFolderOfTheData)
{
    Runner::SPlan other = MakePlan(23, L"/anderswo/");
    std::ranges::reverse(other.unitTests[0].cases);

    EXPECT_EQ(Partition(MakePlan(23), Runner::PreviousCases(23), 4), Partition(other, Runner::PreviousCases(23), 4));
}

TEST(RunnerOrder, GivesTheLongestCasesToDifferentShards)
{
    const auto shards = Partition(MakePlan(6), {Took(1), Took(100), Took(1), Took(60), Took(1), Took(39)}, 2);

    EXPECT_TRUE(shards[0].contains(L"CClass:1"));
    EXPECT_TRUE(shards[1].contains(L"CClass:3"));
    EXPECT_TRUE(shards[1].contains(L"CClass:5"));
    EXPECT_EQ(shards[0].size() + shards[1].size(), 6U);
}

} // namespace
