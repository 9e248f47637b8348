/// The links of a data directory. A place is the unique name of a file or a link, as returned by
/// LbOs::GetCanonicalPlace.
#pragma once

#include <string>
#include <vector>

namespace LuTestSuite
{

struct SLink
{
    std::wstring place;
    std::vector<std::wstring> chain; ///< the places on the link's path, the file's place last; may contain duplicates
};

struct SLinks
{
    std::vector<SLink> links;               ///< links to files; links to folders are followed instead
    std::vector<std::wstring> unreadPlaces; ///< folders and links that may hide more links
};

/// Finds the links below a directory, and below the folders to which these links lead; searches each folder once.
SLinks FindLinks(const std::wstring& directory);

} // namespace LuTestSuite
