#include "base/listingshare.h"

#include <chrono>
#include <cstddef>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbfilelisting.h"
#include "base/lbpath.h"
#include "base/listingimage.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LbListingImage::SListing;

/// A listing of the names "a", "bc" and "", with the matches of two patterns.
class ListingImage : public testing::Test
{
protected:
    static std::vector<std::byte> WriteListing(const SListing& listing)
    {
        std::vector<std::byte> block(LbListingImage::GetSize(listing));
        LbListingImage::Write(listing, block.data());
        return block;
    }

    std::vector<std::byte> Write() const { return WriteListing(m_listing); }

    const std::vector<std::uint32_t> m_begins = {0, 1, 3, 3};
    const std::vector<std::uint32_t> m_ranks = {0, 2};
    const SListing m_listing{{{1, 2}, 3, 4}, L"abc", m_begins, {{L"*", m_ranks}, {L"none", {}}}};
};

TEST_F(ListingImage, IsReadAsItWasWritten)
{
    const std::vector<std::byte> block = Write();
    const std::optional<SListing> read = LbListingImage::Read(block);

    ASSERT_TRUE(read);
    EXPECT_TRUE(read->stamp == m_listing.stamp);
    EXPECT_EQ(read->text, L"abc");
    EXPECT_EQ(std::vector(read->begins.begin(), read->begins.end()), m_begins);
    ASSERT_EQ(read->matches.size(), 2U);
    EXPECT_EQ(read->matches[0].pattern, L"*");
    EXPECT_EQ(std::vector(read->matches[0].ranks.begin(), read->matches[0].ranks.end()), m_ranks);
    EXPECT_EQ(read->matches[1].pattern, L"none");
    EXPECT_TRUE(read->matches[1].ranks.empty());
}

TEST_F(ListingImage, IsNotReadFromATruncatedBlock)
{
    const std::vector<std::byte> block = Write();
    for (std::size_t size = 0; size < block.size(); ++size)
    {
        EXPECT_FALSE(LbListingImage::Read(std::span(block).first(size))) << size;
    }
}

TEST_F(ListingImage, IsNotReadBeforeItIsComplete)
{
    std::vector<std::byte> block = Write();
    std::memset(block.data(), 0, 1);

    EXPECT_FALSE(LbListingImage::Read(block));
}

TEST_F(ListingImage, IsNotReadIfANameLiesOutsideTheText)
{
    for (const std::vector<std::uint32_t>& begins : {std::vector<std::uint32_t>{0, 4, 3, 3}, {2, 1, 3, 3}, {0, 3, 2}})
    {
        SListing damaged = m_listing;
        damaged.begins = begins;
        EXPECT_FALSE(LbListingImage::Read(WriteListing(damaged))) << testing::PrintToString(begins);
    }
}

