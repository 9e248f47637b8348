#include "testing/lutestsuiterunner/review/changes.h"

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbformat.h"
#include "base/lbreceivedfile.h"
#include "testing/lutestsuiterunner/review/decision.h"
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

/// Files with one, two or three of ten causes; each cause changes three lines, two of them neighbours.
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

TEST_F(ReviewOfOverlappingCauses, AreADecisionEach)
{
    WriteFiles(2800);

    const std::vector<SChange> changes = Group();

    EXPECT_EQ(changes.size(), static_cast<std::size_t>(c_Causes));
    for (const SChange& change : changes)
    {
        EXPECT_EQ(change.parts.size(), 3U);
    }
}

TEST_F(ReviewOfOverlappingCauses, AreAcceptedOneAfterTheOther)
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

TEST_F(ReviewChanges, KeepTheirNamesWhenOthersAreDecided)
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

TEST_F(ReviewChanges, TakeNewReferencesOfAFolderTogether)
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

TEST_F(ReviewChanges, KnowReferencesThatWouldBecomeBlank)
{
    EXPECT_EQ(GetKind("alt\n", ""), EChange::Blank);
    EXPECT_EQ(GetKind("alt\n", " \r\n\t"), EChange::Blank);
    EXPECT_EQ(GetKind("alt\n", "\xEF\xBB\xBF"), EChange::Blank);
    EXPECT_EQ(GetKind("alt\n", "\n."), EChange::Changed);
    EXPECT_EQ(GetKind("\n", " \n"), EChange::Changed);
}

TEST(NameChanges, TakesSixDigitsIfTheyDiffer)
{
    std::vector<SChange> changes = {{EChange::New, L"ABCDEF01", {}, {}, {}}, {EChange::New, L"ABCDEE01", {}, {}, {}}};

    Runner::NameChanges(changes);

    EXPECT_EQ(changes[0].id, L"ABCDEF");
    EXPECT_EQ(changes[1].id, L"ABCDEE");
}

TEST(NameChanges, TakesMoreDigitsUntilTheyDiffer)
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

TEST(FindNamed, FindsAllThatBeginWithTheDigits)
{
    const std::vector<SChange> changes = {{EChange::New, L"ABCDEF0123", {}, {}, {}},
                                          {EChange::New, L"ABCDEF0223", {}, {}, {}}};

    EXPECT_EQ(Runner::FindNamed(changes, L"ABCDEF").size(), 2U);
    EXPECT_EQ(Runner::FindNamed(changes, L"abcdef01").size(), 1U);
    EXPECT_EQ(Runner::FindNamed(changes, L"ABCDE").size(), 0U) << "too short";
    EXPECT_EQ(Runner::FindNamed(changes, L"ABCDEF03").size(), 0U);
}

TEST_F(ReviewChanges, AreFoundWithInterruptedDecisions)
{
    Write(L"COne/a", "alt", "neu");
    m_folder.WriteFile(std::wstring(L"COne/") + Runner::c_DecisionFile, "");

    const Runner::SFound found = Runner::FindReceived(m_folder.GetPath());

    EXPECT_EQ(found.references, std::vector{m_folder.GetPathOf(L"COne/a")});
    EXPECT_EQ(found.unfinished, std::vector{m_folder.GetPathOf(L"COne/")});
    EXPECT_EQ(Runner::FindUnfinishedAbove(m_folder.GetPathOf(L"COne/CTwo/")), found.unfinished);
}

} // namespace
