#include "testing/lutestsuiterunner/review/difference.h"

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace
{

using Runner::FindDifference;

/// The reference after all hunks of the difference are applied to it.
std::string applyHunks(const std::string& reference, const Runner::SDifference& difference)
{
    std::vector<std::string> lines(1);
    for (const char character : reference)
    {
        character == '\n' ? static_cast<void>(lines.emplace_back()) : lines.back().push_back(character);
    }
    for (auto hunk = difference.hunks.rbegin(); hunk != difference.hunks.rend(); ++hunk)
    {
        const auto place = lines.begin() + static_cast<std::ptrdiff_t>(hunk->firstRemoved - 1);
        const auto end = place + static_cast<std::ptrdiff_t>(hunk->removed.size());
        lines.insert(lines.erase(place, end), hunk->added.begin(), hunk->added.end());
    }
    std::string text;
    for (const std::string& line : lines)
    {
        text += line + "\n";
    }
    text.pop_back();
    return text;
}

TEST(FindDifference, FindsNothingInEqualTexts)
{
    EXPECT_TRUE(FindDifference("a\nb\n", "a\nb\n").hunks.empty());
}

TEST(FindDifference, SeparatesHunksByEqualLines)
{
    const Runner::SDifference difference = FindDifference("a\nb\nc\nd\n", "a\nB\nc\nd\ne\n");

    ASSERT_EQ(difference.hunks.size(), 2U);
    EXPECT_EQ(difference.hunks[0].firstRemoved, 2U);
    EXPECT_EQ(difference.hunks[0].removed, std::vector<std::string_view>{"b"});
    EXPECT_EQ(difference.hunks[0].added, std::vector<std::string_view>{"B"});
    EXPECT_EQ(difference.hunks[1].firstAdded, 5U);
    EXPECT_TRUE(difference.hunks[1].removed.empty());
    EXPECT_EQ(difference.hunks[1].added, std::vector<std::string_view>{"e"});
}

TEST(FindDifference, FindsHunksThatTurnTheReferenceIntoTheReceivedText)
{
    std::mt19937 random(7);
    for (int round = 0; round < 500; ++round)
    {
        const auto makeText = [&random] {
            std::string text;
            for (auto count = random() % 12; count > 0; --count)
            {
                text += static_cast<char>('a' + random() % 3);
                text += '\n';
            }
            return text;
        };
        const std::string reference = makeText();
        const std::string received = makeText();

        EXPECT_EQ(applyHunks(reference, FindDifference(reference, received)), received)
            << reference << "->" << received;
    }
}

TEST(FindDifference, MakesOneHunkOfTooManyDifferences)
{
    std::string reference = "begin\n";
    std::string received = "begin\n";
    for (int line = 0; line < 3000; ++line)
    {
        reference += "old " + std::to_string(line) + "\n";
        received += "new " + std::to_string(line) + "\n";
    }
    const Runner::SDifference difference = FindDifference(reference + "end\n", received + "end\n");

    ASSERT_EQ(difference.hunks.size(), 1U);
    EXPECT_EQ(difference.hunks[0].removed.size(), 3000U);
}

TEST(FindDifference, IgnoresLineEndsUnlessOnlyTheyDiffer)
{
    EXPECT_EQ(FindDifference("a\r\nb\r\n", "a\nc\n").hunks.size(), 1U);
    EXPECT_EQ(FindDifference("a\r\nb\r\n", "a\nc\n").hunks[0].removed.size(), 1U);
    EXPECT_FALSE(FindDifference("a\r\n", "a\n").hunks.empty());
}

TEST(FindDifference, ComparesLineEndsIfTheReferenceHasBothKinds)
{
    const Runner::SDifference difference = FindDifference("a\r\nb\nc\n", "a\nb\nC\n");

    ASSERT_EQ(difference.hunks.size(), 2U);
    EXPECT_EQ(difference.hunks[0].removed, std::vector<std::string_view>{"a\r"});
    EXPECT_EQ(difference.hunks[0].added, std::vector<std::string_view>{"a"});
    EXPECT_EQ(difference.hunks[1].added, std::vector<std::string_view>{"C"});
}

TEST(FindIgnoredEnd, ReturnsTheLineEndOfTheReference)
{
    EXPECT_EQ(Runner::FindIgnoredEnd("a\r\nb\r\n", "a\nc\r\n"), "\r\n");
    EXPECT_EQ(Runner::FindIgnoredEnd("a\nb\n", "a\r\nc\r\n"), "\n");
    EXPECT_EQ(Runner::FindIgnoredEnd("a\nb\n", "c"), "\n");
    EXPECT_EQ(Runner::FindIgnoredEnd("a", "b\r\nc\r\n"), "\r\n") << "a reference without line ends";
}

TEST(FindIgnoredEnd, ReturnsNothingIfLineEndsAreCompared)
{
    EXPECT_EQ(Runner::FindIgnoredEnd("a\nb\r\n", "c\nb\n"), "") << "both kinds in the reference";
    EXPECT_EQ(Runner::FindIgnoredEnd("a", "b\nc\r\n"), "") << "both kinds in the received text";
    EXPECT_EQ(Runner::FindIgnoredEnd("a\n", "a\r\n"), "") << "nothing else differs";
    EXPECT_EQ(Runner::FindIgnoredEnd(std::string_view("a\n\0", 3), "a\n"), "") << "binary data";
}

TEST(HasIgnoredEnds, IsTrueIfSomeReceivedLineEndsDifferFromTheReference)
{
    EXPECT_TRUE(Runner::HasIgnoredEnds("a\nb\n", "a\r\nc\r\n"));
    EXPECT_TRUE(Runner::HasIgnoredEnds("a\r\nb\r\n", "a\r\nc\n"));
    EXPECT_FALSE(Runner::HasIgnoredEnds("a\r\nb\r\n", "a\r\nc\r\n"));
    EXPECT_FALSE(Runner::HasIgnoredEnds("a\nb\n", "c"));
    EXPECT_FALSE(Runner::HasIgnoredEnds("a\n", "a\r\n")) << "the difference shows the line ends";
}

TEST(FindDifference, ComparesBytesIfATextHasAZeroByte)
{
    const Runner::SDifference difference = FindDifference(std::string_view("ab\0cd", 5), std::string_view("ab\0xd", 5));

    EXPECT_TRUE(difference.isBinary);
    ASSERT_EQ(difference.hunks.size(), 1U);
    EXPECT_EQ(difference.hunks[0].firstRemoved, 4U);
    EXPECT_EQ(difference.hunks[0].removed, std::vector<std::string_view>{"c"});
}

} // namespace
