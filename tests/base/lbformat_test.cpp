#include "base/lbformat.h"

#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "base/lbexception.h"

namespace
{

constexpr auto c_MinInt64 = std::numeric_limits<std::int64_t>::min();
constexpr auto c_MaxUInt64 = std::numeric_limits<std::uint64_t>::max();

/// The message of the exception, or "no exception".
template<typename... T>
std::wstring getFailure(std::wstring_view format, const T&... arguments)
{
    try
    {
        LbFormat(format, arguments...);
    }
    catch (const LbException& exception)
    {
        return exception.GetMessageText();
    }
    return L"no exception";
}

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

TEST(LbFormat, BuildsFormatsForFormats)
{
    EXPECT_EQ(LbFormat(L"%%.%df", 2), L"%.2f");
    EXPECT_EQ(LbFormat(LbFormat(L"%%.%df", 2), 1.0), L"1.00");
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

TEST(LbFormat, PrintsZeroCharactersInsideOfText)
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

TEST(LbFormat, PrintsNullTexts)
{
    const wchar_t* wide = nullptr;
    const char* narrow = nullptr;
    EXPECT_EQ(LbFormat(L"%s %S", wide, narrow), L"(null) (null)");
}

TEST(LbFormat, PadsAndCutsText)
{
    EXPECT_EQ(LbFormat(L"|%5s|%-5s|", L"ab", L"cd"), L"|   ab|cd   |");
    EXPECT_EQ(LbFormat(L"|%.2s|%5.1s|%-3.0s|", L"abc", L"xyz", L"abc"), L"|ab|    x|   |");
    EXPECT_EQ(LbFormat(L"|%1s|%.9s|", L"abc", L"abc"), L"|abc|abc|");
}

TEST(LbFormat, CountsCharactersNotCodeUnits)
{
    EXPECT_EQ(LbFormat(L"|%3s|%-3s|", L"\U0001F600", L"\U0001F600"), L"|  \U0001F600|\U0001F600  |");
    EXPECT_EQ(LbFormat(L"|%.1s|%.2s|", L"\U0001F600x", L"\U0001F600xy"), L"|\U0001F600|\U0001F600x|");
}

TEST(LbFormat, PrintsCharacters)
{
    EXPECT_EQ(LbFormat(L"%c%c|%3c|%-3c|", L'a', L'ß', L'b', L'c'), L"aß|  b|c  |");
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

TEST(LbFormat, Prints64BitsUnderEveryMark)
{
    EXPECT_EQ(LbFormat(L"%I64u %I64i %I64d", c_MaxUInt64, c_MinInt64, std::int64_t{5}),
              L"18446744073709551615 -9223372036854775808 5");
    EXPECT_EQ(LbFormat(L"%llu %lld %zu %jd %td", c_MaxUInt64, c_MinInt64, std::size_t{1}, std::int64_t{2}, 3),
              L"18446744073709551615 -9223372036854775808 1 2 3");
}

TEST(LbFormat, Prints64BitsWithoutMark)
{
    EXPECT_EQ(LbFormat(L"%d %u", c_MinInt64, c_MaxUInt64), L"-9223372036854775808 18446744073709551615");
}

TEST(LbFormat, IgnoresMarksOfSmallerWidth)
{
    EXPECT_EQ(LbFormat(L"%hd %hhu %I32d %ld", 70000, 70000U, c_MinInt64, 5), L"70000 70000 -9223372036854775808 5");
    EXPECT_EQ(LbFormat(L"%ls %ws %lc", L"a", L"b", L'c'), L"a b c");
}

TEST(LbFormat, LetsTheArgumentsWidthDecideOnSigns)
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

TEST(LbFormat, PrintsHexadecimal)
{
    EXPECT_EQ(LbFormat(L"%x %X %08x %#x %#X %#x", 0xBEEFU, 0xBEEFU, 0xBEEFU, 0xBEEFU, 0xBEEFU, 0),
              L"beef BEEF 0000beef 0xbeef 0XBEEF 0");
    EXPECT_EQ(LbFormat(L"%X %I64x", -1, std::int64_t{-1}), L"FFFFFFFF ffffffffffffffff");
    EXPECT_EQ(LbFormat(L"|%#8x|%#08x|", 255, 255), L"|    0xff|0x0000ff|");
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

TEST(LbFormat, AppliesIntegerFlags)
{
    EXPECT_EQ(LbFormat(L"|%5d|%-5d|%05d|%+d|% d|", 42, 42, 42, 42, 42), L"|   42|42   |00042|+42| 42|");
    EXPECT_EQ(LbFormat(L"|%05d|%+05d|%-05d|%+ d|", -42, 42, 42, 42), L"|-0042|+0042|42   |+42|");
    EXPECT_EQ(LbFormat(L"|%+u|% u|", 1U, 1U), L"|1|1|");
}

TEST(LbFormat, AppliesIntegerPrecision)
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

TEST(LbFormat, PrintsFixedFloating)
{
    EXPECT_EQ(LbFormat(L"%f %f %f", 0.0, 3.14159265, -2.5), L"0.000000 3.141593 -2.500000");
    EXPECT_EQ(LbFormat(L"%.0f %.1f %.3f %#.0f", 2.0, 2.0, 2.0, 2.0), L"2 2.0 2.000 2.");
    EXPECT_EQ(LbFormat(L"|%8.2f|%-8.2f|%08.2f|%+.1f|% .1f|", 3.14159, 3.14159, -3.14159, 1.0, 1.0),
              L"|    3.14|3.14    |-0003.14|+1.0| 1.0|");
    EXPECT_EQ(LbFormat(L"%.1f", 0.25F), L"0.2");
}

TEST(LbFormat, RoundsExactHalvesToEven)
{
    EXPECT_EQ(LbFormat(L"%.0f %.0f %.0f %.1f %.2f", 0.5, 1.5, 2.5, 0.25, 0.125), L"0 2 2 0.2 0.12");
}

TEST(LbFormat, RoundsByTheExactBinaryValue)
{
    EXPECT_EQ(LbFormat(L"%.2f %.2f %.20f", 1.005, 2.675, 0.1), L"1.00 2.67 0.10000000000000000555");
}

TEST(LbFormat, PrintsLargestAndSmallestDoubles)
{
    const std::wstring largest = LbFormat(L"%f", std::numeric_limits<double>::max());
    EXPECT_EQ(largest.size(), 309U + 7U);
    EXPECT_TRUE(largest.starts_with(L"179769313486231570814527423731704356798070567525844996598917476803"));
    EXPECT_EQ(LbFormat(L"%g", std::numeric_limits<double>::denorm_min()), L"4.94066e-324");
    EXPECT_EQ(LbFormat(L"%.1000f", 1.0), L"1." + std::wstring(1000, L'0'));
}

TEST(LbFormat, PrintsScientificFloating)
{
    EXPECT_EQ(LbFormat(L"%e %.2e %.0e %e %e", 12345.678, 0.00012, 5e9, 0.0, 1e100),
              L"1.234568e+04 1.20e-04 5e+09 0.000000e+00 1.000000e+100");
    EXPECT_EQ(LbFormat(L"%#.0e|%012.1e", 5e9, -1.5), L"5.e+09|-00001.5e+00");
}

TEST(LbFormat, PrintsShortestOfFixedAndScientific)
{
    EXPECT_EQ(LbFormat(L"%g %g %g %g %g", 100000.0, 1000000.0, 0.0001, 0.00001, 0.5), L"100000 1e+06 0.0001 1e-05 0.5");
    EXPECT_EQ(LbFormat(L"%.3g %.0g %.10g", 1234.5, 1234.5, 1.0 / 3.0), L"1.23e+03 1e+03 0.3333333333");
    EXPECT_EQ(LbFormat(L"%#g %#.3g %#g %#.2g", 1.0, 0.5, 0.0, 1e10), L"1.00000 0.500 0.00000 1.0e+10");
}

TEST(LbFormat, PrintsNonFiniteFloatingWithoutZeros)
{
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(LbFormat(L"%f %e %g", infinity, -infinity, infinity), L"inf -inf inf");
    EXPECT_EQ(LbFormat(L"|%06f|%+f|%-5f|", infinity, infinity, infinity), L"|   inf|+inf|inf  |");
    EXPECT_EQ(LbFormat(L"%f", std::numeric_limits<double>::quiet_NaN()), L"nan");
}

TEST(LbFormat, KeepsTheSignOfZero)
{
    EXPECT_EQ(LbFormat(L"%f %.0f %g", -0.0, -0.25, -0.0), L"-0.000000 -0 -0");
}

TEST(LbFormat, RefusesMissingArguments)
{
    EXPECT_EQ(getFailure(L"%d %d", 1), L"Formattext \"%d %d\": zu wenige Argumente");
    EXPECT_EQ(getFailure(L"%s"), L"Formattext \"%s\": zu wenige Argumente");
}

TEST(LbFormat, RefusesSurplusArguments)
{
    EXPECT_EQ(getFailure(L"%d", 1, 2), L"Formattext \"%d\": zu viele Argumente");
    EXPECT_EQ(getFailure(L"100%%", 1), L"Formattext \"100%%\": zu viele Argumente");
}

TEST(LbFormat, RefusesArgumentsOfTheWrongKind)
{
    const void* pointer = nullptr;
    EXPECT_EQ(getFailure(L"%s", 1), L"Formattext \"%s\": unpassendes Argument");
    EXPECT_EQ(getFailure(L"%s", "narrow"), L"Formattext \"%s\": unpassendes Argument");
    EXPECT_EQ(getFailure(L"%S", L"wide"), L"Formattext \"%S\": unpassendes Argument");
    EXPECT_EQ(getFailure(L"%d", L"text"), L"Formattext \"%d\": unpassendes Argument");
    EXPECT_EQ(getFailure(L"%u", 1.0), L"Formattext \"%u\": unpassendes Argument");
    EXPECT_EQ(getFailure(L"%f", 1), L"Formattext \"%f\": unpassendes Argument");
    EXPECT_EQ(getFailure(L"%c", 65), L"Formattext \"%c\": unpassendes Argument");
    EXPECT_EQ(getFailure(L"%x", pointer), L"Formattext \"%x\": unpassendes Argument");
    EXPECT_EQ(getFailure(L"%p", 1), L"Formattext \"%p\": unpassendes Argument");
}

TEST(LbFormat, RefusesUnknownConversions)
{
    EXPECT_EQ(getFailure(L"%y", 1), L"Formattext \"%y\": unbekannte Umwandlung");
    EXPECT_EQ(getFailure(L"%*d", 1, 2), L"Formattext \"%*d\": unbekannte Umwandlung");
    EXPECT_EQ(getFailure(L"%n", 1), L"Formattext \"%n\": unbekannte Umwandlung");
    EXPECT_EQ(getFailure(L"%I16d", 1), L"Formattext \"%I16d\": unbekannte Umwandlung");
    EXPECT_EQ(getFailure(L"50%"), L"Formattext \"50%\": unbekannte Umwandlung");
    EXPECT_EQ(getFailure(L"%-08.3", 1), L"Formattext \"%-08.3\": unbekannte Umwandlung");
}

TEST(LbFormat, RefusesWidthsBeyondReason)
{
    EXPECT_EQ(getFailure(L"%99999999999d", 1), L"Formattext \"%99999999999d\": unzulässige Breite");
    EXPECT_EQ(getFailure(L"%.99999999999f", 1.0), L"Formattext \"%.99999999999f\": unzulässige Breite");
}

} // namespace
