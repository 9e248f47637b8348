/// Links to folders in a search.
#pragma once

#include <string>
#include <vector>

namespace Runner
{

/// Admits links that lead to folders which the search has not found otherwise.
class CLinkedFolders
{
public:
    /// `root` and the links end in a separator.
    explicit CLinkedFolders(const std::wstring& root);

    bool MayEnter(const std::wstring& link);

private:
    std::vector<std::wstring> m_found;
};

} // namespace Runner
