#include "testing/lutestsuiterunner/commands/reviewchoice.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/os/files.h"

namespace
{

using Runner::EChange;
using Runner::SChange;
using Runner::SReviewChoice;

std::wstring getPath(const wchar_t* name)
{
    return LbOs::GetFullPath(name);
}

SChange makeChange(const std::wstring& checksum, const std::vector<const wchar_t*>& names)
{
    SChange change = {EChange::Changed, checksum, checksum.substr(0, 8), {checksum}, {}};
    for (const wchar_t* const name : names)
    {
        change.files.push_back({getPath(name), L"", L"", true});
    }
    return change;
}

/// Names and files of changes.
std::vector<std::wstring> getTexts(const std::vector<SChange>& changes)
{
    std::vector<std::wstring> texts;
    for (const SChange& change : changes)
    {
        std::wstring text = change.id;
        for (const Runner::SReceivedFile& file : change.files)
        {
            text += L" " + file.reference;
        }
        texts.push_back(text);
    }
    return texts;
}

class ReviewChoice : public testing::Test
{
protected:
    SReviewChoice Choose(const std::vector<std::wstring>& accept, const std::vector<std::wstring>& reject = {}) const
    {
        Runner::SReviewOptions options;
        options.accept = accept;
        options.reject = reject;
        return Runner::ChooseChanges(m_changes, options);
    }

    std::wstring GetRefusal(const std::vector<std::wstring>& accept, const std::vector<std::wstring>& reject = {}) const
    {
        try
        {
            Choose(accept, reject);
        }
        catch (const std::wstring& reason)
        {
            return reason;
        }
        return L"";
    }

    const std::vector<SChange> m_changes = {makeChange(L"ABCDEF0123", {L"a", L"b"}),
                                            makeChange(L"ABCDEF0223", {L"b", L"c"}), makeChange(L"1234560000", {L"d"})};
};

TEST_F(ReviewChoice, ChoosesAChangeByItsName)
{
    EXPECT_EQ(getTexts(Choose({L"123456"}).accepted), std::vector{L"12345600 " + getPath(L"d")});
    EXPECT_EQ(Choose({L"ABCDEF02"}).accepted.size(), 1U);
    EXPECT_EQ(Choose({L"ABCDEF02", L"abcdef022"}).accepted.size(), 1U) << "both names mean the same change";
}

TEST_F(ReviewChoice, RefusesAnAmbiguousName)
{
    EXPECT_EQ(GetRefusal({L"ABCDEF"}), L"'ABCDEF' ist mehrdeutig: ABCDEF01, ABCDEF02");
}

TEST_F(ReviewChoice, ChoosesANamedFileAsAWhole)
{
    const SReviewChoice choice = Choose({L"b", L"ABCDEF01"});

    EXPECT_EQ(getTexts(choice.accepted),
              (std::vector{getPath(L"b") + L" " + getPath(L"b"), L"ABCDEF01 " + getPath(L"a")}));
    EXPECT_TRUE(choice.accepted.front().parts.empty());
}

TEST_F(ReviewChoice, AppliesAllToChangesThatAreNotNamed)
{
    const SReviewChoice choice = Choose({L"all"}, {L"ABCDEF01", L"d"});

    EXPECT_EQ(getTexts(choice.accepted), std::vector{L"ABCDEF02 " + getPath(L"b") + L" " + getPath(L"c")});
    EXPECT_EQ(choice.rejected.size(), 2U);
}

TEST_F(ReviewChoice, RefusesToAcceptAndRejectTheSameChange)
{
    EXPECT_EQ(GetRefusal({L"ABCDEF01"}, {L"ABCDEF012"}), L"'--accept' und '--reject' nennen dasselbe: ABCDEF01");
    EXPECT_EQ(GetRefusal({L"ABCDEF01"}, {L"a"}), L"'--accept' und '--reject' nennen dasselbe: ABCDEF01");
    EXPECT_EQ(GetRefusal({L"a"}, {L"ABCDEF01"}), L"'--accept' und '--reject' nennen dasselbe: ABCDEF01");
    EXPECT_EQ(GetRefusal({L"a"}, {L"a"}), L"'--accept' und '--reject' nennen dasselbe: " + getPath(L"a"));
    EXPECT_EQ(GetRefusal({L"all"}, {L"all"}), L"'--accept' und '--reject' nennen dasselbe: all");
    EXPECT_EQ(GetRefusal({L"ABCDEF01"}, {L"ABCDEF02"}), L"") << "the changes are different parts of the same file";
}

TEST_F(ReviewChoice, FindsAFileByItsPathInTheReviewedFolder)
{
    const std::vector<SChange> changes = {makeChange(L"1234560000", {L"data/CTest/a"})};

    EXPECT_EQ(FindChangesOf(changes, L"data", L"CTest/a").size(), 1U);
    EXPECT_EQ(FindChangesOf(changes, L"data", L"data/CTest/a.received").size(), 1U);
    EXPECT_TRUE(FindChangesOf(changes, L"data", L"a").empty());
}

TEST_F(ReviewChoice, RefusesAPathThatFitsTwoFiles)
{
    const std::vector<SChange> changes = {makeChange(L"1234560000", {L"CTest/a", L"data/CTest/a"})};

    EXPECT_THROW(FindChangesOf(changes, L"data", L"CTest/a"), std::wstring);
    EXPECT_EQ(FindChangesOf(changes, L".", L"CTest/a").size(), 1U) << "both paths mean the same file";
}

TEST_F(ReviewChoice, RefusesUnknownNames)
{
    EXPECT_NE(GetRefusal({L"fehlt"}), L"");
    EXPECT_NE(GetRefusal({L"ABCDE"}), L"");
}

} // namespace
