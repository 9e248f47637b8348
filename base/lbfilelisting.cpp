#include "base/lbfilelisting.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <memory_resource>
#include <mutex>
#include <ranges>
#include <unordered_map>
#include <vector>

#include "base/lbcriticalsection.h"
#include "base/os/directories.h"
#include "base/pagememory.h"

namespace
{

using Clock = std::chrono::steady_clock;

/// True if `name` matches `wildcard`. After a mismatch only the last "*" is extended by one character. That is enough,
/// because everything before it has matched as early as possible.
bool matchesWildcard(std::wstring_view name, std::wstring_view wildcard)
{
    std::size_t position = 0;
    std::size_t inWildcard = 0;
    std::size_t afterStar = std::wstring_view::npos;
    std::size_t takenByStar = 0;
    while (position < name.size())
    {
        if (inWildcard < wildcard.size() && wildcard[inWildcard] == L'*')
        {
            afterStar = ++inWildcard;
            takenByStar = position;
        }
        else if (inWildcard < wildcard.size() &&
                 (wildcard[inWildcard] == L'?' || wildcard[inWildcard] == name[position]))
        {
            ++inWildcard;
            ++position;
        }
        else if (afterStar != std::wstring_view::npos)
        {
            inWildcard = afterStar;
            position = ++takenByStar;
        }
        else
        {
            return false;
        }
    }
    return wildcard.find_first_not_of(L'*', inWildcard) == std::wstring_view::npos;
}

/// A unique text for the pattern: each wildcard with an end mark, then the excluded ones.
std::wstring getKey(const LbFilePattern& pattern)
{
    std::wstring key;
    for (const std::wstring_view wildcard : pattern.wildcards)
    {
        key.append(wildcard).append(1, L'\0');
    }
    key.append(1, L'\0');
    for (const std::wstring_view wildcard : pattern.excluded)
    {
        key.append(wildcard).append(1, L'\0');
    }
    return key;
}

/// Names in one text, one after the other.
struct SNames
{
    std::wstring text;
    std::vector<std::uint32_t> ends;

    std::wstring_view Get(std::uint32_t index) const
    {
        const std::uint32_t begin = index == 0 ? 0 : ends[index - 1];
        return std::wstring_view(text).substr(begin, ends[index] - begin);
    }
};

/// The length of what all names begin with.
std::size_t getCommonLength(const SNames& names)
{
    std::wstring_view common = names.ends.empty() ? std::wstring_view() : names.Get(0);
    for (std::uint32_t index = 0; index < names.ends.size(); ++index)
    {
        const auto end = std::ranges::mismatch(common, names.Get(index)).in1;
        common = common.substr(0, static_cast<std::size_t>(end - common.begin()));
    }
    return common.size();
}

/// A name as it is sorted.
struct SSorted
{
    std::uint64_t key; ///< of two names the smaller one never has the larger key
    std::uint32_t index;
};

/// The first characters, one byte each, up to the first one that needs more.
std::uint64_t getSortKey(std::wstring_view name)
{
    constexpr char32_t c_Most = 0xFF;
    std::uint64_t key = 0;
    std::size_t position = 0;
    for (bool isExact = true; position < sizeof(key) && position < name.size() && isExact; ++position)
    {
        const auto unit = static_cast<char32_t>(name[position]);
        isExact = unit < c_Most;
        key = (key << 8U) | std::min(unit, c_Most);
    }
    return position == 0 ? 0 : key << 8U * (sizeof(key) - position);
}

/// Comparing numbers takes a fraction of the time that comparing names of one folder takes, which often begin alike.
std::vector<SSorted> sortNames(const SNames& names)
{
    const std::size_t common = getCommonLength(names);
    std::vector<SSorted> order(names.ends.size());
    for (std::uint32_t index = 0; index < order.size(); ++index)
    {
        order[index] = {getSortKey(names.Get(index).substr(common)), index};
    }
    std::ranges::sort(order, [&names](const SSorted& a, const SSorted& b) {
        return a.key != b.key ? a.key < b.key : names.Get(a.index) < names.Get(b.index);
    });
    return order;
}

SNames readNames(const std::wstring& directory)
{
    SNames names;
    LbOs::VisitDirectory(directory, [&names](const LbOs::SDirectoryEntry& entry) {
        if (!entry.isDirectory)
        {
            names.text += entry.name;
            names.ends.push_back(static_cast<std::uint32_t>(names.text.size()));
        }
    });
    return names;
}

class CListing final : public LbFileListing
{
public:
    CListing(const std::wstring& directory, const SNames& names);