TEST_F(ListingImage, IsNotReadIfAMatchRefersToNoName)
{
    for (const std::vector<std::uint32_t>& ranks : {std::vector<std::uint32_t>{0, 3}, {3, 1}, {0xFFFF'FFFF}})
    {
        SListing damaged = m_listing;
        damaged.matches[0].ranks = ranks;
        EXPECT_FALSE(LbListingImage::Read(WriteListing(damaged))) << testing::PrintToString(ranks);
    }
}

/// Flips each bit in turn: Read either refuses the block or returns only data within it.
TEST_F(ListingImage, IsRefusedOrSafeToUseAfterAnyDamage)
{
    const std::vector<std::byte> whole = Write();
    std::size_t readCount = 0;
    for (std::size_t place = 0; place < whole.size() * 8; ++place)
    {
        std::vector<std::byte> block = whole;
        block[place / 8] ^= std::byte{1} << (place % 8);
        const std::optional<SListing> read = LbListingImage::Read(block);
        if (!read)
        {
            continue;
        }
        ++readCount;
        ASSERT_GE(read->begins.size(), 1U);
        for (std::size_t rank = 0; rank + 1 < read->begins.size(); ++rank)
        {
            ASSERT_LE(read->begins[rank], read->begins[rank + 1]) << place;
        }
        ASSERT_LE(read->begins.back(), read->text.size()) << place;
        for (const LbListingImage::SMatches& matches : read->matches)
        {
            for (const std::uint32_t rank : matches.ranks)
            {
                ASSERT_LT(rank, read->begins.size() - 1) << place;
            }
        }
    }
    // Read cannot notice damaged texts and stamps, so it accepts some of the blocks.
    EXPECT_GT(readCount, 0U);
}

/// A folder with many files.
class ListingShare : public testing::Test
{
protected:
    ListingShare()
    {
        for (int number = 0; number < 100; ++number)
        {
            m_folder.WriteFile(std::to_wstring(number), "");
        }
    }

    /// Shares the listing as soon as the folder has not changed for a while.
    EListingShare Share()
    {
        EListingShare share = EListingShare::TooEarly;
        while (share == EListingShare::TooEarly)
        {
            share = LbShareListing(m_folder.GetPath(), EListingUse::Certain, m_memory);
            std::this_thread::yield();
        }
        return share;
    }

    ScopedFolder m_folder;
    std::unique_ptr<LbOs::CSharedMemory> m_memory;
};

TEST_F(ListingShare, HasTheNamesAndMatchesOfTheFolder)
{
    const std::wstring_view wildcard = L"7*";
    LbFileListing::Get(m_folder.GetPath())->GetMatches({{&wildcard, 1}, {}});
    ASSERT_EQ(Share(), EListingShare::Made);
    const auto stamp = LbOs::GetDirectoryStamp(m_folder.GetPath());
    const LbOs::CSharedView view(LbListingImage::GetName(stamp.value()));
    const std::optional<SListing> listing = LbListingImage::Read(view.GetBytes());

    ASSERT_TRUE(listing);
    EXPECT_EQ(listing->begins.size(), 101U);
    EXPECT_EQ(listing->text.substr(0, 5), L"01101");
    ASSERT_EQ(listing->matches.size(), 1U);
    EXPECT_EQ(listing->matches[0].ranks.size(), 11U);
}

TEST_F(ListingShare, IsFoundUnderAnotherPathOfTheFolder)
{
    ASSERT_EQ(Share(), EListingShare::Made);
    const std::wstring path = LbPath::WithoutSeparator(m_folder.GetPath());
    const auto listing = LbFileListing::Get(path);

    // If this process had read the folder itself, the second call would return another listing.
    EXPECT_EQ(LbFileListing::Get(path), listing);
    EXPECT_EQ(listing->GetCount(), 100U);
    EXPECT_EQ(listing->GetName(1), L"1");
    EXPECT_EQ(listing->Find(L"99"), 99U);
}

TEST_F(ListingShare, IsNotUsedAfterTheFolderHasChanged)
{
    ASSERT_EQ(Share(), EListingShare::Made);
    m_folder.WriteFile(L"new", "");

    EXPECT_EQ(LbFileListing::Get(LbPath::WithoutSeparator(m_folder.GetPath()))->GetCount(), 101U);
}

TEST_F(ListingShare, IsMadeForAPossibleUseOnlyIfTheProcessKeepsAListing)
{
    // The process keeps no listing yet. The first one that it reads may miss a change, because the folder has just been
    // written.
    EXPECT_EQ(LbShareListing(m_folder.GetPath(), EListingUse::Possible, m_memory), EListingShare::None);
    LbFileListing::Get(m_folder.GetPath());
    // A listing read now would notice each change, but a possible use must not cause reading.
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    EXPECT_EQ(LbShareListing(m_folder.GetPath(), EListingUse::Possible, m_memory), EListingShare::None);
    EXPECT_EQ(m_memory, nullptr);

    ASSERT_EQ(Share(), EListingShare::Made);
    m_memory.reset();
    EXPECT_EQ(LbShareListing(m_folder.GetPath(), EListingUse::Possible, m_memory), EListingShare::Made);
}

TEST_F(ListingShare, IsNotMadeForFewFiles)
{
    const ScopedFolder folder;
    folder.WriteFile(L"a", "");

    EXPECT_EQ(LbShareListing(folder.GetPath(), EListingUse::Certain, m_memory), EListingShare::None);
    EXPECT_EQ(LbShareListing(folder.GetPathOf(L"missing/"), EListingUse::Certain, m_memory), EListingShare::None);
    EXPECT_EQ(m_memory, nullptr);
}

} // namespace
