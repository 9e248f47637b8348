/// The links of a data directory. A place is the one name of a file or a link, as LbOs::GetCanonicalPlace gives it.
#pragma once

#include <string>
#include <vector>

namespace LuTestSuite
{

struct SLink
{
    std::wstring place;
    std::vector<std::wstring>
        chain; ///< the places that it leads through, that of the file the last; may hold one twice
};

struct SLinks
{
    std::vector<SLink> links;               ///< to files; nothing but a folder's content depends on links to folders
    std::vector<std::wstring> unreadPlaces; ///< folders and links that may hide more
};

/// Finds the links below a directory, and below the folders that links there lead to; each folder is searched once.
SLinks FindLinks(const std::wstring& directory);

} // namespace LuTestSuite