    std::wstring_view GetDirectory() const noexcept override { return m_directory; }
    std::uint32_t GetCount() const noexcept override { return static_cast<std::uint32_t>(m_begins.size()) - 1; }
    std::wstring_view GetName(std::uint32_t rank) const noexcept override
    {
        return std::wstring_view(m_text).substr(m_begins[rank], m_begins[rank + 1] - m_begins[rank]);
    }
    std::optional<std::uint32_t> Find(std::wstring_view name) const noexcept override;
    std::span<const std::uint32_t> GetMatches(const LbFilePattern& pattern) const override;

private:
    /// The memory for everything that is always kept, and for the matches of one pattern.
    static std::size_t getSize(const std::wstring& directory, const SNames& names)
    {
        constexpr std::size_t c_Other = 1024;
        return (directory.size() + names.text.size()) * sizeof(wchar_t) +
               names.ends.size() * 2 * sizeof(std::uint32_t) + c_Other;
    }

    mutable std::pmr::monotonic_buffer_resource m_memory;
    std::pmr::wstring m_directory;
    std::pmr::wstring m_text;
    std::pmr::vector<std::uint32_t> m_begins; ///< one more than names
    mutable std::atomic<std::uint32_t> m_lastFound = 0;
    mutable LbCriticalSection m_mutex; ///< protects the matches and, after construction, the memory
    mutable std::pmr::map<std::pmr::wstring, std::pmr::vector<std::uint32_t>, std::less<>> m_matches;
};

CListing::CListing(const std::wstring& directory, const SNames& names)
    : m_memory(getSize(directory, names), &GetEternal<CPageMemory>()), m_directory(directory, &m_memory),
      m_text(&m_memory), m_begins(&m_memory), m_matches(&m_memory)
{
    const std::vector<SSorted> order = sortNames(names);
    m_text.reserve(names.text.size());
    m_begins.reserve(order.size() + 1);
    for (const SSorted& name : order)
    {
        m_begins.push_back(static_cast<std::uint32_t>(m_text.size()));
        m_text += names.Get(name.index);
    }
    m_begins.push_back(static_cast<std::uint32_t>(m_text.size()));
}

std::optional<std::uint32_t> CListing::Find(std::wstring_view name) const noexcept
{
    // A run asks for the names in their order.
    const std::uint32_t last = m_lastFound.load(std::memory_order_relaxed);
    const std::uint32_t guess = last < GetCount() && GetName(last) < name ? last + 1 : last;
    if (guess < GetCount() && GetName(guess) == name)
    {
        m_lastFound.store(guess, std::memory_order_relaxed);
        return guess;
    }
    const auto ranks = std::views::iota(std::uint32_t{0}, GetCount());
    const auto found = std::ranges::lower_bound(ranks, name, {}, [this](std::uint32_t rank) { return GetName(rank); });
    if (found == ranks.end() || GetName(*found) != name)
    {
        return std::nullopt;
    }
    m_lastFound.store(*found, std::memory_order_relaxed);
    return *found;
}

std::span<const std::uint32_t> CListing::GetMatches(const LbFilePattern& pattern) const
{
    const std::wstring key = getKey(pattern);
    const std::lock_guard lock(m_mutex);
    if (const auto known = m_matches.find(std::wstring_view(key)); known != m_matches.end())
    {
        return known->second;
    }
    std::vector<std::uint32_t> ranks;
    for (std::uint32_t rank = 0; rank < GetCount(); ++rank)
    {
        if (pattern.Matches(GetName(rank)))
        {
            ranks.push_back(rank);
        }
    }
    return m_matches.try_emplace(std::pmr::wstring(key, &m_memory), ranks.begin(), ranks.end()).first->second;
}

using SharedListing = std::shared_ptr<const CListing>;

SharedListing readListing(const std::wstring& directory)
{
    const std::pmr::polymorphic_allocator<CListing> allocator(&GetEternal<CPageMemory>());
    return std::allocate_shared<CListing>(allocator, directory, readNames(directory));
}

/// A listing and the state of its folder.
struct SKept
{
    SharedListing listing;
    LbOs::SDirectoryStamp stamp;
    Clock::time_point seenSince; ///< the folder has shown this stamp
    bool isTrusted = false;      ///< the stamp shows every change
    std::uint64_t lastUse = 0;
};

/// The listings that the process keeps.
class CListings
{
public:
    SharedListing Get(const std::wstring& directory);

private:
    SharedListing findTrusted(const std::wstring& directory, const LbOs::SDirectoryStamp& stamp);
    Clock::time_point getSeenSince(const std::wstring& directory, const LbOs::SDirectoryStamp& stamp);
    void keep(SKept kept);

