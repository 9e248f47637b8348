#include "testing/lutestsuiterunner/review/changes.h"

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lbreceivedfile.h"
#include "testing/lutestsuiterunner/review/decision.h"
#include "tests/support/os/testaids.h"
#include "tests/support/scopedfolder.h"

namespace
{

using Runner::EChange;
using Runner::SChange;

class ReviewChanges : public testing::Test
{
protected:
    void Write(const std::wstring& name, const std::string& expected, const std::string& received) const
    {
        if (!expected.empty())
        {
            m_folder.WriteFile(name, expected);
        }
        m_folder.WriteFile(name + LbReceivedFile::c_Suffix, received);
    }

    std::vector<SChange> Group() const
    {
        return Runner::GroupChanges(Runner::FindReceived(m_folder.GetPath()).references);
    }

    EChange GetKind(const std::string& expected, const std::string& received) const
    {
        Write(L"a", expected, received);
        return Group().front().kind;
    }

    ScopedFolder m_folder;
};

/// One to three of ten causes affect each file. Each cause changes two neighbouring lines and adds a line elsewhere.
class ReviewOfOverlappingCauses : public ReviewChanges
{
protected:
    static constexpr int c_Causes = 10;

    void WriteFiles(int count) const
    {
        std::mt19937 random(7);
        for (int number = 0; number < count; ++number)
        {
            std::set<int> causes = {number % c_Causes};
            while (causes.size() < 1 + static_cast<std::size_t>(number) % 3)
            {
                causes.insert(static_cast<int>(random() % c_Causes));
            }
            WriteCauses(LbFormat(L"C%u/%u.txt", number / 500, number), "file " + std::to_string(number) + "\n", causes);
        }
    }

    void WriteCauses(const std::wstring& name, const std::string& begin, const std::set<int>& causes) const
    {
        std::string expected = begin;
        std::string received = begin;
        for (const int cause : causes)
        {
            const std::string number = std::to_string(cause) + "\n";
            expected += "first " + number + "second " + number;
            received += "changed first " + number + "changed second " + number;
        }
        for (const int cause : causes)
        {
            const std::string number = std::to_string(cause) + "\n";
            expected += "line of " + number + "end\n";
            received += "line of " + number + "added " + number + "end\n";
        }
        Write(name, expected, received);
    }
};

TEST_F(ReviewOfOverlappingCauses, MakesOneDecisionForEachCause)
{
    WriteFiles(2800);

    const std::vector<SChange> changes = Group();

    EXPECT_EQ(changes.size(), static_cast<std::size_t>(c_Causes));
    for (const SChange& change : changes)
    {
        EXPECT_EQ(change.parts.size(), 3U);
    }
}

TEST_F(ReviewOfOverlappingCauses, AcceptsOneCauseAfterTheOther)
{
    WriteFiles(280);
    for (std::size_t left = c_Causes; left > 0; --left)
    {
        const std::vector<SChange> changes = Group();
        ASSERT_EQ(changes.size(), left);
        const Runner::SOutcome outcome = Decide(m_folder.GetPath(), Runner::EDecision::Accept, changes.back());
        ASSERT_EQ(outcome.done.size(), changes.back().files.size());
    }
    EXPECT_TRUE(Runner::FindReceived(m_folder.GetPath()).references.empty());
}

/// Each of ten causes changes a line whose value is different in each file. One to three causes affect neighbouring
/// lines of each file. The first cause also adds a line below the line that it changes.
class ReviewOfValuesThatDifferInEachFile : public ReviewChanges
{
protected:
    static constexpr int c_Causes = 10;

    void WriteFiles(int count) const
    {
        for (int number = 0; number < count; ++number)
        {
            const int causes = 1 + number % 3;
            std::string expected = GetOwnLine(number);
            std::string received = expected;
            for (int step = 0; step < causes; ++step)
            {
                AddCause((number + step * (1 + number % 7)) % c_Causes, number, expected, received);
            }
            Write(LbFormat(L"C%u/%u.txt", number / 500, number), expected + "end\n", received + "end\n");
        }
    }

    static std::string GetOwnLine(int number) { return "file " + std::to_string(number) + "\n"; }

