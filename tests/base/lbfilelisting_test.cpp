#include "base/lbfilelisting.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/os/directories.h"
#include "tests/support/places.h"
#include "tests/support/scopedfolder.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

using Listing = std::shared_ptr<const LbFileListing>;
using Names = std::vector<std::wstring>;
using Wildcards = std::vector<std::wstring_view>;

Names GetNames(const LbFileListing& listing)
{
    Names names;
    for (std::uint32_t rank = 0; rank < listing.GetCount(); ++rank)
    {
        names.emplace_back(listing.GetName(rank));
    }
    return names;
}

Names GetMatches(const LbFileListing& listing, const Wildcards& wildcards, const Wildcards& excluded = {})
{
    Names names;
    for (const std::uint32_t rank : listing.GetMatches({wildcards, excluded}))
    {
        names.emplace_back(listing.GetName(rank));
    }
    return names;
}

/// Repeats the request until the process shares a listing of the folder. The process does so only if the folder has not
/// changed for a while.
Listing WaitForSharedListing(const std::wstring& folder)
{
    Listing listing = LbFileListing::Get(folder);
    while (LbFileListing::Get(folder) != listing)
    {
        std::this_thread::yield();
        listing = LbFileListing::Get(folder);
    }
    return listing;
}

class FileListing : public testing::Test
{
protected:
    Names GetPresentNames() const { return GetNames(*LbFileListing::Get(m_folder.GetPath())); }

    ScopedFolder m_folder;
};

TEST_F(FileListing, ListsFilesInOrderAndNoFolders)
{
    m_folder.WriteFile(L"b.txt", "");
    m_folder.WriteFile(L"a.txt", "");
    m_folder.WriteFile(L"C.txt", "");
    m_folder.MakeFolder(L"folder");

    EXPECT_THAT(GetPresentNames(), ElementsAre(L"C.txt", L"a.txt", L"b.txt"));
}

TEST_F(FileListing, OrdersNamesThatBeginAlikeByCodeUnit)
{
    constexpr std::wstring_view c_Characters = L"ab\u00FE\u00FF\u0101\u65E5";
    constexpr std::size_t c_Longest = 11;
    std::mt19937 random(1);
    Names names;
    for (int count = 0; count < 300; ++count)
    {
        std::wstring end(1 + random() % c_Longest, L'a');
        end.back() = c_Characters[random() % c_Characters.size()];
        end[random() % end.size()] = c_Characters[random() % c_Characters.size()];
        names.push_back(L"common" + end);
        m_folder.WriteFile(names.back(), "");
    }
    std::ranges::sort(names);
    names.erase(std::ranges::unique(names).begin(), names.end());

    EXPECT_EQ(GetPresentNames(), names);
}

TEST_F(FileListing, OffersItsNamesAsARange)
{
    m_folder.WriteFile(L"b", "");
    m_folder.WriteFile(L"a", "");
    const LbFileNames names(LbFileListing::Get(m_folder.GetPath()));

    EXPECT_EQ(names.size(), 2U);
    EXPECT_FALSE(names.empty());
    EXPECT_EQ(names[1], L"b");
    EXPECT_THAT(Names(names), ElementsAre(L"a", L"b"));
    Names copied;
    for (const std::wstring& name : names)
    {
        copied.push_back(name);
    }
    EXPECT_EQ(copied, Names(names));
    EXPECT_NE(std::ranges::find(names, L"b"), names.end());
    EXPECT_EQ(std::ranges::find(names, L"c"), names.end());
}

TEST(FileNames, AreEmptyWithoutAListing)
{
    const LbFileNames names;

    EXPECT_TRUE(names.empty());
    EXPECT_EQ(names.begin(), names.end());
    EXPECT_EQ(names.GetListing(), nullptr);
}

TEST_F(FileListing, IsEmptyForAMissingFolder)
{
    EXPECT_EQ(LbFileListing::Get(m_folder.GetPathOf(L"missing"))->GetCount(), 0U);
    EXPECT_EQ(LbFileListing::Get(L"")->GetCount(), 0U);
}

