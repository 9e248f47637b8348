#include "testing/lutestsuiterunner/review/parts.h"

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace
{

using Runner::ApplyParts;
using Runner::FindParts;
using Runner::IsBlank;
using Runner::PartNames;

PartNames getNames(std::string_view reference, std::string_view received)
{
    PartNames names;
    for (const Runner::SPart& part : FindParts(reference, received))
    {
        names.insert(part.checksum);
    }
    return names;
}

TEST(FindParts, NamesTheSameChangeAlikeInAnyFile)
{
    EXPECT_EQ(getNames("a\nold\n", "a\nnew\n"), getNames("x\ny\nold\nz\n", "x\ny\nnew\nz\n"));
    EXPECT_EQ(getNames("old\na\nold\n", "new\na\nnew\n"), getNames("b\nold\n", "b\nnew\n"));
}

TEST(FindParts, NamesOtherChangesDifferently)
{
    EXPECT_NE(getNames("x\nold\n", "x\nnew\n"), getNames("x\nnew\n", "x\nold\n"));
    EXPECT_NE(getNames("x\na\n", "x\na\n-b\n"), getNames("x\na\n-b\n", "x\na\n"));
    EXPECT_NE(getNames("x\nold\n", "x\nnew\n"), getNames(std::string_view("x\0old\n", 6), "x\nnew\n"));
}

TEST(FindParts, SeparatesNeighbouringLinesThatReplaceOthers)
{
    const PartNames both = getNames("x\nold 1\nold 2\n", "x\nnew 1\nnew 2\n");

    EXPECT_EQ(both.size(), 2U);
    EXPECT_TRUE(both.contains(*getNames("x\nold 1\n", "x\nnew 1\n").begin()));
    EXPECT_TRUE(both.contains(*getNames("x\nold 2\n", "x\nnew 2\n").begin()));
}

TEST(FindParts, DoesNotSeparateIfNoLineWithTextStays)
{
    EXPECT_EQ(getNames("a\n\nb\n", "\nB\n").size(), 1U);
    EXPECT_EQ(getNames("a\nx\nb\n", "x\nB\n").size(), 2U);
}

TEST(FindParts, DoesNotSeparateBytes)
{
    EXPECT_EQ(getNames(std::string_view("a\nx\nb\n\0", 7), std::string_view("A\nx\nB\n\0", 7)).size(), 1U);
}

TEST(FindParts, HasOneForEqualBytes)
{
    ASSERT_EQ(FindParts("a\n", "a\n").size(), 1U);
    EXPECT_TRUE(FindParts("a\n", "a\n").front().hunks.empty());
}

TEST(ApplyParts, ChangesOnlyTheChosenParts)
{
    const std::string reference = "a\nold\nb\nmore\n";
    const std::string received = "A\nnew\nnew 2\nb\nmore\nend\n";
    const PartNames first = getNames("a\nx\n", "A\nx\n");
    const PartNames last = getNames("more\n", "more\nend\n");

    EXPECT_EQ(ApplyParts("a\nb\nc\n", "A\nb\nC\nd\n", first), "A\nb\nc\n");
    EXPECT_EQ(ApplyParts(reference, received, last), "a\nold\nb\nmore\nend\n");
    EXPECT_EQ(ApplyParts(reference, received, {}), reference);
}

TEST(ApplyParts, KeepsLineEnds)
{
    EXPECT_EQ(ApplyParts("a\r\nb\r\nc\r\n", "A\nb\nC\n", getNames("a\nx", "A\nx")), "A\nb\r\nc\r\n");
    EXPECT_EQ(ApplyParts("a\nb\nc", "A\nb\nc\n", getNames("a\nx", "A\nx")), "A\nb\nc");
    EXPECT_EQ(ApplyParts("a\nb\nc", "A\nb\nc\nd", getNames("b\nc", "b\nc\nd")), "a\nb\nc\nd");
}

TEST(ApplyParts, LeadsToWhatWasReceivedInAnyOrder)
{
    std::mt19937 random(7);
    const auto makeText = [&random] {
        std::string text = "stays\n";
        for (auto count = random() % 12; count > 0; --count)
        {
            text += static_cast<char>('a' + random() % 6);
            text += '\n';
        }
        return text;
    };
    for (int round = 0; round < 500; ++round)
    {
        const std::string received = makeText();
        std::string reference = makeText();
        const std::string first = reference;
        for (int step = 0; reference != received; ++step)
        {
            ASSERT_LT(step, 100) << first << "->" << received;
            const std::vector<Runner::SPart> parts = FindParts(reference, received);
            reference = ApplyParts(reference, received, {parts[random() % parts.size()].checksum});
        }
    }
}

TEST(IsBlank, IsTrueForWhiteSpaceAndByteOrderMarks)
{
    for (const std::string_view text :
         {std::string_view(""), std::string_view(" \t\r\n"), std::string_view("\xEF\xBB\xBF\n"),
          std::string_view("\xFF\xFE\n\0", 4), std::string_view("\xFE\xFF\0 ", 4)})
    {
        EXPECT_TRUE(IsBlank(text)) << text;
    }
}

TEST(IsBlank, IsFalseForText)
{
    for (const std::string_view text : {std::string_view(" a "), std::string_view("\0", 1),
                                        std::string_view("\xEF\xBB\xBF"
                                                         "a"),
                                        std::string_view("\xFF\xFE\x0A\x01", 4)})
    {
        EXPECT_FALSE(IsBlank(text)) << text;
    }
}

} // namespace