    static void AddCause(int cause, int number, std::string& expected, std::string& received)
    {
        const std::string value = std::to_string(number * 37 % 1001) + "." + std::to_string(number);
        const std::string line = "cause" + std::string(1, static_cast<char>('A' + cause)) + " " + value;
        expected += line + "\n";
        received += line + " ms\n" + (cause == 0 ? "unit ms\n" : "");
    }
};

TEST_F(ReviewOfValuesThatDifferInEachFile, MakesOneDecisionForEachCause)
{
    WriteFiles(2800);

    const std::vector<SChange> changes = Group();

    EXPECT_EQ(changes.size(), static_cast<std::size_t>(c_Causes));
    EXPECT_TRUE(std::ranges::none_of(changes, &SChange::areLinesEqual));
}

TEST_F(ReviewOfValuesThatDifferInEachFile, AcceptsOneCauseAfterTheOther)
{
    WriteFiles(210);
    for (std::size_t left = Group().size(); left > 0; --left)
    {
        const std::vector<SChange> changes = Group();
        ASSERT_EQ(changes.size(), left);
        Decide(m_folder.GetPath(), Runner::EDecision::Accept, changes.back());
    }
    EXPECT_TRUE(Runner::FindReceived(m_folder.GetPath()).references.empty());
}

TEST_F(ReviewChanges, AreFoundOnceInLinkedFolders)
{
    const ScopedFolder elsewhere;
    elsewhere.WriteFile(L"a.txt", "one\n");
    elsewhere.WriteFile(L"a.txt.received", "two\n");
    const std::wstring target = LbPath::WithoutSeparator(elsewhere.GetPath());
    if (!LbOs::MakeLink(m_folder.GetPathOf(L"link"), target))
    {
        GTEST_SKIP() << "links cannot be made here";
    }
    ASSERT_TRUE(LbOs::MakeLink(m_folder.GetPathOf(L"same"), target));
    ASSERT_TRUE(LbOs::MakeLink(elsewhere.GetPathOf(L"back"), LbPath::WithoutSeparator(m_folder.GetPath())));

    const std::vector<std::wstring> references = Runner::FindReceived(m_folder.GetPath()).references;

    ASSERT_EQ(references.size(), 1U);
    EXPECT_TRUE(references.front().ends_with(L"a.txt"));
}

TEST_F(ReviewChanges, StaySeparateIfSeveralFilesShareEachValue)
{
    for (int number = 0; number < 20; ++number)
    {
        const std::string cause = std::to_string(number % 10);
        Write(LbFormat(L"%02u", number), "x\nold " + cause + "\n", "x\nnew " + cause + "\n");
    }

    EXPECT_EQ(Group().size(), 10U);
}

TEST_F(ReviewChanges, AreOneDecisionForVeryManyValuesEvenIfFilesShareThem)
{
    for (int number = 0; number < 32; ++number)
    {
        const std::string value = std::to_string(number % 16);
        Write(LbFormat(L"%02u", number), "x\nsum " + value + "\n", "x\nsum " + value + " EUR\n");
    }

    EXPECT_EQ(Group().size(), 1U);
}

TEST_F(ReviewChanges, AreOneDecisionForEachFileIfTheValueItselfChanges)
{
    for (int number = 0; number < 20; ++number)
    {
        Write(LbFormat(L"%02u", number), "x\nsum " + std::to_string(number) + "\n",
              "x\nsum " + std::to_string(number + 100) + "\n");
    }

    EXPECT_EQ(Group().size(), 20U);
}

TEST_F(ReviewChanges, SeparateACommonCauseFromANoisyLineOfEachFile)
{
    for (int number = 0; number < 20; ++number)
    {
        const std::string own = std::to_string(number);
        Write(LbFormat(L"%02u", number), "time " + own + "\nsum " + own + "\nx\n",
              "time " + own + "0\nsum " + own + " EUR\nx\n");
    }

    const std::vector<SChange> changes = Group();

    ASSERT_EQ(changes.size(), 21U);
    EXPECT_EQ(changes.front().files.size(), 20U);
    EXPECT_EQ(changes[1].files.size(), 1U);
}

TEST_F(ReviewChanges, AreMarkedIfTheirLinesAreOnlySimilar)
{
    Write(L"a", "sum 1\nalt\nx\n", "sum 1 EUR\nneu\nx\n");
    Write(L"b", "sum 2\nx\n", "sum 2 EUR\nx\n");
    // Only an empty line is between the two changed lines, so both changes are one decision.
    Write(L"c", "alt\n\nalt 2\n", "neu\n\nneu 2\n");
    Write(L"d", "alt\n\nalt 2\n", "neu\n\nneu 2\n");

    const std::vector<SChange> changes = Group();

    ASSERT_EQ(changes.size(), 3U);
    for (const SChange& change : changes)
    {
        const bool isSum = change.files.back().reference == m_folder.GetPathOf(L"b");
        EXPECT_EQ(change.areLinesEqual, !isSum) << change.files.size() << " files";
    }
}

TEST_F(ReviewChanges, KeepTheirIdsWhenOtherChangesAreAccepted)
{
    Write(L"a", "a\nx\n", "A\nx\n");
    Write(L"b", "b\nx\n", "B\nx\n");
    Write(L"c", "a\nx\nb\n", "A\nx\nB\n");
    const std::vector<SChange> before = Group();
    ASSERT_EQ(before.size(), 2U);

    Decide(m_folder.GetPath(), Runner::EDecision::Accept, before.front());

    const std::vector<SChange> after = Group();
    ASSERT_EQ(after.size(), 1U);
    EXPECT_EQ(after.front().id, before.back().id);
    EXPECT_EQ(after.front().files.size(), 2U);
}

TEST_F(ReviewChanges, GroupNewReferencesByFolder)
{
    Write(L"COne/a", "", "eins");
    Write(L"COne/b", "", "zwei");
    Write(L"CTwo/a", "", "eins");

    const std::vector<SChange> changes = Group();

    ASSERT_EQ(changes.size(), 2U);
    EXPECT_EQ(changes[0].kind, EChange::New);
    EXPECT_EQ(changes[0].files.size(), 2U);
    EXPECT_EQ(changes[1].files.size(), 1U);
}

TEST_F(ReviewChanges, IdentifyNewReferencesByTheirFilesAndContents)
{
    Write(L"CTest/a", "", "eins");
    const std::wstring name = Group().front().checksum;
    EXPECT_EQ(Group().front().checksum, name);

    Write(L"CTest/a", "", "zwei");
    EXPECT_NE(Group().front().checksum, name) << "other contents";
    Write(L"CTest/a", "", "eins");
    EXPECT_EQ(Group().front().checksum, name);
    Write(L"CTest/b", "", "eins");
    EXPECT_NE(Group().front().checksum, name) << "one more file";
}

TEST_F(ReviewChanges, IdentifyBlankReferencesByTheirOldContents)
{
    Write(L"a", "alt", "");
    const std::wstring name = Group().front().checksum;

    Write(L"a", "anders", "");
    EXPECT_NE(Group().front().checksum, name);
}

TEST_F(ReviewChanges, AreBlankIfAReferenceWouldLoseAllItsText)
{
    EXPECT_EQ(GetKind("alt\n", ""), EChange::Blank);
    EXPECT_EQ(GetKind("alt\n", " \r\n\t"), EChange::Blank);
    EXPECT_EQ(GetKind("alt\n", "\xEF\xBB\xBF"), EChange::Blank);
    EXPECT_EQ(GetKind("alt\n", "\n."), EChange::Changed);
    EXPECT_EQ(GetKind("\n", " \n"), EChange::Changed);
}

TEST_F(ReviewChanges, AreBlankIfANewReferenceWouldHaveNoText)
{
    for (const char* const received : {"", "\r\n", "\xEF\xBB\xBF"})
    {
        EXPECT_EQ(GetKind("", received), EChange::Blank);
    }
    EXPECT_EQ(GetKind("", "a"), EChange::New);
}

TEST(NameChanges, UsesSixDigitsIfTheyAreUnique)
{
    std::vector<SChange> changes = {{EChange::New, L"ABCDEF01", {}, {}, {}}, {EChange::New, L"ABCDEE01", {}, {}, {}}};

    Runner::NameChanges(changes);

    EXPECT_EQ(changes[0].id, L"ABCDEF");
    EXPECT_EQ(changes[1].id, L"ABCDEE");
}

TEST(NameChanges, AddsDigitsUntilEachIdIsUnique)
{
    std::vector<SChange> changes = {{EChange::New, L"ABCDEF0123", {}, {}, {}},
                                    {EChange::New, L"1234567890", {}, {}, {}},
                                    {EChange::New, L"ABCDEF0223", {}, {}, {}},
                                    {EChange::New, L"ABCDEF022A", {}, {}, {}}};

    Runner::NameChanges(changes);

    EXPECT_EQ(changes[0].id, L"ABCDEF01");
    EXPECT_EQ(changes[1].id, L"123456");
    EXPECT_EQ(changes[2].id, L"ABCDEF0223");
    EXPECT_EQ(changes[3].id, L"ABCDEF022A");
}

TEST(FindNamed, FindsAllChangesWhoseChecksumBeginsWithTheDigits)
{
    const std::vector<SChange> changes = {{EChange::New, L"ABCDEF0123", {}, {}, {}},
                                          {EChange::New, L"ABCDEF0223", {}, {}, {}}};

    EXPECT_EQ(Runner::FindNamed(changes, L"ABCDEF").size(), 2U);
    EXPECT_EQ(Runner::FindNamed(changes, L"abcdef01").size(), 1U);
    EXPECT_EQ(Runner::FindNamed(changes, L"ABCDE").size(), 0U) << "too short";
    EXPECT_EQ(Runner::FindNamed(changes, L"ABCDEF03").size(), 0U);
}

TEST_F(ReviewChanges, AreFoundTogetherWithInterruptedDecisions)
{
    Write(L"COne/a", "alt", "neu");
    m_folder.WriteFile(std::wstring(L"COne/") + Runner::c_DecisionFile, "");

    const Runner::SFound found = Runner::FindReceived(m_folder.GetPath());

    EXPECT_EQ(found.references, std::vector{m_folder.GetPathOf(L"COne/a")});
    EXPECT_EQ(found.unfinished, std::vector{m_folder.GetPathOf(L"COne/")});
    EXPECT_TRUE(found.remains.empty());
    EXPECT_EQ(Runner::FindUnfinishedAbove(m_folder.GetPathOf(L"COne/CTwo/")), found.unfinished);
}

} // namespace
