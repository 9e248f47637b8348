#include "testing/lutestsuiterunner/review/partgroups.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace
{

using Runner::GroupByParts;
using Runner::PartNames;
using Runner::SPartGroup;

std::vector<std::vector<std::uint32_t>> getFiles(const std::vector<SPartGroup>& groups)
{
    std::vector<std::vector<std::uint32_t>> files;
    for (const SPartGroup& group : groups)
    {
        files.push_back(group.files);
    }
    return files;
}

TEST(GroupByParts, GroupsFilesWithTheSameParts)
{
    const std::vector<SPartGroup> groups = GroupByParts({{L"a", L"b"}, {L"c"}, {L"a", L"b"}});

    ASSERT_EQ(groups.size(), 2U);
    EXPECT_EQ(getFiles(groups), (std::vector<std::vector<std::uint32_t>>{{0, 2}, {1}}));
    EXPECT_EQ(groups[0].parts, (PartNames{L"a", L"b"}));
}

TEST(GroupByParts, SeparatesPartsThatOccurTogetherInSomeFiles)
{
    const std::vector<SPartGroup> groups = GroupByParts({{L"a"}, {L"b"}, {L"a", L"b"}});

    EXPECT_EQ(groups.size(), 2U);
    for (const SPartGroup& group : groups)
    {
        EXPECT_EQ(group.parts.size(), 1U);
        EXPECT_EQ(group.files.size(), 2U);
    }
}

TEST(GroupByParts, JoinsPartsThatAlwaysOccurTogether)
{
    const std::vector<SPartGroup> groups = GroupByParts({{L"a", L"b"}, {L"c"}, {L"a", L"b", L"c"}, {L"c", L"d"}});

    EXPECT_EQ(groups.size(), 3U);
}

TEST(GroupByParts, SeparatesCommonPartsFromPartsOfSingleFiles)
{
    std::vector<PartNames> files;
    for (int file = 0; file < 100; ++file)
    {
        files.push_back({file % 2 == 0 ? L"a" : L"b", L"own " + std::to_wstring(file)});
    }

    const std::vector<SPartGroup> groups = GroupByParts(files);

    EXPECT_EQ(groups.size(), 102U);
    EXPECT_EQ(std::ranges::count_if(groups, [](const SPartGroup& group) { return group.files.size() == 50; }), 2);
}

TEST(GroupByParts, GroupsByWholeFilesIfThisMakesFewerGroups)
{
    EXPECT_EQ(GroupByParts({{L"a", L"b", L"c"}, {L"b", L"c", L"d"}}).size(), 2U);
    EXPECT_EQ(GroupByParts({}).size(), 0U);
}

} // namespace
