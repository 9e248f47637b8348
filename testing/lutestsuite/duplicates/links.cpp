#include "testing/lutestsuite/duplicates/links.h"

#include <unordered_set>
#include <utility>

#include "base/lbpath.h"
#include "base/os/files.h"

namespace
{

using LuTestSuite::SLinks;

/// More links than any system follows in one path.
constexpr std::size_t c_LongestChain = 64;

/// The places on the path of `link`, which leads to `target`.
std::vector<std::wstring> getChain(const std::wstring& link, std::wstring target)
{
    std::vector<std::wstring> chain;
    while (!target.empty() && chain.size() < c_LongestChain)
    {
        std::wstring place = LbOs::GetCanonicalPlace(target);
        if (place.empty())
        {
            break;
        }
        target = LbOs::GetLinkTarget(place);
        chain.push_back(std::move(place));
    }
    // If the system resolves the path differently, the system's result counts too.
    std::wstring file = LbOs::GetCanonicalPath(link);
    if (!file.empty() && (chain.empty() || file != chain.back()))
    {
        chain.push_back(std::move(file));
    }
    return chain;
}

class CSearch
{
public:
    explicit CSearch(const std::wstring& directory)
    {
        addTarget(directory);
        while (!m_pending.empty())
        {
            const std::wstring folder = std::move(m_pending.back());
            m_pending.pop_back();
            search(folder);
        }
    }

    SLinks Take() { return std::move(m_result); }

private:
    void addTarget(const std::wstring& path)
    {
        const std::wstring place = LbOs::GetCanonicalPath(path);
        if (place.empty())
        {
            m_result.unreadPlaces.push_back(path);
            return;
        }
        addFolder(place);
    }

    void addFolder(const std::wstring& place)
    {
        std::wstring folder = LbPath::WithSeparator(place);
        if (m_found.insert(folder).second)
        {
            m_pending.push_back(std::move(folder));
        }
    }

    void search(const std::wstring& folder)
    {
        std::vector<std::wstring> links;
        const bool isRead = LbOs::VisitDirectory(folder, [&](const LbOs::SDirectoryEntry& entry) {
            if (entry.isDirectory)
            {
                entry.isLink ? addTarget(folder + entry.name) : addFolder(folder + entry.name);
            }
            else if (entry.isLink)
            {
                links.push_back(folder + entry.name);
            }
        });
        if (!isRead)
        {
            m_result.unreadPlaces.push_back(folder);
        }
        for (std::wstring& link : links)
        {
            addLink(std::move(link));
        }
    }

    void addLink(std::wstring place)
    {
        const std::wstring target = LbOs::GetLinkTarget(place);
        if (target.empty())
        {
            m_result.unreadPlaces.push_back(std::move(place));
            return;
        }
        // The target cannot be examined: it may be a folder with links into the data directory.
        if (LbOs::QueryEntry(place) == LbOs::EEntry::Missing && !LbOs::IsMissing(place))
        {
            m_result.unreadPlaces.push_back(std::move(place));
            return;
        }
        std::vector<std::wstring> chain = getChain(place, target);
        m_result.links.push_back({std::move(place), std::move(chain)});
    }

    SLinks m_result;
    std::vector<std::wstring> m_pending;
    std::unordered_set<std::wstring> m_found;
};

} // namespace

LuTestSuite::SLinks LuTestSuite::FindLinks(const std::wstring& directory)
{
    return CSearch(directory).Take();
}
