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

TEST_F(RunnerChangeText, ShowsControlCharactersOfContentsAsPictures)
{
    const SChange change = Change("alt\n", "\x1b[2J\n");

    EXPECT_NE(DescribeChange(change, m_folder.GetPath(), SDiffStyle()).find(L"+\u241b[2J\n"), std::wstring::npos);
}

TEST_F(RunnerChangeText, ShowsControlCharactersOfNamesAsPictures)
{
    const SChange change = {EChange::New, {}, L"4C21F0", {}, {{L"/data/a\x1b[2J.txt", L"", L"", true}}};

    const std::wstring text = DescribeChange(change, L"/data/", SDiffStyle());

    EXPECT_EQ(text, L"4C21F0  1 Datei, neue Referenzen: a\u241b[2J.txt\n");
}

TEST_F(RunnerChangeText, TellsThatLinesHaveOtherValues)
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

    EXPECT_NE(text.find(L"\x1b[31m-alt\x1b[0m\n"), std::wstring::npos) << "removed";
    EXPECT_NE(text.find(L"\x1b[32m+neu\x1b[0m\n"), std::wstring::npos) << "added";
}

TEST_F(RunnerChangeText, ShowsOnlyTheChangesOwnPartsOfAFile)
{
    SChange change = Change("a\nb\nbleibt\nc\n", "A\nB\nbleibt\nC\n");
    const auto parts = Runner::FindParts("a\nb\nbleibt\nc\n", "A\nB\nbleibt\nC\n");
    ASSERT_EQ(parts.size(), 3U);
    change.parts = {parts[0].checksum, parts[1].checksum};

    EXPECT_EQ(ShowDifference(change, change.files.front(), m_folder.GetPath(), SDiffStyle()),
              L"a.txt:\n  ab Zeile 1\n    -a\n    -b\n    +A\n    +B\n  andere Änderungen dieser Datei: 1\n");
}

} // namespace
