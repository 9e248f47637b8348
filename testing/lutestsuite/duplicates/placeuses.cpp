#include "testing/lutestsuite/duplicates/placeuses.h"

#include <algorithm>
#include <optional>

#include "base/lbpath.h"

namespace LuTestSuite
{

bool CPlaceUses::isListed(const std::wstring& folder, const std::wstring& name) const
{
    const auto [listing, isNew] = m_listings.try_emplace(folder);
    if (isNew)
    {
        LbOs::VisitDirectory(
            folder, [&names = listing->second](const LbOs::SDirectoryEntry& entry) { names.insert(entry.name); });
    }
    return listing->second.contains(name);
}

bool CPlaceUses::areTwoEntries(const std::wstring& place, const std::wstring& otherPlace) const
{
    const std::wstring otherFolder = LbPath::GetParent(otherPlace);
    const std::optional<LbOs::SFileStatus> folder = LbOs::GetFileStatus(LbPath::GetParent(place));
    const std::optional<LbOs::SFileStatus> other = LbOs::GetFileStatus(otherFolder);
    if (!folder || !other)
    {
        return false;
    }
    const std::wstring otherName = LbPath::GetLastComponent(otherPlace);
    return folder->identity != other->identity ||
           (LbPath::GetLastComponent(place) != otherName && isListed(otherFolder, otherName));
}

void CPlaceUses::Add(const std::wstring& place)
{
    if (++m_counts[place] > 1)
    {
        return;
    }
    if (const std::optional<LbOs::SFileStatus> status = LbOs::GetPlaceStatus(place))
    {
        m_places[status->identity].insert(place);
    }
}

void CPlaceUses::Remove(const std::wstring& place)
{
    const auto count = m_counts.find(place);
    if (count != m_counts.end() && --count->second == 0)
    {
        m_counts.erase(count);
    }
}

bool CPlaceUses::Has(const std::wstring& place) const
{
    const std::optional<LbOs::SFileStatus> status = LbOs::GetPlaceStatus(place);
    if (!status || m_counts.contains(place))
    {
        return true;
    }
    const auto places = m_places.find(status->identity);
    return places != m_places.end() && std::ranges::any_of(places->second, [&](const std::wstring& used) {
               return m_counts.contains(used) && !(status->hasSeveralNames && areTwoEntries(place, used));
           });
}

} // namespace LuTestSuite
