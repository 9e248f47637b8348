#include "testing/lutestsuiterunner/review/partname.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace
{

/// The kind of a part in which one line replaces another.
std::wstring getKind(std::string_view removed, std::string_view added)
{
    return Runner::GetPartKind({1, 1, {removed}, {added}}, false);
}

TEST(PartName, IncludesUnchangedNumbers)
{
    const auto getName = [](std::string_view removed, std::string_view added) {
        return Runner::GetPartName({1, 1, {removed}, {added}}, false);
    };
    EXPECT_NE(getName("sum 1", "sum 1 EUR"), getName("sum 2", "sum 2 EUR"));
}

TEST(PartKind, IgnoresUnchangedNumbers)
{
    EXPECT_EQ(getKind("duration 12.3", "duration 12.3 ms"), getKind("duration 4", "duration 4 ms"));
    EXPECT_EQ(getKind("Summe 17: 5 EUR", "Total 17: 5 EUR"), getKind("Summe 18: -6.50 EUR", "Total 18: -6.50 EUR"));
    EXPECT_EQ(getKind("<f id=\"17\" version=\"1.0\"/>", "<f id=\"17\" version=\"1.1\"/>"),
              getKind("<f id=\"a18\" version=\"1.0\"/>", "<f id=\"a18\" version=\"1.1\"/>"));
    EXPECT_EQ(getKind("time 12", "time 12ms"), getKind("time 4.5", "time 4.5ms"));
}

TEST(PartKind, IncludesChangedNumbers)
{
    EXPECT_NE(getKind("sum 12.3", "sum 12.4"), getKind("sum 55.3", "sum 55.4")) << "one digit changes";
    EXPECT_NE(getKind("sum 1", "sum 5"), getKind("sum 2", "sum 5"));
    EXPECT_NE(getKind("sum 1", "sum 2"), getKind("sum 1", "sum 3"));
    EXPECT_NE(getKind("sum 1", "sum 10"), getKind("sum 2", "sum 20")) << "a digit is added";
    EXPECT_NE(getKind("sum 1", "sum -1"), getKind("sum 2", "sum -2"));
    EXPECT_NE(getKind("sum 1", "sum n/a"), getKind("sum 2", "sum n/a"));
    EXPECT_NE(getKind("sum 1,000", "sum 1,500"), getKind("sum 2,000", "sum 2,500"));
    EXPECT_NE(getKind("at 01/02/2023", "at 01/03/2023"), getKind("at 05/02/2024", "at 05/03/2024"));
    EXPECT_NE(getKind("id a1b2", "id a1c2"), getKind("id f1b9", "id f1c9"));
    EXPECT_NE(getKind("id 1FF", "id 1AB"), getKind("id 2FF", "id 2AB"));
}

TEST(PartKind, IncludesNumbersBesideChangedNumbers)
{
    EXPECT_NE(getKind("sum 1", "sum 1 000"), getKind("sum 2", "sum 2 000"));
    EXPECT_NE(getKind("sum 1 000", "sum 1 500"), getKind("sum 2 000", "sum 2 500"));
    EXPECT_NE(getKind("sum 500 1", "sum 600 1"), getKind("sum 500 2", "sum 600 2"));
    EXPECT_EQ(getKind("sum 500; 1", "sum 600; 1"), getKind("sum 500; 2", "sum 600; 2"));
}

TEST(PartKind, IncludesAllNumbersIfNumbersChangePlaces)
{
    EXPECT_NE(getKind("v 5; 9", "v 9; 5"), getKind("v 5; 8", "v 8; 5"));
}

TEST(PartKind, IncludesUnchangedWordsIfTextIsReplaced)
{
    EXPECT_NE(getKind("visible=true", "visible=false"), getKind("deleted=true", "deleted=false"));
    EXPECT_NE(getKind("errors 0", "errors 1"), getKind("items 0", "items 1"));
    EXPECT_NE(getKind("Anna a", "Anna b"), getKind("Otto a", "Otto b"));
}

TEST(PartKind, IncludesOnlyTheWordBeforeAddedOrRemovedText)
{
    EXPECT_EQ(getKind("<a name=\"Anna\" price=\"3\"/>", "<a name=\"Anna\" price=\"3\" currency=\"EUR\"/>"),
              getKind("<a name=\"Otto\" price=\"4\"/>", "<a name=\"Otto\" price=\"4\" currency=\"EUR\"/>"));
    EXPECT_EQ(getKind("Anna has 5 items", "Anna has 5"), getKind("Otto has 5 items", "Otto has 5"));
    EXPECT_NE(getKind("access allowed", "access not allowed"), getKind("entry found", "entry not found"));
    EXPECT_NE(getKind("price 3", "price 3 EUR"), getKind("cost 3", "cost 3 EUR"));
    EXPECT_NE(getKind("price 3", "new price 3"), getKind("cost 3", "new cost 3")) << "the word behind the added text";
    EXPECT_EQ(getKind("3", "3 EUR"), getKind("5", "5 EUR"));
}

TEST(PartKind, IncludesUnchangedWordsIfNumbersAreAdded)
{
    EXPECT_NE(getKind("Seite 1", "Seite 1/5"), getKind("Blatt 1", "Blatt 1/5"));
    EXPECT_NE(getKind("Anna has pages", "Anna has 5 pages"), getKind("Otto has pages", "Otto has 5 pages"));
}

TEST(PartKind, IgnoresUnchangedTextIfOnlyWhiteSpaceChanged)
{
    EXPECT_EQ(getKind("  Anna 5", "    Anna 5"), getKind("  Otto", "    Otto"));
    EXPECT_EQ(getKind("Anna\r", "Anna"), getKind("5\r", "5"));
    EXPECT_NE(getKind("  Anna", "    Anna"), getKind("    Anna", "  Anna"));
    EXPECT_NE(getKind("1 000", "1000"), getKind("2 000", "2000"));
}

TEST(PartKind, IgnoresTheWidthOfUnchangedWhiteSpace)
{
    EXPECT_EQ(getKind("Summe   5", "Total   5"), getKind("Summe 500", "Total 500"));
}

TEST(PartKind, DistinguishesChangesThatDifferInDirectionTextOrPlace)
{
    EXPECT_NE(getKind("a", "a b"), getKind("a b", "a"));
    EXPECT_NE(getKind("a x", "b x"), getKind("a x", "c x"));
    EXPECT_NE(getKind("x a 1 y", "x b 1 y"), getKind("x 1 a y", "x 1 b y"));
}

TEST(PartKind, IncludesAllTextOfSeveralLinesAndOfLongLines)
{
    EXPECT_NE(Runner::GetPartKind({1, 1, {"a 1"}, {"a 1 ms", "b"}}, false),
              Runner::GetPartKind({1, 1, {"a 2"}, {"a 2 ms", "b"}}, false));
    const std::string words(2'000, '=');
    EXPECT_NE(getKind("1" + words, "1" + words + "a"), getKind("2" + words, "2" + words + "a"));
}

TEST(PartKind, IncludesAllTextOfBinaryData)
{
    EXPECT_NE(Runner::GetPartKind({1, 1, {"a 1"}, {"a 1 ms"}}, true),
              Runner::GetPartKind({1, 1, {"a 2"}, {"a 2 ms"}}, true));
}

} // namespace
