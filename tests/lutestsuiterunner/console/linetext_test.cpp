#include "testing/lutestsuiterunner/console/linetext.h"

#include <random>
#include <string>

#include <gtest/gtest.h>

namespace
{

using Runner::c_AnyWidth;
using Runner::ShowLine;

TEST(ShowLine, LeavesShortLinesWhole)
{
    EXPECT_EQ(ShowLine("Straße 12", "Straße 13", 9), L"Straße 12");
}

TEST(ShowLine, CutsBothLinesAroundTheFirstDifference)
{
    const std::string begin(500, 'a');
    const std::string end(500, 'z');

    EXPECT_EQ(ShowLine(begin + "1" + end, begin + "2" + end, 12), L"…aa1zzzzzzz…");
    EXPECT_EQ(ShowLine(begin + "2" + end, begin + "1" + end, 12), L"…aa2zzzzzzz…");
}

TEST(ShowLine, CutsALineWhereItsLongerCounterpartIsCut)
{
    const std::string begin(500, 'a');

    EXPECT_EQ(ShowLine(begin, begin + std::string(500, 'z'), 12), L"…aa");
    EXPECT_EQ(ShowLine(begin + std::string(500, 'z'), begin, 12), L"…aazzzzzzzz…");
}

TEST(ShowLine, ShowsTheEndIfTheDifferenceIsThere)
{
    EXPECT_EQ(ShowLine("0123456789abcdefX", "0123456789abcdefY", 12), L"…6789abcdefX");
}

TEST(ShowLine, ShowsTheBeginningIfTheDifferenceIsThere)
{
    EXPECT_EQ(ShowLine("0X23456789abcdef", "0Y23456789abcdef", 12), L"0X23456789a…");
    EXPECT_EQ(ShowLine("0123456789abcdef", "0123456789abcdef", 12), L"0123456789a…") << "no difference";
}

/// Wherever two lines differ, the shown text contains the difference and has at most `width` characters.
TEST(ShowLine, ShowsTheDifferenceOfAnyLines)
{
    std::mt19937 random(7);
    constexpr const char* c_Characters[] = {"a", "\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"};
    for (int round = 0; round < 2000; ++round)
    {
        const std::size_t width = 12 + random() % 30;
        std::string common;
        for (auto count = random() % 300; count > 0; --count)
        {
            common += c_Characters[random() % 4];
        }
        const std::string line = common + "<" + std::string(random() % 60, 'x');
        const std::string other = common + ">" + std::string(random() % 60, 'y');

        const std::wstring text = ShowLine(line, other, width);
        const std::wstring otherText = ShowLine(other, line, width);

        ASSERT_LE(text.size(), width);
        ASSERT_NE(text.find(L'<'), std::wstring::npos) << line;
        ASSERT_EQ(text.find(L'<'), otherText.find(L'>')) << line;
    }
}

TEST(ShowLine, ShowsInvalidUtf8AsBytes)
{
    EXPECT_EQ(ShowLine("gr\xFC\xDF", "gr\xFC\xDE", 20), L"gr\\xFC\\xDF");
    EXPECT_EQ(ShowLine("\xE4", "\xC3\xA4", c_AnyWidth), L"\\xE4");
    EXPECT_EQ(ShowLine("\xC3\xA4", "\xE4", c_AnyWidth), L"ä");
}

TEST(ShowLine, KeepsCharactersBeyondTheBasicPlane)
{
    EXPECT_EQ(ShowLine("\xF0\x9F\x98\x80", "x", 20), L"\U0001F600");
}

TEST(ShowLine, ShowsInvisibleCharacters)
{
    EXPECT_EQ(ShowLine("\xEF\xBB\xBF"
                       "a\xC2\xA0"
                       "b\xE2\x80\x8B\xC2\x85",
                       "ab", c_AnyWidth),
              L"\\uFEFFa\\u00A0b\\u200B\\u0085");
    EXPECT_EQ(ShowLine("a\t\r", "a", c_AnyWidth), L"a␉␍");
}

TEST(ShowLine, DoesNotCutWithoutAWidth)
{
    const std::string line(5000, 'a');

    EXPECT_EQ(ShowLine(line + "b", line + "c", c_AnyWidth), std::wstring(5000, L'a') + L"b");
}

} // namespace
