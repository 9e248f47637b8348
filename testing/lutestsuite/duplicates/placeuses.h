/// The places that must stay.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "base/os/files.h"

namespace LuTestSuite
{

/// Counts how often places are needed, which are names as LbOs::GetCanonicalPlace gives them. One entry of a folder may
/// have several of them all the same: where a folder is mounted twice, or the file system takes letters of both cases.
class CPlaceUses
{
public:
    void Add(const std::wstring& place);
    void Remove(const std::wstring& place);

    /// True when the entry at `place` is needed by whatever name, also when that cannot be told. A hard link is an
    /// entry of its own: it is not needed because another name of its file is.
    bool Has(const std::wstring& place) const;

private:
    /// As it is written, whatever else the file system would take for it.
    bool isListed(const std::wstring& folder, const std::wstring& name) const;

    /// Whether two names of one file that has several are hard links. The first is as its folder lists it.
    bool areTwoEntries(const std::wstring& place, const std::wstring& otherPlace) const;

    std::unordered_map<std::wstring, std::size_t> m_counts;                   ///< at least 1
    std::map<LbOs::SFileIdentity, std::unordered_set<std::wstring>> m_places; ///< those that were ever added
    /// What folders of needed places list, once it was asked for: these are not among what goes.
    mutable std::unordered_map<std::wstring, std::unordered_set<std::wstring>> m_listings;
};

} // namespace LuTestSuite
