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

/// The kind of the only part of the difference.
std::wstring getOnlyKind(std::string_view reference, std::string_view received)
{
    return FindParts(reference, received).front().kind;
}

TEST(FindParts, GivesTheSameChangeTheSameNameInAnyFile)
{
    EXPECT_EQ(getNames("a\nold\n", "a\nnew\n"), getNames("x\ny\nold\nz\n", "x\ny\nnew\nz\n"));
    EXPECT_EQ(getNames("old\na\nold\n", "new\na\nnew\n"), getNames("b\nold\n", "b\nnew\n"));
}

TEST(FindParts, GivesDifferentChangesDifferentNames)
{
    EXPECT_NE(getNames("x\nold\n", "x\nnew\n"), getNames("x\nnew\n", "x\nold\n"));
    EXPECT_NE(getNames("x\na\n", "x\na\n-b\n"), getNames("x\na\n-b\n", "x\na\n"));
    EXPECT_NE(getNames("x\nold\n", "x\nnew\n"), getNames(std::string_view("x\0old\n", 6), "x\nnew\n"));
}

TEST(FindParts, SeparatesNeighbouringReplacedLines)
{
    const PartNames both = getNames("x\nold 1\nold 2\n", "x\nnew 1\nnew 2\n");

    EXPECT_EQ(both.size(), 2U);
    EXPECT_TRUE(both.contains(*getNames("x\nold 1\n", "x\nnew 1\n").begin()));
    EXPECT_TRUE(both.contains(*getNames("x\nold 2\n", "x\nnew 2\n").begin()));
}

TEST(FindParts, SeparatesAChangedLineFromAnAddedNeighbour)
{
    const PartNames both = getNames("x\ntime 12\n", "x\ntime 12 ms\nunit ms\n");

    EXPECT_EQ(both.size(), 2U);
    EXPECT_TRUE(both.contains(*getNames("y\ntime 12\n", "y\ntime 12 ms\n").begin()));
    EXPECT_TRUE(both.contains(*getNames("y\n", "y\nunit ms\n").begin()));
}

TEST(FindParts, GivesChangesThatDifferOnlyInValuesTheSameKind)
{
    EXPECT_NE(getNames("x\ntime 1\n", "x\ntime 1 ms\n"), getNames("x\ntime 2\n", "x\ntime 2 ms\n"));
    EXPECT_EQ(getOnlyKind("x\ntime 1\n", "x\ntime 1 ms\n"), getOnlyKind("x\ntime 2\n", "x\ntime 2 ms\n"));
    EXPECT_EQ(getOnlyKind("sum 1\n\n1 x\n", "sum 1 EUR\n\n1 y\n"), getOnlyKind("sum 2\n\n2 x\n", "sum 2 EUR\n\n2 y\n"))
        << "no line with text is unchanged";
}

