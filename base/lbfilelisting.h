/// Lists of the files in folders, shared between callers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

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
/// second when it was read. Listings of folders whose times have no fractions of a second, as on FAT, are never
/// shared.
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

    /// The name of a rank below GetCount. Valid as long as the listing.
    virtual std::wstring_view GetName(std::uint32_t rank) const noexcept = 0;

    /// The rank of a name, compared exactly; empty if the folder has no such file.
    virtual std::optional<std::uint32_t> Find(std::wstring_view name) const noexcept = 0;

    /// The ranks of the matching files, ascending, cached for each pattern; valid as long as the listing.
    virtual std::span<const std::uint32_t> GetMatches(const LbFilePattern& pattern) const = 0;

    virtual ~LbFileListing();
};
