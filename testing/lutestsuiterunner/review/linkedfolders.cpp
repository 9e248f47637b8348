#include "testing/lutestsuiterunner/review/linkedfolders.h"

#include <algorithm>

#include "base/lbpath.h"
#include "base/os/files.h"

namespace Runner
{

namespace
{

std::wstring getTarget(const std::wstring& folder)
{
    return LbPath::WithSeparator(LbOs::GetCanonicalPath(LbPath::WithoutSeparator(folder)));
}

} // namespace

CLinkedFolders::CLinkedFolders(const std::wstring& root) : m_found{getTarget(root)} {}

bool CLinkedFolders::MayEnter(const std::wstring& link)
{
    const std::wstring target = getTarget(link);
    const bool isNew = std::ranges::none_of(m_found, [&target](const std::wstring& folder) {
        return target.starts_with(folder) || folder.starts_with(target);
    });
    if (isNew)
    {
        m_found.push_back(target);
    }
    return isNew;
}

} // namespace Runner
