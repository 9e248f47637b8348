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

/// Selects files that match a wildcard and no exclusion. "*" stands for any characters, "?" for one; everything else is
/// exact. Refers to texts of the caller.
struct LbFilePattern
{
    std::span<const std::wstring_view> wildcards;
    std::span<const std::wstring_view> excluded;

    /// Takes time proportional to the name's length times that of the wildcards.
    LB_API bool Matches(std::wstring_view name) const;
};

/// The names of the files (not directories) of a folder at one moment, ordered by code unit. Never changes; any thread.
///
/// The process keeps the listings of the last few folders and shares them. Each request checks identity and times of
/// the folder, and reads it again if they have changed: a file that was added, removed or renamed before the request is
/// never missed. The clock of a file system advances in steps, so a change that immediately follows another one may not
/// change the times. A listing is therefore shared only if the folder had had the same times for at least a tenth of a
/// second when it was read, or, on a file system of this machine, if its last change was at least two seconds earlier
/// by the system's clock. Listings of folders whose times have no fractions of a second, as on FAT, are never shared.
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

/// The names of a listing as a constant range of texts, in its order. Keeps the listing and creates each text when it
/// is read, so its cost does not depend on the number of files.
class LbFileNames
{
public:
    /// Returns names by value. Valid as long as its range.
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

    /// No names, and no listing.
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
