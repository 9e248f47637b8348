/// The places that must not be deleted.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "base/os/files.h"

namespace LuTestSuite
{

/// Counts how often each place, as returned by LbOs::GetCanonicalPlace, is needed. One folder entry may still have
/// several places: if a folder is mounted twice, or if the file system ignores letter case.
class CPlaceUses
{
public:
    void Add(const std::wstring& place);
    void Remove(const std::wstring& place);

    /// True if the entry at `place` is needed under any name, or if that is unknown. A hard link is an entry of its
    /// own: it may be unneeded although another name of the same file is needed.
    bool Has(const std::wstring& place) const;

private:
    /// True if the folder lists exactly this name. The file system may treat other spellings as equal.
    bool isListed(const std::wstring& folder, const std::wstring& name) const;

    /// True if the two places of a file are different entries (hard links), not two names of one entry. `place` is
    /// spelled as its folder lists it.
    bool areTwoEntries(const std::wstring& place, const std::wstring& otherPlace) const;

    std::unordered_map<std::wstring, std::size_t> m_counts;                   ///< at least 1
    std::map<LbOs::SFileIdentity, std::unordered_set<std::wstring>> m_places; ///< all that were ever added
    /// The names in the folders of needed places, read on first use. Needed entries are never deleted, so their names
    /// stay valid.
    mutable std::unordered_map<std::wstring, std::unordered_set<std::wstring>> m_listings;
};

} // namespace LuTestSuite