TEST_F(FileListing, FindsExactlyTheNamesThatItHolds)
{
    for (int number = 0; number < 50; number += 2)
    {
        m_folder.WriteFile(L"file " + std::to_wstring(number), "");
    }
    const Listing listing = LbFileListing::Get(m_folder.GetPath());

    for (std::uint32_t rank = 0; rank < listing->GetCount(); ++rank)
    {
        EXPECT_EQ(listing->Find(listing->GetName(rank)), rank);
    }
    for (const wchar_t* const name : {L"", L"file", L"file 1", L"file 00", L"g", L"a"})
    {
        EXPECT_EQ(listing->Find(name), std::nullopt) << name;
    }
}

TEST_F(FileListing, ListsEachFileOfSeveralWildcardsOnceAndInOrder)
{
    for (const wchar_t* const name : {L"a.yaml", L"b.yml", L"c.txt", L"d.yaml", L"d.expected.yaml"})
    {
        m_folder.WriteFile(name, "");
    }
    const Listing listing = LbFileListing::Get(m_folder.GetPath());

    EXPECT_THAT(GetMatches(*listing, {L"*.yml", L"*.yaml", L"d*"}),
                ElementsAre(L"a.yaml", L"b.yml", L"d.expected.yaml", L"d.yaml"));
    EXPECT_THAT(GetMatches(*listing, {L"*.yml", L"*.yaml"}, {L"*.expected.*", L"a*"}),
                ElementsAre(L"b.yml", L"d.yaml"));
    EXPECT_THAT(GetMatches(*listing, {}, {}), IsEmpty());
}

/// Reference implementation: tries every length for each star.
bool MatchesPlainly(std::wstring_view name, std::wstring_view wildcard)
{
    if (wildcard.empty())
    {
        return name.empty();
    }
    const std::wstring_view rest = wildcard.substr(1);
    if (wildcard.front() == L'*')
    {
        return MatchesPlainly(name, rest) || (!name.empty() && MatchesPlainly(name.substr(1), wildcard));
    }
    const bool matchesFirst = !name.empty() && (wildcard.front() == L'?' || wildcard.front() == name.front());
    return matchesFirst && MatchesPlainly(name.substr(1), rest);
}

/// Makes a random text of up to 8 characters from `characters`.
std::wstring MakeText(std::mt19937& random, std::wstring_view characters)
{
    constexpr std::uint32_t c_Most = 8;
    std::wstring text(random() % (c_Most + 1), L' ');
    std::ranges::generate(text, [&] { return characters[random() % characters.size()]; });
    return text;
}

TEST(FilePattern, MatchesLikeTheReferenceImplementation)
{
    constexpr int c_Rounds = 20000;
    std::mt19937 random(1);
    int matches = 0;
    for (int round = 0; round < c_Rounds; ++round)
    {
        const std::wstring name = MakeText(random, L"ab");
        const std::wstring text = MakeText(random, L"ab**?");
        const Wildcards wildcards = {text};
        const bool isMatch = LbFilePattern{wildcards, {}}.Matches(name);
        ASSERT_EQ(isMatch, MatchesPlainly(name, text)) << name << L" " << text;
        matches += isMatch ? 1 : 0;
    }
    EXPECT_GT(matches, c_Rounds / 10);
}

TEST_F(FileListing, DistinguishesPatternsWithEqualConcatenation)
{
    for (const wchar_t* const name : {L"a", L"b", L"ab"})
    {
        m_folder.WriteFile(name, "");
    }
    const Listing listing = LbFileListing::Get(m_folder.GetPath());

    EXPECT_THAT(GetMatches(*listing, {L"a", L"b"}), ElementsAre(L"a", L"b"));
    EXPECT_THAT(GetMatches(*listing, {L"ab"}), ElementsAre(L"ab"));
    EXPECT_THAT(GetMatches(*listing, {L"a"}, {L"b"}), ElementsAre(L"a"));
    EXPECT_THAT(GetMatches(*listing, {L"*"}, {L"a", L"b"}), ElementsAre(L"ab"));
}

TEST_F(FileListing, ReadsAnUnchangedFolderOnce)
{
    m_folder.WriteFile(L"a.txt", "");
    const Listing listing = WaitForSharedListing(m_folder.GetPath());

    for (int count = 0; count < 100; ++count)
    {
        EXPECT_EQ(LbFileListing::Get(m_folder.GetPath()), listing);
    }
}

