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
    std::unordered_map<std::wstring, std::size_t> m_counts;                   ///< at least 1
    std::map<LbOs::SFileIdentity, std::unordered_set<std::wstring>> m_places; ///< those that were ever added
};

} // namespace LuTestSuite