    LbCriticalSection m_readMutex; ///< one thread reads at a time: the others then find its listing
    LbCriticalSection m_mutex;     ///< protects all below
    std::pmr::unsynchronized_pool_resource m_memory{&GetEternal<CPageMemory>()};
    std::pmr::unordered_map<std::wstring_view, SKept> m_kept{&m_memory}; ///< by the folders that the listings hold
    std::uint64_t m_uses = 0;
};

SharedListing CListings::Get(const std::wstring& directory)
{
    const auto getStamp = [&directory] { return LbOs::GetDirectoryStamp(directory); };
    std::optional<LbOs::SDirectoryStamp> stamp = getStamp();
    if (SharedListing listing = stamp ? findTrusted(directory, *stamp) : nullptr)
    {
        return listing;
    }
    const std::lock_guard lock(m_readMutex);
    const Clock::time_point now = Clock::now();
    stamp = getStamp();
    if (SharedListing listing = stamp ? findTrusted(directory, *stamp) : nullptr)
    {
        return listing;
    }
    SharedListing listing = readListing(directory);
    if (stamp && getStamp() == stamp)
    {
        constexpr std::chrono::milliseconds c_LongestClockStep(100);
        constexpr std::int64_t c_CoarseStep = 10'000'000;
        const Clock::time_point seenSince = std::min(getSeenSince(directory, *stamp), now);
        const bool isTrusted = now - seenSince >= c_LongestClockStep && stamp->changeTime % c_CoarseStep != 0;
        keep({listing, *stamp, seenSince, isTrusted});
    }
    return listing;
}

SharedListing CListings::findTrusted(const std::wstring& directory, const LbOs::SDirectoryStamp& stamp)
{
    const std::lock_guard lock(m_mutex);
    const auto kept = m_kept.find(directory);
    if (kept == m_kept.end() || !kept->second.isTrusted || kept->second.stamp != stamp)
    {
        return nullptr;
    }
    kept->second.lastUse = ++m_uses;
    return kept->second.listing;
}

Clock::time_point CListings::getSeenSince(const std::wstring& directory, const LbOs::SDirectoryStamp& stamp)
{
    const std::lock_guard lock(m_mutex);
    const auto kept = m_kept.find(directory);
    return kept == m_kept.end() || kept->second.stamp != stamp ? Clock::time_point::max() : kept->second.seenSince;
}

void CListings::keep(SKept kept)
{
    constexpr std::size_t c_Most = 1024;
    const std::lock_guard lock(m_mutex);
    // The key refers to its listing, so the old entry is erased instead of assigned.
    m_kept.erase(kept.listing->GetDirectory());
    if (m_kept.size() >= c_Most)
    {
        m_kept.erase(std::ranges::min_element(m_kept, {}, [](const auto& entry) { return entry.second.lastUse; }));
    }
    kept.lastUse = ++m_uses;
    const std::wstring_view directory = kept.listing->GetDirectory();
    m_kept.emplace(directory, std::move(kept));
}

} // namespace

bool LbFilePattern::Matches(std::wstring_view name) const
{
    const auto matches = [name](std::wstring_view wildcard) { return matchesWildcard(name, wildcard); };
    return std::ranges::any_of(wildcards, matches) && std::ranges::none_of(excluded, matches);
}

LbFileListing::~LbFileListing() = default;

std::shared_ptr<const LbFileListing> LbFileListing::Get(const std::wstring& directory)
{
    return GetEternal<CListings>().Get(directory);
}
