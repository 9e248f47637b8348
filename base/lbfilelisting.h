/// Lists of the files in folders, shared between callers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/inoncopyable.h"
#include "base/lbexport.h"

/// Selects files that match one of the wildcards and none of the excluded ones. "*" stands for any characters, "?" for
/// one; all other characters are compared exactly. Refers to texts of the caller.
struct LbFilePattern
{
    std::span<const std::wstring_view> wildcards;
    std::span<const std::wstring_view> excluded;

    /// Takes time proportional to the length of the name times the total length of the wildcards.
    LB_API bool Matches(std::wstring_view name) const;
};

/// The names of the files (not directories) of a folder at one moment, ordered by code unit. Immutable; callable from
/// any thread.
///
/// The process keeps the listings of the 1024 folders requested last. A later request gets a kept listing if the
/// identity and the times of the folder are unchanged; otherwise it reads the folder again. So a listing reflects every
/// file that was added, removed or renamed before the request.
///
/// The clock of a file system advances in steps, so a change that immediately follows another one may leave the times
/// as they are. Therefore a listing is kept in only two cases. Either the folder already had these times a tenth of a
/// second before it was read. Or the folder is on a file system of this machine and, by the system's clock, last
/// changed at least two seconds before it was read. A listing is never kept if the change time is a multiple of 10 ms,
/// as on FAT, because the clock of such a file system may advance in larger steps.
///
/// Listings are not on the heap, so that they do not count as heap growth of the current case.
class LB_API LbFileListing : public INonCopyable
{
public:
    /// The current files of a folder; empty if it cannot be read.
    static std::shared_ptr<const LbFileListing> Get(const std::wstring& directory);

    /// The folder as passed to Get.
    virtual std::wstring_view GetDirectory() const noexcept = 0;

    virtual std::uint32_t GetCount() const noexcept = 0;

    /// The name at a rank below GetCount. Valid as long as the listing.
    virtual std::wstring_view GetName(std::uint32_t rank) const noexcept = 0;

    /// The rank of a name, compared exactly; empty if the folder has no such file.
    virtual std::optional<std::uint32_t> Find(std::wstring_view name) const noexcept = 0;

    /// The ranks of the matching files, ascending, cached for each pattern; valid as long as the listing.
    virtual std::span<const std::uint32_t> GetMatches(const LbFilePattern& pattern) const = 0;

    virtual ~LbFileListing();
};

/// A constant range of the names of a listing, in the order of the listing. Keeps the listing and creates a text only
/// for each name that is read, so creating or copying a range costs the same for any number of files.
class LbFileNames
{
public:
    /// Returns names by value. Valid as long as the listing.
    class Iterator
    {
    public:
        using iterator_category = std::input_iterator_tag;
        using iterator_concept = std::forward_iterator_tag;
        using value_type = std::wstring;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = std::wstring;

        Iterator() = default;
        Iterator(const LbFileListing* listing, std::uint32_t rank) noexcept : m_listing(listing), m_rank(rank) {}

        std::wstring operator*() const { return std::wstring(m_listing->GetName(m_rank)); }

        Iterator& operator++() noexcept
        {
            ++m_rank;
            return *this;
        }

        Iterator operator++(int) noexcept { return std::exchange(*this, Iterator(m_listing, m_rank + 1)); }

        bool operator==(const Iterator& other) const noexcept { return m_rank == other.m_rank; }

    private:
        const LbFileListing* m_listing = nullptr;
        std::uint32_t m_rank = 0;
    };

    /// An empty range without a listing.
    LbFileNames() = default;

    explicit LbFileNames(std::shared_ptr<const LbFileListing> listing) noexcept : m_listing(std::move(listing)) {}

    std::size_t size() const noexcept { return m_listing ? m_listing->GetCount() : 0; }
    bool empty() const noexcept { return size() == 0; }

    /// The index must be below size().
    std::wstring operator[](std::size_t index) const
    {
        return std::wstring(m_listing->GetName(static_cast<std::uint32_t>(index)));
    }

    /// Iterators are valid as long as the listing.
    Iterator begin() const noexcept { return {m_listing.get(), 0}; }
    Iterator end() const noexcept { return {m_listing.get(), static_cast<std::uint32_t>(size())}; }

    /// A copy of all names.
    operator std::vector<std::wstring>() const { return {begin(), end()}; }

    const std::shared_ptr<const LbFileListing>& GetListing() const noexcept { return m_listing; }

private:
    std::shared_ptr<const LbFileListing> m_listing;
};
