/// Links to folders in a search.
#pragma once

#include <string>
#include <vector>

namespace Runner
{

/// Admits links whose targets neither contain nor are inside a folder that the search covers already.
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
