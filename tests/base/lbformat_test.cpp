#include "base/lbformat.h"

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace
{

constexpr auto c_MinInt64 = std::numeric_limits<std::int64_t>::min();
constexpr auto c_MaxUInt64 = std::numeric_limits<std::uint64_t>::max();

TEST(LbFormat, CopiesTextWithoutConversions)
{
    EXPECT_EQ(LbFormat(L""), L"");
    EXPECT_EQ(LbFormat(L"Prüfung\n"), L"Prüfung\n");
}

TEST(LbFormat, PrintsPercentSigns)
{
    EXPECT_EQ(LbFormat(L"%%"), L"%");
    EXPECT_EQ(LbFormat(L"%4.2f%%", 12.345), L"12.35%");
}

TEST(LbFormat, BuildsAFormatForAnotherCall)
{
    EXPECT_EQ(LbFormat(L"%%.%df", 2), L"%.2f");
    EXPECT_EQ(LbFormat(LbRuntimeFormat(LbFormat(L"%%.%df", 2)), 1.0), L"1.00");
}

TEST(LbFormat, PrintsWideText)
{
    EXPECT_EQ(LbFormat(L"\t%s... ", L"größer"), L"\tgrößer... ");
    EXPECT_EQ(LbFormat(L"%s%s%s", std::wstring(L"a"), std::wstring_view(L"b"), L"c"), L"abc");
    EXPECT_EQ(LbFormat(L"[%s]", std::wstring()), L"[]");
}

TEST(LbFormat, PrintsTextOfAnyLength)
{
    const std::wstring text(100'000, L'x');
    EXPECT_EQ(LbFormat(L"<%s>", text), L"<" + text + L">");
}

TEST(LbFormat, PrintsNullCharactersInsideText)
{
    const std::wstring text(L"a\0b", 3);
    EXPECT_EQ(LbFormat(L"%s", text), text);
}

TEST(LbFormat, PrintsNarrowTextAsUtf8)
{
    EXPECT_EQ(LbFormat(L"%S", "gr\xC3\xB6\xC3\x9F"
                              "er"),
              L"größer");
    EXPECT_EQ(LbFormat(L"%S|%5S|", std::string("a"), "b"), L"a|    b|");
}

TEST(LbFormat, DistinguishesWideFromNarrowTextByTheLengthModifier)
{
    EXPECT_EQ(LbFormat(L"%s %ls %ws %lS %wS", L"a", L"b", L"c", L"d", L"e"), L"a b c d e");
    EXPECT_EQ(LbFormat(L"%S %hs %hS", "a", "b", "\xC3\xA4"), L"a b ä");
}

TEST(LbFormat, ReplacesInvalidUtf8)
{
    EXPECT_EQ(LbFormat(L"%S|%.2S|%.3S",
                       "a\xFF"
                       "b",
                       "\xE2\x82", "\xE2\x82x"),
              L"a\xFFFD"
              L"b|\xFFFD\xFFFD|\xFFFD\xFFFDx");
}

TEST(LbFormat, PrintsAPlaceholderForNullTexts)
{
    const wchar_t* wide = nullptr;
    const char* narrow = nullptr;
    EXPECT_EQ(LbFormat(L"%s %S", wide, narrow), L"(null) (null)");
}

TEST(LbFormat, PadsAndTruncatesText)
{
    EXPECT_EQ(LbFormat(L"|%5s|%-5s|", L"ab", L"cd"), L"|   ab|cd   |");
    EXPECT_EQ(LbFormat(L"|%.2s|%5.1s|%-3.0s|", L"abc", L"xyz", L"abc"), L"|ab|    x|   |");
    EXPECT_EQ(LbFormat(L"|%1s|%.9s|", L"abc", L"abc"), L"|abc|abc|");
}

TEST(LbFormat, CountsCharactersInsteadOfCodeUnits)
{
    EXPECT_EQ(LbFormat(L"|%3s|%-3s|", L"\U0001F600", L"\U0001F600"), L"|  \U0001F600|\U0001F600  |");
    EXPECT_EQ(LbFormat(L"|%.1s|%.2s|", L"\U0001F600x", L"\U0001F600xy"), L"|\U0001F600|\U0001F600x|");
}

TEST(LbFormat, DoesNotReadTextBeyondThePrecision)
{
    // On the heap, where a sanitizer detects reads beyond the end.
    const std::vector<wchar_t> wide = {L'a', L'b', L'\xD83D'};
    EXPECT_EQ(LbFormat(L"%.3s|%.*s", wide.data(), 2, wide.data()), std::wstring(L"ab\xD83D") + L"|ab");
    const std::vector<char> narrow = {'a', '\xC3', '\xA4'};
    EXPECT_EQ(LbFormat(L"%.2S|%.*hs", narrow.data(), 1, narrow.data()), L"aä|a");
}

TEST(LbFormat, StopsAtANullCharacterBeforeThePrecision)
{
    EXPECT_EQ(LbFormat(L"%.9s|%.9S|%.*s", L"ab", "\xC3\xA4", 5, L""), L"ab|ä|");
}

TEST(LbFormat, TruncatesNarrowTextAfterAWholeCharacter)
{
    EXPECT_EQ(LbFormat(L"%.2S|%.1S|%.2S", "\xC3\xA4\xC3\xB6\xC3\xBC", std::string("\xF0\x9F\x98\x80x"),
                       "\xE2\x82\xAC"
                       "ab"),
              L"äö|\U0001F600|€a");
}

TEST(LbFormat, PrintsCharacters)
{
    EXPECT_EQ(LbFormat(L"%c%c|%3c|%-3c|", L'a', L'ß', L'b', L'c'), L"aß|  b|c  |");
    EXPECT_EQ(LbFormat(L"%lc%wc%lC%wC", L'ä', L'b', L'c', L'd'), L"äbcd");
    EXPECT_EQ(LbFormat(L"%C%hc%hC|%3C|%-3hc|", 'a', 'b', 'c', 'd', 'e'), L"abc|  d|e  |");
}

TEST(LbFormat, PrintsCharactersByTheTypeOfTheArgument)
{
    EXPECT_EQ(LbFormat(L"%c %C %hc", 'x', L'ß', L'€'), L"x ß €");
    EXPECT_EQ(LbFormat(L"%c %C", '\xE4', '\xE4'), L"\xFFFD \xFFFD");
}

TEST(LbFormat, PrintsIntegersAsCharacters)
{
    EXPECT_EQ(LbFormat(L"%c%lc%c%C%hc", 65, 0x20ACU, static_cast<short>(97), 66, 67), L"A€aBC");
    EXPECT_EQ(LbFormat(L"|%3c|", 0x1F600), L"|  \U0001F600|");
    EXPECT_EQ(LbFormat(L"%c%c%C", -1, 0x110000, 0xE4), L"\xFFFD\xFFFD\xFFFD");
}

TEST(LbFormat, PrintsSignedIntegers)
{
    EXPECT_EQ(LbFormat(L"%d %i %d", 0, -42, std::numeric_limits<int>::min()), L"0 -42 -2147483648");
    EXPECT_EQ(LbFormat(L"%d", static_cast<short>(-7)), L"-7");
    EXPECT_EQ(LbFormat(L"%d %d", true, false), L"1 0");
}

TEST(LbFormat, PrintsUnsignedIntegers)
{
    EXPECT_EQ(LbFormat(L"%u %u", 0U, 4294967295U), L"0 4294967295");
    EXPECT_EQ(LbFormat(L"%u", static_cast<unsigned char>(200)), L"200");
}

TEST(LbFormat, Prints64BitIntegersWithEach64BitLengthModifier)
{
    EXPECT_EQ(LbFormat(L"%I64u %I64i %I64d", c_MaxUInt64, c_MinInt64, std::int64_t{5}),
              L"18446744073709551615 -9223372036854775808 5");
    EXPECT_EQ(LbFormat(L"%llu %lld %zu %jd %td", c_MaxUInt64, c_MinInt64, std::size_t{1}, std::int64_t{2}, 3),
              L"18446744073709551615 -9223372036854775808 1 2 3");
}

TEST(LbFormat, Prints64BitIntegersWithoutLengthModifier)
{
    EXPECT_EQ(LbFormat(L"%d %u", c_MinInt64, c_MaxUInt64), L"-9223372036854775808 18446744073709551615");
}

TEST(LbFormat, IgnoresLengthModifiersSmallerThanTheArgument)
{
    EXPECT_EQ(LbFormat(L"%I32d %ld %Ld %Iu", c_MinInt64, c_MinInt64, 5, c_MaxUInt64),
              L"-9223372036854775808 -9223372036854775808 5 18446744073709551615");
}

TEST(LbFormat, PrintsTheLowerBitsForShortLengthModifiers)
{
    EXPECT_EQ(LbFormat(L"%hd %hu %hx %ho", 70000, 70000U, -1, -1), L"4464 4464 ffff 177777");
    EXPECT_EQ(LbFormat(L"%hhd %hhu %02hhx %hhX", 300, 300, static_cast<signed char>(-1), '\xAB'), L"44 44 ff AB");
    EXPECT_EQ(LbFormat(L"%hd %hhd %hd", 0x8000, 0x80, std::int64_t{0x100018000}), L"-32768 -128 -32768");
}

TEST(LbFormat, ConvertsBetweenSignedAndUnsignedAtTheArgumentsSize)
{
    EXPECT_EQ(LbFormat(L"%u", -1), L"4294967295");
    EXPECT_EQ(LbFormat(L"%d", 4294967295U), L"-1");
    EXPECT_EQ(LbFormat(L"%u", std::int64_t{-1}), L"18446744073709551615");
    EXPECT_EQ(LbFormat(L"%d", c_MaxUInt64), L"-1");
}

TEST(LbFormat, PromotesShortIntegersAsCDoes)
{
    EXPECT_EQ(LbFormat(L"%u %x", static_cast<short>(-1), static_cast<signed char>(-1)), L"4294967295 ffffffff");
    EXPECT_EQ(LbFormat(L"%d", static_cast<unsigned short>(65535)), L"65535");
}

TEST(LbFormat, PrintsHexadecimalIntegers)
{
    EXPECT_EQ(LbFormat(L"%x %X %08x %#x %#X %#x", 0xBEEFU, 0xBEEFU, 0xBEEFU, 0xBEEFU, 0xBEEFU, 0),
              L"beef BEEF 0000beef 0xbeef 0XBEEF 0");
    EXPECT_EQ(LbFormat(L"%X %I64x", -1, std::int64_t{-1}), L"FFFFFFFF ffffffffffffffff");
    EXPECT_EQ(LbFormat(L"|%#8x|%#08x|", 255, 255), L"|    0xff|0x0000ff|");
}

TEST(LbFormat, PadsHexadecimalWithZerosAfterThePrefix)
{
    EXPECT_EQ(LbFormat(L"%#06x %#010X %#6.3x", 0xAB, 0xABU, 0xAB), L"0x00ab 0X000000AB  0x0ab");
    EXPECT_EQ(LbFormat(L"|%-#8x|%#.0x|%#05x|", 0xAB, 0, 0), L"|0xab    ||00000|");
}

TEST(LbFormat, PrintsOctalIntegers)
{
    EXPECT_EQ(LbFormat(L"%o %o %5o %-5o|%05o %.3o", 8, 0, 8, 8, 8, 8), L"10 0    10 10   |00010 010");
    EXPECT_EQ(LbFormat(L"%o %llo", -1, c_MaxUInt64), L"37777777777 1777777777777777777777");
    EXPECT_EQ(LbFormat(L"%#o %#o %#.0o %.0o|%#.3o %#.1o %#06o %#6o", 8, 0, 0, 0, 8, 8, 8, 8),
              L"010 0 0 |010 010 000010    010");
}

TEST(LbFormat, TakesWidthsAndPrecisionsFromArguments)
{
    EXPECT_EQ(LbFormat(L"|%*d|%*d|%-*d|%0*d|", 5, 42, -5, 42, 5, 42, 5, 42), L"|   42|42   |42   |00042|");
    EXPECT_EQ(LbFormat(L"|%.*d|%*.*f|%.*s|", 3, 7, 8, 2, 3.14159, 2, L"abc"), L"|007|    3.14|ab|");
    EXPECT_EQ(LbFormat(L"|%*s|%*c|%*p|", 3, L"a", -3, L'b', 18, nullptr), L"|  a|b  |  0000000000000000|");
}

TEST(LbFormat, IgnoresNegativePrecisions)
{
    EXPECT_EQ(LbFormat(L"%.*f %.*d|%.*s", -1, 0.5, -2, 0, -3, L"abc"), L"0.500000 0|abc");
    EXPECT_EQ(LbFormat(L"|%0*.*d|", 4, -1, 7), L"|0007|");
}

TEST(LbFormat, AcceptsWidthsOfSmallAndUnsignedIntegerTypes)
{
    EXPECT_EQ(LbFormat(L"%*d%*d%*d", static_cast<short>(2), 1, 2U, 1, std::uint8_t{2}, 1), L" 1 1 1");
}

TEST(LbFormat, AcceptsFlagsInAnyOrderAndRepeatedly)
{
    EXPECT_EQ(LbFormat(L"|%0+6d|%+06d|%-+-6d|%0-6d|%#0+8x|", 42, 42, 42, 42, 42),
              L"|+00042|+00042|+42   |42    |0x00002a|");
}

TEST(LbFormat, PrintsEnumerationsAndCharacterCodes)
{
    enum EPlain : std::uint32_t
    {
        eP_Last = 0xFFFFFFFF
    };
    enum class EScoped : std::int8_t
    {
        First = -3
    };
    EXPECT_EQ(LbFormat(L"%u %d %04x", eP_Last, EScoped::First, L'ß'), L"4294967295 -3 00df");
}

TEST(LbFormat, AppliesFlagsToIntegers)
{
    EXPECT_EQ(LbFormat(L"|%5d|%-5d|%05d|%+d|% d|", 42, 42, 42, 42, 42), L"|   42|42   |00042|+42| 42|");
    EXPECT_EQ(LbFormat(L"|%05d|%+05d|%-05d|%+ d|", -42, 42, 42, 42), L"|-0042|+0042|42   |+42|");
    EXPECT_EQ(LbFormat(L"|%+u|% u|", 1U, 1U), L"|1|1|");
}

TEST(LbFormat, AppliesThePrecisionToIntegers)
{
    EXPECT_EQ(LbFormat(L"|%.3d|%6.3d|%-6.3d|%.3d|", 7, 7, 7, -7), L"|007|   007|007   |-007|");
    EXPECT_EQ(LbFormat(L"|%.0d|%.d|%.0d|%03.0d|", 0, 0, 5, 0), L"|||5|   |");
    EXPECT_EQ(LbFormat(L"|%06.3d|", 7), L"|   007|");
}

TEST(LbFormat, PrintsPointersAs16Digits)
{
    const auto* address = reinterpret_cast<const void*>(std::uintptr_t{0x12AB});
    EXPECT_EQ(LbFormat(L"0x%p", address), L"0x00000000000012AB");
    EXPECT_EQ(LbFormat(L"|%18p|%-18p|", address, address), L"|  00000000000012AB|00000000000012AB  |");
    EXPECT_EQ(LbFormat(L"%p", static_cast<const void*>(nullptr)), L"0000000000000000");
}

TEST(LbFormat, PrintsPointersOfAnyType)
{
    const int number = 0;
    const auto* text = reinterpret_cast<const wchar_t*>(std::uintptr_t{0x10});
    EXPECT_EQ(LbFormat(L"%p %p", text, nullptr), L"0000000000000010 0000000000000000");
    EXPECT_EQ(LbFormat(L"%p", &number), LbFormat(L"%016llX", reinterpret_cast<std::uintptr_t>(&number)));
}

TEST(LbFormat, PrintsObjectsThatConvertToText)
{
    struct SWide
    {
        operator const wchar_t*() const { return L"wide"; } // NOLINT(google-explicit-constructor)
    };
    struct SNarrow
    {
        operator std::string_view() const { return "narrow"; } // NOLINT(google-explicit-constructor)
    };
    EXPECT_EQ(LbFormat(L"%s %S", SWide(), SNarrow()), L"wide narrow");
}

TEST(LbFormat, AcceptsConstantsAsFormats)
{
    static constexpr const wchar_t* c_Pointer = L"<%d>";
    static constexpr std::wstring_view c_View = L"<%d>";
    EXPECT_EQ(LbFormat(c_Pointer, 1) + LbFormat(c_View, 2), L"<1><2>");
}

TEST(LbFormat, LimitsWidthsAndPrecisionsOfArguments)
{
    constexpr int c_Huge = 2'000'000'000;
    constexpr std::size_t c_Longest = 1'048'575;

    EXPECT_EQ(LbFormat(L"%*d", c_Huge, 1).size(), c_Longest);
    EXPECT_EQ(LbFormat(L"%-*s", c_Huge, L"text").size(), c_Longest);
    EXPECT_EQ(LbFormat(L"%*c", -c_Huge, L'c').size(), c_Longest);
    EXPECT_EQ(LbFormat(L"%*d", std::numeric_limits<int>::min(), 1).size(), c_Longest);
    EXPECT_EQ(LbFormat(L"%.*d", c_Huge, 1).size(), c_Longest);
    EXPECT_EQ(LbFormat(L"%.*f", c_Huge, 1.0).size(), c_Longest + 2);
}

TEST(LbFormat, PrintsLongTextsWhosePrecisionAnArgumentLimits)
{
    constexpr int c_Huge = 2'000'000'000;
    const std::wstring text(1'500'000, L'x');

    EXPECT_EQ(LbFormat(L"%.*s", c_Huge, text), text);
}

} // namespace
