#include "base/lbformat.h"

#include <clocale>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "tests/support/scopedenvironment.h"
#include "tests/support/scopedfolder.h"

namespace
{

TEST(LbFormatFloating, PrintsNumbersInFixedNotation)
{
    EXPECT_EQ(LbFormat(L"%f %f %f", 0.0, 3.14159265, -2.5), L"0.000000 3.141593 -2.500000");
    EXPECT_EQ(LbFormat(L"%.0f %.1f %.3f %#.0f", 2.0, 2.0, 2.0, 2.0), L"2 2.0 2.000 2.");
    EXPECT_EQ(LbFormat(L"|%8.2f|%-8.2f|%08.2f|%+.1f|% .1f|", 3.14159, 3.14159, -3.14159, 1.0, 1.0),
              L"|    3.14|3.14    |-0003.14|+1.0| 1.0|");
    EXPECT_EQ(LbFormat(L"%.1f", 0.25F), L"0.2");
}

TEST(LbFormatFloating, RoundsExactHalvesToEven)
{
    EXPECT_EQ(LbFormat(L"%.0f %.0f %.0f %.1f %.2f", 0.5, 1.5, 2.5, 0.25, 0.125), L"0 2 2 0.2 0.12");
}

TEST(LbFormatFloating, RoundsByTheExactBinaryValue)
{
    EXPECT_EQ(LbFormat(L"%.2f %.2f %.20f", 1.005, 2.675, 0.1), L"1.00 2.67 0.10000000000000000555");
}

TEST(LbFormatFloating, PrintsLargestAndSmallestDoubles)
{
    const std::wstring largest = LbFormat(L"%f", std::numeric_limits<double>::max());
    EXPECT_EQ(largest.size(), 309U + 7U);
    EXPECT_TRUE(largest.starts_with(L"179769313486231570814527423731704356798070567525844996598917476803"));
    EXPECT_EQ(LbFormat(L"%g", std::numeric_limits<double>::denorm_min()), L"4.94066e-324");
    EXPECT_EQ(LbFormat(L"%.1000f", 1.0), L"1." + std::wstring(1000, L'0'));
}

TEST(LbFormatFloating, PrintsNumbersInScientificNotation)
{
    EXPECT_EQ(LbFormat(L"%e %.2e %.0e %e %e", 12345.678, 0.00012, 5e9, 0.0, 1e100),
              L"1.234568e+04 1.20e-04 5e+09 0.000000e+00 1.000000e+100");
    EXPECT_EQ(LbFormat(L"%#.0e|%012.1e", 5e9, -1.5), L"5.e+09|-00001.5e+00");
}

TEST(LbFormatFloating, PrintsTheShorterOfFixedAndScientificNotation)
{
    EXPECT_EQ(LbFormat(L"%g %g %g %g %g", 100000.0, 1000000.0, 0.0001, 0.00001, 0.5), L"100000 1e+06 0.0001 1e-05 0.5");
    EXPECT_EQ(LbFormat(L"%.3g %.0g %.10g", 1234.5, 1234.5, 1.0 / 3.0), L"1.23e+03 1e+03 0.3333333333");
    EXPECT_EQ(LbFormat(L"%#g %#.3g %#g %#.2g", 1.0, 0.5, 0.0, 1e10), L"1.00000 0.500 0.00000 1.0e+10");
}

TEST(LbFormatFloating, PrintsNonFiniteNumbersWithoutPaddingZeros)
{
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(LbFormat(L"%f %e %g", infinity, -infinity, infinity), L"inf -inf inf");
    EXPECT_EQ(LbFormat(L"|%06f|%+f|%-5f|", infinity, infinity, infinity), L"|   inf|+inf|inf  |");
    EXPECT_EQ(LbFormat(L"%f", std::numeric_limits<double>::quiet_NaN()), L"nan");
}

TEST(LbFormatFloating, KeepsTheSignOfZero)
{
    EXPECT_EQ(LbFormat(L"%f %.0f %g", -0.0, -0.25, -0.0), L"-0.000000 -0 -0");
}

TEST(LbFormatFloating, PrintsNumbersInUpperCase)
{
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(LbFormat(L"%F %E %G %G %A", 1.5, 12345.678, 1e-10, 0.5, 171.0),
              L"1.500000 1.234568E+04 1E-10 0.5 0X1.56P+7");
    EXPECT_EQ(LbFormat(L"%F %E %G %A", infinity, -infinity, infinity, std::numeric_limits<double>::quiet_NaN()),
              L"INF -INF INF NAN");
}

TEST(LbFormatFloating, PrintsNumbersInHexadecimalNotation)
{
    EXPECT_EQ(LbFormat(L"%a %a %a %a", 1.0, -0.5, 0.0, 3.141592653589793),
              L"0x1p+0 -0x1p-1 0x0p+0 0x1.921fb54442d18p+1");
    EXPECT_EQ(LbFormat(L"%.0a %.3a %.15a %#.0a %#a", 1.5, 1.0 / 3.0, 1.0, 1.0, 1.0),
              L"0x2p+0 0x1.555p-2 0x1.000000000000000p+0 0x1.p+0 0x1.p+0");
    EXPECT_EQ(LbFormat(L"|%12a|%-12a|%012a|%+a|% a|", 1.5, 1.5, -1.5, 1.5, 1.5),
              L"|    0x1.8p+0|0x1.8p+0    |-0x0001.8p+0|+0x1.8p+0| 0x1.8p+0|");
}

TEST(LbFormatFloating, PadsWithZerosInTheAlternateForm)
{
    EXPECT_EQ(LbFormat(L"%#08.1f|%#08.0f|%#-8.0f|%#012.0e|%#010.3g|%#08.0a", 2.0, -2.0, 2.0, 5e9, 0.5, 1.0),
              L"000002.0|-000002.|2.      |0000005.e+09|000000.500|0x01.p+0");
}

TEST(LbFormatFloating, PrintsLongDoubles)
{
    EXPECT_EQ(LbFormat(L"%Lf %.3Le %Lg %.2f", 1.25L, 12345.0L, 1e-7L, 2.5L), L"1.250000 1.234e+04 1e-07 2.50");
    EXPECT_EQ(LbFormat(L"%Lf %lf", 0.5, 0.5), L"0.500000 0.500000");
    EXPECT_EQ(LbFormat(L"%.25Lf", 0.1L), L"0.1000000000000000000013553");
    EXPECT_EQ(LbFormat(L"%La %.2LA", 1.0L, 1.0L), L"0x8p-3 0X8.00P-3");
    EXPECT_EQ(
        LbFormat(L"%.3Lg %LG", std::numeric_limits<long double>::max(), -std::numeric_limits<long double>::infinity()),
        L"1.19e+4932 -INF");
    EXPECT_EQ(LbFormat(L"%.0Lf", std::numeric_limits<long double>::max()).size(), 4933U);
}

TEST(LbFormatFloating, PrintsEveryDigitOfTheSmallestNumbers)
{
    const double smallest = std::numeric_limits<double>::denorm_min();
    const std::wstring digits = LbFormat(L"%.1074f", smallest);
    EXPECT_TRUE(digits.ends_with(L"625")) << digits.size();
    EXPECT_EQ(LbFormat(L"%.1077f", smallest), digits + L"000");
    const std::wstring longDigits = LbFormat(L"%.16445Lf", std::numeric_limits<long double>::denorm_min());
    EXPECT_EQ(longDigits.back(), L'5');
    EXPECT_EQ(LbFormat(L"%.16447Lf", std::numeric_limits<long double>::denorm_min()), longDigits + L"00");
}

TEST(LbFormatFloating, AcceptsPrecisionsOfAnySize)
{
    EXPECT_EQ(LbFormat(L"%.1048575f", 0.5), L"0.5" + std::wstring(1'048'574, L'0'));
    EXPECT_EQ(LbFormat(L"%.20000Le", 5.0L), L"5." + std::wstring(20'000, L'0') + L"e+00");
    EXPECT_EQ(LbFormat(L"%.2000a", 1.0), L"0x1." + std::wstring(2000, L'0') + L"p+0");
    EXPECT_EQ(LbFormat(L"%.2000g|%#.2000g", 0.5, 0.5), L"0.5|0.5" + std::wstring(1999, L'0'));
    EXPECT_EQ(LbFormat(L"%2000.0f", 1.0), std::wstring(1999, L' ') + L"1");
}

/// Sets a locale with a decimal comma for the life of the object, if there is one.
class ScopedDecimalComma
{
public:
    ScopedDecimalComma()
    {
        for (const char* const name : {"de_DE.UTF-8", "fr_FR.UTF-8", "German_Germany.1252", "de-DE"})
        {
            if (IsSet() || std::setlocale(LC_NUMERIC, name) != nullptr)
            {
                return;
            }
        }
        const std::string folder = LbEncoding::ToUtf8(m_folder.GetPath());
        const int status = std::system(("localedef -i de_DE -f UTF-8 '" + folder + "lu_DE.UTF-8' >&2").c_str());
        if (status == 0)
        {
            std::setlocale(LC_NUMERIC, "lu_DE.UTF-8");
        }
    }

    ~ScopedDecimalComma() { std::setlocale(LC_NUMERIC, "C"); }
    ScopedDecimalComma(const ScopedDecimalComma&) = delete;
    ScopedDecimalComma& operator=(const ScopedDecimalComma&) = delete;

    static bool IsSet() { return std::string_view(std::localeconv()->decimal_point) == ","; }

private:
    ScopedFolder m_folder;
    ScopedEnvironmentVariable m_path{L"LOCPATH", m_folder.GetPath()};
};

TEST(LbFormatFloating, HasADecimalPointInAnyLocale)
{
    const ScopedDecimalComma comma;
    if (!ScopedDecimalComma::IsSet())
    {
        GTEST_SKIP() << "no locale with a decimal comma";
    }
    EXPECT_EQ(LbFormat(L"%Lf %.1Lf %#.0Lf", 0.5L, 2.25L, 1.0L), L"0.500000 2.2 1.");
    EXPECT_EQ(LbFormat(L"%Le %.1Le %#.0Le", 0.5L, 2.25L, 1.0L), L"5.000000e-01 2.2e+00 1.e+00");
    EXPECT_EQ(LbFormat(L"%Lg %#Lg %La %.1La", 0.5L, 0.5L, 1.5L, 1.5L), L"0.5 0.500000 0xcp-3 0xc.0p-3");
    EXPECT_EQ(LbFormat(L"%f %e %g %.1a", 0.5, 0.5, 0.5, 1.5), L"0.500000 5.000000e-01 0.5 0x1.8p+0");
    // The caller's locale is in effect again.
    EXPECT_TRUE(ScopedDecimalComma::IsSet());
}

} // namespace
