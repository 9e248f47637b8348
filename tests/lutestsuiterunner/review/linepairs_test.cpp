#include "testing/lutestsuiterunner/review/linepairs.h"

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace
{

using Texts = std::vector<std::string_view>;

/// Each hunk as "removed>added", with "|" between its lines.
std::vector<std::string> pair(const Texts& removed, const Texts& added)
{
    const auto join = [](const Texts& lines) {
        std::string text;
        for (const std::string_view line : lines)
        {
            text += (text.empty() ? "" : "|") + std::string(line);
        }
        return text;
    };
    std::vector<std::string> pairs;
    for (const Runner::SHunk& hunk : Runner::PairLines({10, 20, removed, added}))
    {
        pairs.push_back(join(hunk.removed) + ">" + join(hunk.added));
    }
    return pairs;
}

using Pairs = std::vector<std::string>;

TEST(PairLines, PairsLinesInOrderIfAsManyAreAddedAsRemoved)
{
    EXPECT_EQ(pair({"a", "b"}, {"A", "B"}), (Pairs{"a>A", "b>B"}));
    EXPECT_EQ(pair({"a", "same", "b"}, {"A", "same", "B"}), (Pairs{"a>A", "b>B"}));
}

TEST(PairLines, PairsSimilarLinesBesideAddedAndRemovedLines)
{
    EXPECT_EQ(pair({"time 12"}, {"time 12 ms", "unit ms"}), (Pairs{"time 12>time 12 ms", ">unit ms"}));
    EXPECT_EQ(pair({"time 12"}, {"first", "time 12 ms"}), (Pairs{">first", "time 12>time 12 ms"}));
    EXPECT_EQ(pair({"old line", "time 12"}, {"time 12 ms", "x"}), (Pairs{"old line>", "time 12>time 12 ms", ">x"}));
    EXPECT_EQ(pair({"old line", "time 12", "x"}, {"time 12 ms", "y"}),
              (Pairs{"old line>", "time 12>time 12 ms", "x>y"}));
}

TEST(PairLines, DoesNotSplitAHunkWithoutSimilarLines)
{
    EXPECT_EQ(pair({"a"}, {"b", "c"}), Pairs{"a>b|c"});
    EXPECT_EQ(pair({}, {"b", "c"}), Pairs{">b|c"});
    EXPECT_EQ(pair({"b", "c"}, {}), Pairs{"b|c>"});
    EXPECT_EQ(pair({""}, {"b", ""}), Pairs{">b|"});
}

TEST(PairLines, GivesEachHunkItsLineNumbers)
{
    const std::vector<Runner::SHunk> hunks = Runner::PairLines({10, 20, {"time 12"}, {"a", "b", "time 12 ms", "c"}});

    ASSERT_EQ(hunks.size(), 3U);
    EXPECT_EQ(hunks[0].firstRemoved, 10U);
    EXPECT_EQ(hunks[0].firstAdded, 20U);
    EXPECT_EQ(hunks[1].firstRemoved, 10U);
    EXPECT_EQ(hunks[1].firstAdded, 22U);
    EXPECT_EQ(hunks[2].firstRemoved, 11U);
    EXPECT_EQ(hunks[2].firstAdded, 23U);
}

TEST(PairLines, DoesNotSplitAHunkWithVeryManyLines)
{
    const Texts many(401, "time 12 ms");

    EXPECT_EQ(Runner::PairLines({1, 1, {"time 12"}, many}).size(), 1U);
}

} // namespace
