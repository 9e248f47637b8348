#include "base/lbuniqueid.h"

#include <set>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace
{

TEST(LbUniqueId, ConsistsOfHexadecimalDigitsInFiveGroups)
{
    for (int round = 0; round < 100; ++round)
    {
        const std::wstring identifier = LbUniqueId::Generate();
        ASSERT_EQ(identifier.size(), 36U);
        for (std::size_t index = 0; index < identifier.size(); ++index)
        {
            const bool isDash = index == 8 || index == 13 || index == 18 || index == 23;
            const std::wstring_view allowed = isDash ? L"-" : L"0123456789abcdef";
            EXPECT_NE(allowed.find(identifier[index]), std::wstring_view::npos);
        }
    }
}

TEST(LbUniqueId, ContainsItsVersionAndVariant)
{
    for (int round = 0; round < 100; ++round)
    {
        const std::wstring identifier = LbUniqueId::Generate();
        EXPECT_EQ(identifier[14], L'4');
        EXPECT_NE(std::wstring_view(L"89ab").find(identifier[19]), std::wstring_view::npos);
    }
}

TEST(LbUniqueId, NeverRepeats)
{
    std::set<std::wstring> identifiers;
    for (int round = 0; round < 10'000; ++round)
    {
        EXPECT_TRUE(identifiers.insert(LbUniqueId::Generate()).second);
    }
}

TEST(LbUniqueId, VariesInEveryRandomDigit)
{
    const std::wstring first = LbUniqueId::Generate();
    std::wstring unchanged = first;
    for (int round = 0; round < 200; ++round)
    {
        const std::wstring next = LbUniqueId::Generate();
        for (std::size_t index = 0; index < first.size(); ++index)
        {
            unchanged[index] = next[index] == first[index] ? unchanged[index] : L'x';
        }
    }
    EXPECT_EQ(unchanged, L"xxxxxxxx-xxxx-4xxx-xxxx-xxxxxxxxxxxx");
}

} // namespace
