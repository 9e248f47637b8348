#include "base/lbcommandline.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace
{

using Words = std::vector<std::wstring>;

TEST(LbCommandLine, QuotesTextWithBlanks)
{
    EXPECT_EQ(LbCommandLine::Quote(L"a b"), L"\"a b\"");
}

TEST(LbCommandLine, QuotesAnEmptyText)
{
    EXPECT_EQ(LbCommandLine::Quote(L""), L"\"\"");
}

TEST(LbCommandLine, DoublesABackslashBeforeTheClosingQuotationMark)
{
    EXPECT_EQ(LbCommandLine::Quote(L"D:\\Größen und Maße\\"), L"\"D:\\Größen und Maße\\\\\"");
}

TEST(LbCommandLine, DoublesTheBackslashAtTheEndOfARootFolder)
{
    EXPECT_EQ(LbCommandLine::Quote(L"C:\\"), L"\"C:\\\\\"");
    EXPECT_EQ(LbCommandLine::Quote(L"\\\\Rechner\\"), L"\"\\\\Rechner\\\\\"");
    EXPECT_EQ(LbCommandLine::Quote(L"\\"), L"\"\\\\\"");
    EXPECT_EQ(LbCommandLine::Quote(L"/"), L"\"/\"");
}

TEST(LbCommandLine, EscapesAQuotationMarkWithABackslash)
{
    EXPECT_EQ(LbCommandLine::Quote(L"a\"b\\\"c"), L"\"a\\\"b\\\\\\\"c\"");
}

TEST(LbCommandLine, SplitsAtBlanks)
{
    EXPECT_EQ(LbCommandLine::Split(L"  eins\tzwei  drei "), (Words{L"eins", L"zwei", L"drei"}));
}

TEST(LbCommandLine, FindsNoWordsInBlankText)
{
    EXPECT_EQ(LbCommandLine::Split(L" \t "), Words());
    EXPECT_EQ(LbCommandLine::Split(L""), Words());
}

TEST(LbCommandLine, KeepsBlanksBetweenQuotationMarks)
{
    EXPECT_EQ(LbCommandLine::Split(L"-i \"a b\" c\" \"d"), (Words{L"-i", L"a b", L"c d"}));
}

TEST(LbCommandLine, KeepsEmptyWordsBetweenQuotationMarks)
{
    EXPECT_EQ(LbCommandLine::Split(L"a \"\" b"), (Words{L"a", L"", L"b"}));
}

TEST(LbCommandLine, ReadsAWordToTheEndWithoutAClosingQuotationMark)
{
    EXPECT_EQ(LbCommandLine::Split(L"a \"b c"), (Words{L"a", L"b c"}));
}

TEST(LbCommandLine, ReadsTwoQuotationMarksInQuotedTextAsOne)
{
    EXPECT_EQ(LbCommandLine::Split(L"\"a\"\"b c\" \"\"\"\" \"\"d"), (Words{L"a\"b c", L"\"", L"d"}));
}

TEST(LbCommandLine, KeepsBackslashesNotFollowedByAQuotationMark)
{
    EXPECT_EQ(LbCommandLine::Split(L"a\\\\b \\c\\ d"), (Words{L"a\\\\b", L"\\c\\", L"d"}));
}

TEST(LbCommandLine, SplitReversesQuote)
{
    const Words words = {L"",      L" ",       L"\"",      L"\\",         L"\\\\", L"\\\"", L"a\\\\\"b",
                         L"a b\\", L"ä ö ü\t", L"\"\"a\"", L"\\\\\\\"\\", L"C:\\", L"-d"};
    std::wstring text;
    for (const std::wstring& word : words)
    {
        text += L" " + LbCommandLine::Quote(word);
    }

    EXPECT_EQ(LbCommandLine::Split(text), words);
}

} // namespace
