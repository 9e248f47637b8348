#include "testing/lutestsuiterunner/history/analysis/allocations.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Runner::History;

namespace
{

std::optional<SCountChange> find(const std::vector<std::uint64_t>& counts)
{
    return FindCountChange(counts);
}

} // namespace

TEST(HistoryAllocations, OneMoreAllocationInAStableCaseIsFoundInTheNextRun)
{
    const std::optional<SCountChange> change = find({120, 120, 120, 120, 120, 121});
    ASSERT_TRUE(change);
    EXPECT_EQ(change->index, 5U);
    EXPECT_EQ(change->before, 120U);
    EXPECT_EQ(change->after, 121U);
}

TEST(HistoryAllocations, EqualCountsHaveNoChange)
{
    EXPECT_FALSE(find({}));
    EXPECT_FALSE(find({7}));
    EXPECT_FALSE(find({7, 7, 7, 7, 7, 7, 7}));
}

TEST(HistoryAllocations, CountsThatWereNeverStableHaveNoChange)
{
    EXPECT_FALSE(find({7, 7, 7, 7, 8}));
    EXPECT_FALSE(find({1, 2, 1, 2, 1, 2, 2, 2, 2, 2, 3}));
}

TEST(HistoryAllocations, EarlierChangesDoNotHideAChangeOfAStableCount)
{
    EXPECT_TRUE(find({100, 100, 105, 105, 105, 105, 105, 106}));
    EXPECT_TRUE(find({5, 5, 5, 5, 5, 6, 6, 6, 6, 6, 7, 7, 7, 7, 7, 8}));
}

TEST(HistoryAllocations, ChangeIsFoundAfterAnUnstableCountBecameStable)
{
    EXPECT_TRUE(find({1, 2, 1, 2, 1, 2, 2, 2, 2, 2, 2, 3}));
}

TEST(HistoryAllocations, CountThatReturnedToItsOldValueHasNoChange)
{
    EXPECT_FALSE(find({7, 7, 7, 7, 7, 9, 7}));
}

TEST(HistoryAllocations, NewestOfSeveralChangesIsReported)
{
    const std::optional<SCountChange> change = find({5, 5, 5, 5, 5, 6, 6, 6, 6, 6, 6, 4});
    ASSERT_TRUE(change);
    EXPECT_EQ(change->index, 11U);
    EXPECT_EQ(change->before, 6U);
    EXPECT_EQ(change->after, 4U);
}