TEST(FileListingOfAnOldFolder, IsSharedFromItsFirstReading)
{
    // No test changes the source folders, so their listings are shared at once.
    const std::wstring folder = LbEncoding::FromUtf8(LUTESTSUITE_SOURCE_DIR) + L"/tests/base";
    if (!LbOs::HasTimesOfThisSystem(folder))
    {
        GTEST_SKIP() << "the sources are on a server, or on an unknown file system";
    }
    const Listing listing = LbFileListing::Get(folder);

    EXPECT_EQ(LbFileListing::Get(folder), listing);
}

TEST_F(FileListing, DoesNotChangeWithItsFolder)
{
    m_folder.WriteFile(L"a.txt", "");
    const Listing listing = WaitForSharedListing(m_folder.GetPath());

    m_folder.WriteFile(L"b.txt", "");

    EXPECT_THAT(GetNames(*listing), ElementsAre(L"a.txt"));
    EXPECT_THAT(GetPresentNames(), ElementsAre(L"a.txt", L"b.txt"));
}

TEST_F(FileListing, NoticesChangesInQuickSuccession)
{
    WaitForSharedListing(m_folder.GetPath());
    for (int count = 0; count < 300; ++count)
    {
        const std::wstring path = m_folder.WriteFile(L"a.txt", "");
        ASSERT_THAT(GetPresentNames(), ElementsAre(L"a.txt")) << count;
        ASSERT_TRUE(LbOs::RemoveFile(path));
        ASSERT_THAT(GetPresentNames(), IsEmpty()) << count;
    }
}

TEST_F(FileListing, NoticesAReplacedFolder)
{
    const std::wstring folder = m_folder.MakeFolder(L"data");
    m_folder.WriteFile(L"data/old.txt", "");
    const Listing old = WaitForSharedListing(folder);

    ASSERT_TRUE(LbFileSystem::RemoveTree(folder));
    EXPECT_EQ(LbFileListing::Get(folder)->GetCount(), 0U);
    m_folder.MakeFolder(L"data");
    m_folder.WriteFile(L"data/new.txt", "");

    EXPECT_THAT(GetNames(*LbFileListing::Get(folder)), ElementsAre(L"new.txt"));
    EXPECT_THAT(GetNames(*old), ElementsAre(L"old.txt"));
}

TEST_F(FileListing, IsCorrectForMoreFoldersThanTheCacheKeeps)
{
    constexpr int c_Count = 1100;
    for (int number = 0; number < c_Count; ++number)
    {
        const std::wstring name = std::to_wstring(number);
        m_folder.MakeFolder(name);
        m_folder.WriteFile(name + L"/of " + name, "");
    }
    for (int round = 0; round < 2; ++round)
    {
        for (int number = 0; number < c_Count; ++number)
        {
            const std::wstring name = std::to_wstring(number);
            ASSERT_THAT(GetNames(*LbFileListing::Get(m_folder.GetPathOf(name))), ElementsAre(L"of " + name));
        }
    }
}

TEST(FileListingThreads, SeeAllFilesCreatedBeforeTheirCall)
{
    const ScopedFolder folder;
    constexpr int c_Changes = 200;
    std::atomic<int> written = 0;
    const auto check = [&] {
        for (int present = 0; present < c_Changes; present = written.load())
        {
            const Listing listing = LbFileListing::Get(folder.GetPath());
            const std::vector<std::wstring_view> all = {L"*"};
            if (listing->GetCount() < static_cast<std::uint32_t>(present) ||
                listing->GetMatches({all, {}}).size() != listing->GetCount())
            {
                ADD_FAILURE() << listing->GetCount() << " files, expected at least " << present;
                return;
            }
        }
    };
    std::vector<std::thread> threads;
    for (int count = 0; count < 4; ++count)
    {
        threads.emplace_back(check);
    }
    for (int number = 0; number < c_Changes; ++number)
    {
        folder.WriteFile(L"file " + std::to_wstring(number), "");
        written = number + 1;
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
}

} // namespace