TEST(FindParts, JoinsVeryManyLinesOfTheSameKind)
{
    std::string reference = "x\n";
    std::string received = "x\n";
    for (int line = 0; line < 2'000; ++line)
    {
        reference += "time " + std::to_string(line) + "\n";
        received += "time " + std::to_string(line) + " ms\n";
    }

    const std::vector<Runner::SPart> parts = FindParts(reference, received);

    ASSERT_EQ(parts.size(), 1U);
    EXPECT_EQ(parts.front().hunks.size(), 2'000U);
    EXPECT_EQ(parts.front().kind, getOnlyKind("y\ntime 5\n", "y\ntime 5 ms\n"));
}

TEST(FindParts, DoesNotSeparateVeryManyLinesOfDifferentKinds)
{
    std::string reference = "x\n";
    std::string received = "x\n";
    for (int line = 0; line < 101; ++line)
    {
        reference += "time " + std::to_string(line) + "\n";
        received += "time " + std::to_string(line + 1'000) + "\n";
    }

    EXPECT_EQ(FindParts(reference, received).size(), 1U);
}

TEST(FindParts, MakesOnePartIfOnlyEmptyLinesAreUnchanged)
{
    EXPECT_EQ(getNames("a\n\nb\n", "\nB\n").size(), 1U);
    EXPECT_EQ(getNames("a\nx\nb\n", "x\nB\n").size(), 2U);
}

TEST(FindParts, MakesOnePartOfBinaryData)
{
    EXPECT_EQ(getNames(std::string_view("a\nx\nb\n\0", 7), std::string_view("A\nx\nB\n\0", 7)).size(), 1U);
}

TEST(FindParts, ReturnsOnePartWithoutHunksForEqualTexts)
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

TEST(ApplyParts, ChangesLineEndsIfNothingElseDiffers)
{
    EXPECT_EQ(ApplyParts("a\nb\n", "a\r\nb\r\n", getNames("a\nb\n", "a\r\nb\r\n")), "a\r\nb\r\n");
}

TEST(ApplyParts, ChangesAllPartsOfAKind)
{
    const PartNames kind = {getOnlyKind("time 5\nx", "time 5 ms\nx")};

    EXPECT_EQ(ApplyParts("x\ntime 1\na\ntime 2\n", "x\ntime 1 ms\nA\nb\ntime 2 ms\n", kind),
              "x\ntime 1 ms\na\ntime 2 ms\n");
}

TEST(ApplyParts, ChangesALineWithoutItsAddedNeighbour)
{
    const std::string reference = "x\ntime 12\n";
    const std::string received = "x\nfirst\ntime 12 ms\nlast\n";

    EXPECT_EQ(ApplyParts(reference, received, getNames("x\ntime 12\n", "x\ntime 12 ms\n")), "x\ntime 12 ms\n");
    EXPECT_EQ(ApplyParts(reference, received, getNames("x\n", "x\nlast\n")), "x\ntime 12\nlast\n");
    EXPECT_EQ(ApplyParts(reference, received, getNames("x\n", "x\nfirst\n")), "x\nfirst\ntime 12\n");
}

TEST(ApplyParts, KeepsLineEndsOfTheReference)
{
    EXPECT_EQ(ApplyParts("a\r\nb\r\nc\r\n", "A\nb\nC\n", getNames("a\nx", "A\nx")), "A\r\nb\r\nc\r\n");
    EXPECT_EQ(ApplyParts("a\nb\n", "A\r\nb\r\n", getNames("a\nx", "A\nx")), "A\nb\n") << "all parts are chosen";
    EXPECT_EQ(ApplyParts("a\r\nb", "a\r\nb\r\nc", getNames("b", "b\nc")), "a\r\nb\r\nc");
    EXPECT_EQ(ApplyParts("a\nb\nc", "A\nb\nc\n", getNames("a\nx", "A\nx")), "A\nb\nc");
    EXPECT_EQ(ApplyParts("a\nb\nc", "A\nb\nc\nd", getNames("b\nc", "b\nc\nd")), "a\nb\nc\nd");
}

TEST(ApplyParts, ChangesMixedLineEndsOfAReferenceOnlyInChosenParts)
{
    const std::string reference = "a\r\nb\nold\n";
    const std::string received = "a\nb\nnew\n";

    EXPECT_EQ(ApplyParts(reference, received, getNames("x\nold\n", "x\nnew\n")), "a\r\nb\nnew\n");
    EXPECT_EQ(ApplyParts(reference, received, getNames("a\r\nx\n", "a\nx\n")), "a\nb\nold\n");
    EXPECT_EQ(ApplyParts(reference, received, getNames(reference, received)), received);
}

TEST(ApplyParts, ProducesTheReceivedTextInAnyOrderOfTheParts)
{
    std::mt19937 random(7);
    const auto makeText = [&random] {
        std::string text = "stays\n";
        for (auto count = random() % 12; count > 0; --count)
        {
            text += static_cast<char>('a' + random() % 6);
            text += random() % 2 == 0 ? " word\n" : "\n";
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
