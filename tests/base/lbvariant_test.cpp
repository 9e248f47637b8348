#include "base/lbvariant.h"

#include <limits>

#include <gtest/gtest.h>

namespace
{

constexpr std::uint64_t c_Max32 = 4294967295U;
constexpr std::uint64_t c_Max64 = 18446744073709551615U;

} // namespace

TEST(LbVariant, IsNullByDefault)
{
    EXPECT_TRUE(LbVariant().IsNull());
    EXPECT_FALSE(LbVariant(false).IsNull());
    EXPECT_FALSE(LbVariant(L"").IsNull());
}

TEST(LbVariant, NullConvertsToNothingButTheEmptyText)
{
    EXPECT_EQ(LbVariant().ToBool(), std::nullopt);
    EXPECT_EQ(LbVariant().ToUInt32(), std::nullopt);
    EXPECT_EQ(LbVariant().ToUInt64(), std::nullopt);
    EXPECT_EQ(LbVariant().ToString(), L"");
}

TEST(LbVariant, BoolConvertsToItself)
{
    EXPECT_EQ(LbVariant(true).ToBool(), true);
    EXPECT_EQ(LbVariant(false).ToBool(), false);
}

TEST(LbVariant, BoolConvertsToOneAndZero)
{
    EXPECT_EQ(LbVariant(true).ToUInt32(), 1U);
    EXPECT_EQ(LbVariant(false).ToUInt64(), 0U);
}

TEST(LbVariant, NumberConvertsToWhetherItIsNotZero)
{
    EXPECT_EQ(LbVariant(std::int32_t{0}).ToBool(), false);
    EXPECT_EQ(LbVariant(std::int32_t{-1}).ToBool(), true);
    EXPECT_EQ(LbVariant(c_Max64).ToBool(), true);
    EXPECT_EQ(LbVariant(0.0).ToBool(), false);
    EXPECT_EQ(LbVariant(0.5).ToBool(), true);
}

TEST(LbVariant, OnlyTheTextsTrueAndFalseConvertToBool)
{
    EXPECT_EQ(LbVariant(L"true").ToBool(), true);
    EXPECT_EQ(LbVariant(L"false").ToBool(), false);
    for (const wchar_t* const text : {L"", L"True", L"TRUE", L"1", L"0", L" true", L"true ", L"yes"})
    {
        EXPECT_EQ(LbVariant(text).ToBool(), std::nullopt) << testing::PrintToString(std::wstring(text));
    }
}

TEST(LbVariant, IntegerWithinTheRangeConverts)
{
    EXPECT_EQ(LbVariant(std::int32_t{7}).ToUInt32(), 7U);
    EXPECT_EQ(LbVariant(std::int64_t{7}).ToUInt32(), 7U);
    EXPECT_EQ(LbVariant(c_Max32).ToUInt32(), c_Max32);
    EXPECT_EQ(LbVariant(c_Max64).ToUInt64(), c_Max64);
}

TEST(LbVariant, IntegerOutsideTheRangeDoesNot)
{
    EXPECT_EQ(LbVariant(std::int32_t{-1}).ToUInt32(), std::nullopt);
    EXPECT_EQ(LbVariant(std::int64_t{-1}).ToUInt64(), std::nullopt);
    EXPECT_EQ(LbVariant(c_Max32 + 1).ToUInt32(), std::nullopt);
}

TEST(LbVariant, DoubleWithinTheRangeConverts)
{
    EXPECT_EQ(LbVariant(4294967295.0).ToUInt32(), c_Max32);
    EXPECT_EQ(LbVariant(9007199254740992.0).ToUInt64(), 9007199254740992U);
}

TEST(LbVariant, DoubleWithFractionOrOutsideTheRangeDoesNot)
{
    EXPECT_EQ(LbVariant(1.5).ToUInt32(), std::nullopt);
    EXPECT_EQ(LbVariant(-1.0).ToUInt32(), std::nullopt);
    EXPECT_EQ(LbVariant(4294967296.0).ToUInt32(), std::nullopt);
    EXPECT_EQ(LbVariant(18446744073709551616.0).ToUInt64(), std::nullopt);
    EXPECT_EQ(LbVariant(std::numeric_limits<double>::infinity()).ToUInt64(), std::nullopt);
    EXPECT_EQ(LbVariant(std::numeric_limits<double>::quiet_NaN()).ToUInt64(), std::nullopt);
}

TEST(LbVariant, TextOfDigitsConverts)
{
    EXPECT_EQ(LbVariant(L"0").ToUInt32(), 0U);
    EXPECT_EQ(LbVariant(L"007").ToUInt32(), 7U);
    EXPECT_EQ(LbVariant(L"4294967295").ToUInt32(), c_Max32);
    EXPECT_EQ(LbVariant(L"18446744073709551615").ToUInt64(), c_Max64);
}

TEST(LbVariant, TextOutsideTheRangeDoesNot)
{
    EXPECT_EQ(LbVariant(L"4294967296").ToUInt32(), std::nullopt);
    EXPECT_EQ(LbVariant(L"99999999999").ToUInt32(), std::nullopt);
    EXPECT_EQ(LbVariant(L"18446744073709551616").ToUInt64(), std::nullopt);
}

TEST(LbVariant, TextOfOtherCharactersDoesNot)
{
    for (const wchar_t* const text : {L"", L" 1", L"1 ", L"-1", L"+1", L"1.0", L"0x1", L"1e3", L"true", L"\u0661"})
    {
        EXPECT_EQ(LbVariant(text).ToUInt32(), std::nullopt) << testing::PrintToString(std::wstring(text));
        EXPECT_EQ(LbVariant(text).ToUInt64(), std::nullopt) << testing::PrintToString(std::wstring(text));
    }
}

TEST(LbVariant, NumbersReadInDecimal)
{
    EXPECT_EQ(LbVariant(std::numeric_limits<std::int32_t>::min()).ToString(), L"-2147483648");
    EXPECT_EQ(LbVariant(std::uint32_t{4294967295U}).ToString(), L"4294967295");
    EXPECT_EQ(LbVariant(std::numeric_limits<std::int64_t>::min()).ToString(), L"-9223372036854775808");
    EXPECT_EQ(LbVariant(c_Max64).ToString(), L"18446744073709551615");
}

TEST(LbVariant, DoublesReadWithoutExponentAndWithoutLoss)
{
    EXPECT_EQ(LbVariant(0.1).ToString(), L"0.1");
    EXPECT_EQ(LbVariant(-2.0).ToString(), L"-2");
    EXPECT_EQ(LbVariant(1e20).ToString(), L"100000000000000000000");
    EXPECT_EQ(std::stod(LbVariant(std::numeric_limits<double>::max()).ToString()), std::numeric_limits<double>::max());
    EXPECT_EQ(LbVariant(-std::numeric_limits<double>::denorm_min()).ToString().size(), 327U);
}

TEST(LbVariant, BoolsAndTextsReadAsTheyAre)
{
    EXPECT_EQ(LbVariant(true).ToString(), L"true");
    EXPECT_EQ(LbVariant(false).ToString(), L"false");
    EXPECT_EQ(LbVariant(L"Grüße").ToString(), L"Grüße");
}

TEST(LbVariant, EqualsOnlyTheSameValueOfTheSameType)
{
    EXPECT_EQ(LbVariant(L"a"), LbVariant(std::wstring(L"a")));
    EXPECT_EQ(LbVariant(), LbVariant());
    EXPECT_NE(LbVariant(std::int32_t{1}), LbVariant(std::int64_t{1}));
    EXPECT_NE(LbVariant(L"a"), LbVariant(L"b"));
}
