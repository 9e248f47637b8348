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

TEST(LbVariant, NullDoesNotConvert)
{
    EXPECT_EQ(LbVariant().ToBool(), std::nullopt);
    EXPECT_EQ(LbVariant().ToUInt32(), std::nullopt);
}

TEST(LbVariant, BoolConvertsToItself)
{
    EXPECT_EQ(LbVariant(true).ToBool(), true);
    EXPECT_EQ(LbVariant(false).ToBool(), false);
}

TEST(LbVariant, BoolConvertsToOneAndZero)
{
    EXPECT_EQ(LbVariant(true).ToUInt32(), 1U);
    EXPECT_EQ(LbVariant(false).ToUInt32(), 0U);
}

TEST(LbVariant, NonZeroNumberConvertsToTrue)
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
}

TEST(LbVariant, IntegerOutsideTheRangeDoesNotConvert)
{
    EXPECT_EQ(LbVariant(std::int32_t{-1}).ToUInt32(), std::nullopt);
    EXPECT_EQ(LbVariant(std::int64_t{-1}).ToUInt32(), std::nullopt);
    EXPECT_EQ(LbVariant(c_Max64).ToUInt32(), std::nullopt);
    EXPECT_EQ(LbVariant(c_Max32 + 1).ToUInt32(), std::nullopt);
}

TEST(LbVariant, DoubleWithinTheRangeConverts)
{
    EXPECT_EQ(LbVariant(4294967295.0).ToUInt32(), c_Max32);
}

TEST(LbVariant, DoubleWithFractionOrOutsideTheRangeDoesNotConvert)
{
    EXPECT_EQ(LbVariant(1.5).ToUInt32(), std::nullopt);
    EXPECT_EQ(LbVariant(-1.0).ToUInt32(), std::nullopt);
    EXPECT_EQ(LbVariant(4294967296.0).ToUInt32(), std::nullopt);
    EXPECT_EQ(LbVariant(std::numeric_limits<double>::infinity()).ToUInt32(), std::nullopt);
    EXPECT_EQ(LbVariant(std::numeric_limits<double>::quiet_NaN()).ToUInt32(), std::nullopt);
}

TEST(LbVariant, TextOfDigitsConverts)
{
    EXPECT_EQ(LbVariant(L"0").ToUInt32(), 0U);
    EXPECT_EQ(LbVariant(L"007").ToUInt32(), 7U);
    EXPECT_EQ(LbVariant(L"4294967295").ToUInt32(), c_Max32);
}

TEST(LbVariant, TextWithANumberOutsideTheRangeDoesNotConvert)
{
    EXPECT_EQ(LbVariant(L"4294967296").ToUInt32(), std::nullopt);
    EXPECT_EQ(LbVariant(L"99999999999").ToUInt32(), std::nullopt);
}

TEST(LbVariant, TextWithOtherCharactersThanDigitsDoesNotConvert)
{
    for (const wchar_t* const text : {L"", L" 1", L"1 ", L"-1", L"+1", L"1.0", L"0x1", L"1e3", L"true", L"\u0661"})
    {
        EXPECT_EQ(LbVariant(text).ToUInt32(), std::nullopt) << testing::PrintToString(std::wstring(text));
    }
}

TEST(LbVariant, EqualsOnlyTheSameValueOfTheSameType)
{
    EXPECT_EQ(LbVariant(L"a"), LbVariant(std::wstring(L"a")));
    EXPECT_EQ(LbVariant(), LbVariant());
    EXPECT_NE(LbVariant(std::int32_t{1}), LbVariant(std::int64_t{1}));
    EXPECT_NE(LbVariant(L"a"), LbVariant(L"b"));
}
