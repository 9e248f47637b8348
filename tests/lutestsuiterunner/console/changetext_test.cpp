#include "testing/lutestsuiterunner/console/changetext.h"

#include <string>

#include <gtest/gtest.h>

#include "base/lbreceivedfile.h"
#include "tests/support/scopedfolder.h"

namespace
{

using Runner::EChange;
using Runner::SChange;
using Runner::SDiffStyle;

/// A change of the reference "a.txt" in a folder of its own.
class RunnerChangeText : public testing::Test
{
protected:
    SChange Change(const std::string& expected, const std::string& received) const
    {
        m_folder.WriteFile(L"a.txt", expected);
        m_folder.WriteFile(std::wstring(L"a.txt") + LbReceivedFile::c_Suffix, received);
        return {EChange::Changed, {}, L"4C21F0", {}, {{m_folder.GetPathOf(L"a.txt"), L"", L"", true}}};
    }

    ScopedFolder m_folder;
};

TEST_F(RunnerChangeText, ShowsControlCharactersInContentsAsSymbols)
{
    const SChange change = Change("alt\n", "\x1b[2J\n");

    EXPECT_NE(DescribeChange(change, m_folder.GetPath(), SDiffStyle()).find(L"+\u241b[2J\n"), std::wstring::npos);
}

TEST_F(RunnerChangeText, ShowsControlCharactersInFileNamesAsSymbols)
{
    const SChange change = {EChange::New, {}, L"4C21F0", {}, {{L"/data/a\x1b[2J.txt", L"", L"", true}}};

    const std::wstring text = DescribeChange(change, L"/data/", SDiffStyle());

    EXPECT_EQ(text, L"4C21F0  1 Datei, neue Referenzen: a\u241b[2J.txt\n");
}

TEST_F(RunnerChangeText, CutsLongLinesAroundTheirDifferenceOnlyOnATerminal)
{
    const std::string begin(300, 'a');
    const std::string end(300, 'z');
    const SChange change = Change("x\n" + begin + "1" + end + "\n", "x\n" + begin + "2" + end + "\n");
    SDiffStyle style;
    const std::wstring whole = ShowDifference(change, change.files.front(), m_folder.GetPath(), style);
    style.isSideBySide = true;
    const std::wstring wholeSides = ShowDifference(change, change.files.front(), m_folder.GetPath(), style);
    style.areLinesCut = true;
    style.width = 43;
    const std::wstring cutSides = ShowDifference(change, change.files.front(), m_folder.GetPath(), style);
    style.isSideBySide = false;
    style.width = 25;
    const std::wstring cut = ShowDifference(change, change.files.front(), m_folder.GetPath(), style);

    const std::wstring left = std::wstring(300, L'a') + L"1" + std::wstring(300, L'z');
    const std::wstring right = std::wstring(300, L'a') + L"2" + std::wstring(300, L'z');
    EXPECT_EQ(whole, L"a.txt:\n  ab Zeile 2\n    -" + left + L"\n    +" + right + L"\n");
    EXPECT_EQ(wholeSides, L"a.txt:\n  ab Zeile 2\n" + left + L" | " + right + L"\n");
    EXPECT_EQ(cutSides, L"a.txt:\n  ab Zeile 2\n…aaaa1zzzzzzzzzzzzz… | …aaaa2zzzzzzzzzzzzz…\n");
    EXPECT_EQ(cut, L"a.txt:\n  ab Zeile 2\n    -…aaaa1zzzzzzzzzzzzz…\n    +…aaaa2zzzzzzzzzzzzz…\n");
}

TEST_F(RunnerChangeText, CutsPlacesWithManyLinesOnlyOnATerminal)
{
    std::string expected;
    std::string received;
    std::wstring removed;
    std::wstring added;
    for (int number = 1; number <= 250; ++number)
    {
        expected += "alt " + std::to_string(number) + "\n";
        received += "neu " + std::to_string(number) + "\n";
        removed += L"    -alt " + std::to_wstring(number) + L"\n";
        added += L"    +neu " + std::to_wstring(number) + L"\n";
    }
    const SChange change = Change(expected, received);
    SDiffStyle style;
    const std::wstring whole = ShowDifference(change, change.files.front(), m_folder.GetPath(), style);
    style.areLinesCut = true;
    const std::wstring cut = ShowDifference(change, change.files.front(), m_folder.GetPath(), style);
    style.isSideBySide = true;
    const std::wstring sides = ShowDifference(change, change.files.front(), m_folder.GetPath(), style);

    EXPECT_EQ(whole, L"a.txt:\n  ab Zeile 1\n" + removed + added);
    const std::wstring rest = L"... (250 Zeilen, alle mit '--side-by-side' oder in einer Pipe)\n";
    EXPECT_EQ(cut, L"a.txt:\n  ab Zeile 1\n" + removed.substr(0, removed.find(L"    -alt 201")) + L"    -" + rest +
                       added.substr(0, added.find(L"    +neu 201")) + L"    +" + rest);
    EXPECT_NE(sides.find(L"alt 250"), std::wstring::npos);
}

TEST_F(RunnerChangeText, CutsTheListOfFilesOnlyOnATerminal)
{
    SChange change = {EChange::New, {}, L"4C21F0", {}, {}};
    std::wstring names;
    for (int number = 10; number < 35; ++number)
    {
        const std::wstring name = std::to_wstring(number) + L".txt";
        change.files.push_back({L"/data/" + name, L"", L"", true});
        names += L"  " + name + L"\n";
    }
    SDiffStyle style;
    const std::wstring title = FormatTitle(change, L"/data/");
    const std::wstring whole = FormatHeading(change, L"/data/", style);
    style.areLinesCut = true;
    const std::wstring cut = FormatHeading(change, L"/data/", style);

    EXPECT_EQ(whole, title + names);
    EXPECT_EQ(cut,
              title + names.substr(0, names.find(L"  30.txt")) + L"  ... (5 weitere, alle mit '--files=4C21F0')\n");
    change.files.erase(change.files.begin() + 20, change.files.end());
    EXPECT_EQ(FormatHeading(change, L"/data/", style),
              FormatTitle(change, L"/data/") + names.substr(0, names.find(L"  30.txt")));
    change.files.erase(change.files.begin() + 1, change.files.end());
    EXPECT_EQ(FormatHeading(change, L"/data/", style), FormatTitle(change, L"/data/"))
        << "the title names the only file";
}

TEST_F(RunnerChangeText, CutsLongLinesInTheListOfChanges)
{
    const std::string begin(300, 'a');
    const SChange change = Change("x\n" + begin + "1\n", "x\n" + begin + "2\n");

    const std::wstring text = DescribeChange(change, m_folder.GetPath(), SDiffStyle());

    EXPECT_NE(text.find(L"    -…" + std::wstring(113, L'a') + L"1\n"), std::wstring::npos) << text.size();
    EXPECT_NE(text.find(L"    +…" + std::wstring(113, L'a') + L"2\n"), std::wstring::npos) << text.size();
}

TEST_F(RunnerChangeText, CutsLongBinaryDifferences)
{
    const std::string bytes = std::string(1, '\0') + std::string(300, 'a');
    const SChange change = Change("1" + bytes, "2" + std::string(300, 'b'));

    const std::wstring text = ShowDifference(change, change.files.front(), m_folder.GetPath(), SDiffStyle());

    EXPECT_EQ(text, L"a.txt:\n  ab Byte 1\n    -1␀" + std::wstring(112, L'a') + L"…\n    +2" + std::wstring(113, L'b') +
                        L"…\n");
}

TEST_F(RunnerChangeText, ShowsALineBesideTheLineThatReplacesIt)
{
    const SChange change = Change("x\nsum of all 1\n", "x\nfirst\nsum of all 2\n");
    SDiffStyle style;
    style.isSideBySide = true;
    style.width = 27;

    EXPECT_EQ(ShowDifference(change, change.files.front(), m_folder.GetPath(), style),
              L"a.txt:\n  ab Zeile 2\n             | first\nsum of all 1 | sum of all 2\n");
}

TEST_F(RunnerChangeText, CountsFurtherDifferencesInAFile)
{
    const SChange change = Change("a\nb\nx\nc\nx\nd\n", "A\nB\nx\nC\nx\nD\n");

    EXPECT_EQ(DescribeChange(change, m_folder.GetPath(), SDiffStyle()),
              L"4C21F0  1 Datei: a.txt\n    -a\n    -... (2 Zeilen)\n    +A\n    +... (2 Zeilen)\n"
              L"    weitere Stellen in dieser Datei: 2 ('--diff' zeigt sie)\n");
}

TEST_F(RunnerChangeText, NotesThatLineEndsDifferToo)
{
    constexpr const wchar_t* c_Note = L"  auch die Zeilenenden sind verschieden";
    const auto show = [this](const std::string& expected, const std::string& received) {
        const SChange change = Change(expected, received);
        return ShowDifference(change, change.files.front(), m_folder.GetPath(), SDiffStyle());
    };

    EXPECT_NE(show("alt\nx\n", "neu\r\nx\r\n").find(c_Note), std::wstring::npos);
    EXPECT_EQ(show("alt\nx\n", "neu\nx\n").find(c_Note), std::wstring::npos);
    EXPECT_EQ(show("alt\nx\r\n", "neu\nx\n"), L"a.txt:\n  ab Zeile 1\n    -alt\n    -x␍\n    +neu\n    +x\n")
        << "the reference has both line ends";
}

TEST_F(RunnerChangeText, NotesThatLinesHaveDifferentValues)
{
    SChange change = Change("sum 1\n", "sum 1 EUR\n");
    change.areLinesEqual = false;

    EXPECT_EQ(DescribeChange(change, m_folder.GetPath(), SDiffStyle()),
              L"4C21F0  1 Datei, Zeilen mit verschiedenen Werten: a.txt\n    -sum 1\n    +sum 1 EUR\n");
}

TEST_F(RunnerChangeText, ColoursRemovedAndAddedLines)
{
    const SChange change = Change("alt\n", "neu\n");
    SDiffStyle style;
    style.isColoured = true;

    const std::wstring text = ShowDifference(change, change.files.front(), m_folder.GetPath(), style);

    EXPECT_NE(text.find(L"\x1b[31m-alt\x1b[0m\n"), std::wstring::npos) << "removed line";
    EXPECT_NE(text.find(L"\x1b[32m+neu\x1b[0m\n"), std::wstring::npos) << "added line";
}

TEST_F(RunnerChangeText, ShowsOnlyThePartsThatBelongToTheChange)
{
    SChange change = Change("a\nb\nbleibt\nc\n", "A\nB\nbleibt\nC\n");
    const auto parts = Runner::FindParts("a\nb\nbleibt\nc\n", "A\nB\nbleibt\nC\n");
    ASSERT_EQ(parts.size(), 3U);
    change.parts = {parts[0].checksum, parts[1].checksum};

    EXPECT_EQ(ShowDifference(change, change.files.front(), m_folder.GetPath(), SDiffStyle()),
              L"a.txt:\n  ab Zeile 1\n    -a\n    -b\n    +A\n    +B\n  andere Änderungen dieser Datei: 1\n");
}

} // namespace
