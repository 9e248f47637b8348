#include "testing/lutestsuiterunner/review/pieces.h"

#include <gtest/gtest.h>

namespace
{

using Runner::Pieces;
using Runner::SplitPieces;

TEST(SplitPieces, SeparatesWordsWhiteSpaceAndOtherCharacters)
{
    EXPECT_EQ(SplitPieces("<a  b_c=\"x\">"), (Pieces{"<", "a", "  ", "b_c", "=", "\"", "x", "\"", ">"}));
    EXPECT_EQ(SplitPieces("Größe: groß\r"), (Pieces{"Größe", ":", " ", "groß", "\r"}));
    EXPECT_EQ(SplitPieces(""), Pieces());
}

TEST(SplitPieces, KeepsNumbersWhole)
{
    for (const std::string_view number :
         {"12", "12.3", "-12.3", "+5", "1,000.5", "1'000", "12:30:05", "2023-01-02", "01/02/2023", "1.5e-10", "1.5E+10",
          "1e5", "0x1F", "a1b2", "1FF", "12ab", "file17.txt", "v1.2-beta", "550e8400-e29b-abcd-a716-446655440000"})
    {
        EXPECT_EQ(SplitPieces(number), Pieces{number});
        EXPECT_TRUE(Runner::IsNumber(number)) << number;
    }
}

TEST(SplitPieces, SeparatesUnitsFromNumbers)
{
    EXPECT_EQ(SplitPieces("12.5ms"), (Pieces{"12.5", "ms"}));
    EXPECT_EQ(SplitPieces("-3µs;"), (Pieces{"-3", "µs", ";"}));
    EXPECT_EQ(SplitPieces("5%"), (Pieces{"5", "%"}));
}

TEST(SplitPieces, TakesOnlyALeadingSignAsPartOfANumber)
{
    EXPECT_EQ(SplitPieces("x-5"), (Pieces{"x", "-", "5"}));
    EXPECT_EQ(SplitPieces("x=-5"), (Pieces{"x", "=", "-5"}));
    EXPECT_EQ(SplitPieces("- 5-"), (Pieces{"-", " ", "5", "-"}));
}

TEST(SplitPieces, EndsNumbersAtFieldSeparators)
{
    EXPECT_EQ(SplitPieces("17,abc,3."), (Pieces{"17", ",", "abc", ",", "3", "."}));
    EXPECT_EQ(SplitPieces("\"a\":1,"), (Pieces{"\"", "a", "\"", ":", "1", ","}));
}

TEST(SplitPieces, DistinguishesWordsWhiteSpaceAndNumbers)
{
    EXPECT_TRUE(Runner::IsWord("ab"));
    EXPECT_FALSE(Runner::IsWord("a1"));
    EXPECT_FALSE(Runner::IsWord("-"));
    EXPECT_TRUE(Runner::IsSpace(" \t"));
    EXPECT_FALSE(Runner::IsSpace("-"));
    EXPECT_FALSE(Runner::IsNumber("-"));
}

} // namespace
