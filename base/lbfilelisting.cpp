#include "base/lbfilelisting.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <list>
#include <map>
#include <memory_resource>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "base/filewildcard.h"
#include "base/lbcriticalsection.h"
#include "base/listingimage.h"
#include "base/listingshare.h"
#include "base/os/directories.h"
#include "base/os/sharedmemory.h"
#include "base/pagememory.h"

namespace
{

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds c_LongestClockStep(100);

/// Much longer than a step of a clock, because isOld compares the system's clock with that of a file system.
constexpr std::chrono::seconds c_OldAge(2);

/// A unique text for the pattern: each wildcard with an end mark, another end mark, then each excluded wildcard with an
/// end mark.
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

/// The length of the common beginning of all names.
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

/// A name during sorting.
struct SSorted
{
    std::uint64_t key; ///< in the order of the names; different names may have equal keys
    std::uint32_t index;
};

/// The first characters, one byte each. Ends with the first character from U+00FF on, stored as 0xFF.
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

/// Compares keys before names: names in one folder often begin alike, and comparing two such names takes several times
/// as long as comparing their keys.
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

    /// Takes over the view, to whose memory the listing refers.
    CListing(const std::wstring& directory, LbOs::CSharedView view, const LbListingImage::SListing& shared);

    /// The result refers to this object.
    LbListingImage::SListing GetContent(const LbOs::SDirectoryStamp& stamp) const;

    /// Copies the matches of patterns if the other listing has the same names. Not thread-safe for this object.
    void CopyMatches(const CListing& other);

    std::wstring_view GetDirectory() const noexcept override { return m_directory; }
    std::uint32_t GetCount() const noexcept override { return static_cast<std::uint32_t>(m_begins.size()) - 1; }
    std::wstring_view GetName(std::uint32_t rank) const noexcept override
    {
        return m_text.substr(m_begins[rank], m_begins[rank + 1] - m_begins[rank]);
    }
    std::optional<std::uint32_t> Find(std::wstring_view name) const noexcept override;
    std::span<const std::uint32_t> GetMatches(const LbFilePattern& pattern) const override;

private:
    /// Size in bytes of all that a listing always keeps, and of the matches of one pattern.
    static std::size_t getSize(const std::wstring& directory, const SNames& names)
    {
        constexpr std::size_t c_Other = 1024;
        return (directory.size() + names.text.size()) * sizeof(wchar_t) +
               names.ends.size() * 2 * sizeof(std::uint32_t) + c_Other;
    }

    std::span<const std::uint32_t> keepMatches(std::wstring_view key, std::span<const std::uint32_t> ranks) const;

    mutable std::pmr::monotonic_buffer_resource m_memory;
    std::pmr::wstring m_directory;
    LbOs::CSharedView m_view;               ///< holds text and beginnings if another process shares them
    std::pmr::wstring m_ownText{&m_memory}; ///< otherwise, this and m_ownBegins hold them
    std::pmr::vector<std::uint32_t> m_ownBegins{&m_memory};
    std::wstring_view m_text;
    std::span<const std::uint32_t> m_begins; ///< where each name begins, then where the last one ends
    mutable std::atomic<std::uint32_t> m_lastFound = 0;
    mutable LbCriticalSection m_mutex; ///< protects the matches and, after construction, the memory
    mutable std::pmr::map<std::pmr::wstring, std::span<const std::uint32_t>, std::less<>> m_matches{&m_memory};
    mutable std::pmr::list<std::pmr::vector<std::uint32_t>> m_ownMatches{&m_memory};
};

CListing::CListing(const std::wstring& directory, const SNames& names)
    : m_memory(getSize(directory, names), &GetEternal<CPageMemory>()), m_directory(directory, &m_memory)
{
    const std::vector<SSorted> order = sortNames(names);
    m_ownText.reserve(names.text.size());
    m_ownBegins.reserve(order.size() + 1);
    for (const SSorted& name : order)
    {
        m_ownBegins.push_back(static_cast<std::uint32_t>(m_ownText.size()));
        m_ownText += names.Get(name.index);
    }
    m_ownBegins.push_back(static_cast<std::uint32_t>(m_ownText.size()));
    m_text = m_ownText;
    m_begins = m_ownBegins;
}

constexpr std::size_t c_FewPatterns = 4096; ///< bytes of memory for the matches of a few patterns

CListing::CListing(const std::wstring& directory, LbOs::CSharedView view, const LbListingImage::SListing& shared)
    : m_memory(c_FewPatterns, &GetEternal<CPageMemory>()), m_directory(directory, &m_memory), m_view(std::move(view)),
      m_text(shared.text), m_begins(shared.begins)
{
    for (const LbListingImage::SMatches& matches : shared.matches)
    {
        m_matches.try_emplace(std::pmr::wstring(matches.pattern, &m_memory), matches.ranks);
    }
}

LbListingImage::SListing CListing::GetContent(const LbOs::SDirectoryStamp& stamp) const
{
    LbListingImage::SListing content{stamp, m_text, m_begins, {}};
    const std::lock_guard lock(m_mutex);
    for (const auto& [pattern, ranks] : m_matches)
    {
        content.matches.push_back({pattern, ranks});
    }
    return content;
}

void CListing::CopyMatches(const CListing& other)
{
    if (m_text != other.m_text || !std::ranges::equal(m_begins, other.m_begins))
    {
        return;
    }
    for (const LbListingImage::SMatches& matches : other.GetContent({}).matches)
    {
        keepMatches(matches.pattern, matches.ranks);
    }
}

std::span<const std::uint32_t> CListing::keepMatches(std::wstring_view key, std::span<const std::uint32_t> ranks) const
{
    const std::pmr::vector<std::uint32_t>& kept = m_ownMatches.emplace_back(ranks.begin(), ranks.end());
    return m_matches.try_emplace(std::pmr::wstring(key, &m_memory), kept).first->second;
}

std::optional<std::uint32_t> CListing::Find(std::wstring_view name) const noexcept
{
    // A run asks for the names in ascending order, so the next name is the best guess.
    const std::uint32_t last = m_lastFound.load(std::memory_order_relaxed);
    const std::uint32_t guess = last < GetCount() && GetName(last) < name ? last + 1 : last;
    if (guess < GetCount() && GetName(guess) == name)
    {
        m_lastFound.store(guess, std::memory_order_relaxed);
        return guess;
    }
    std::uint32_t rank = 0;
    for (std::uint32_t count = GetCount(); count > 0;)
    {
        const std::uint32_t half = count / 2;
        const bool isBefore = GetName(rank + half) < name;
        rank += isBefore ? half + 1 : 0;
        count = isBefore ? count - half - 1 : half;
    }
    if (rank == GetCount() || GetName(rank) != name)
    {
        return std::nullopt;
    }
    m_lastFound.store(rank, std::memory_order_relaxed);
    return rank;
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
    return keepMatches(key, ranks);
}

using SharedListing = std::shared_ptr<const CListing>;

template<typename... T>
std::shared_ptr<CListing> makeListing(T&&... arguments)
{
    const std::pmr::polymorphic_allocator<CListing> allocator(&GetEternal<CPageMemory>());
    return std::allocate_shared<CListing>(allocator, std::forward<T>(arguments)...);
}

/// The listing that another process shares; null if no process shares this state of the folder.
SharedListing findShared(const std::wstring& directory, const LbOs::SDirectoryStamp& stamp)
{
    LbOs::CSharedView view(LbListingImage::GetName(stamp));
    const std::optional<LbListingImage::SListing> shared = LbListingImage::Read(view.GetBytes());
    return shared && shared->stamp == stamp ? makeListing(directory, std::move(view), *shared) : nullptr;
}

/// True if, by this system's clock, the folder last changed so long before `now` that each later change sets different
/// times.
bool isOld(const std::wstring& directory, const LbOs::SDirectoryStamp& stamp, std::chrono::system_clock::time_point now)
{
    const std::chrono::nanoseconds changeTime(stamp.changeTime);
    return now.time_since_epoch() - changeTime >= c_OldAge && LbOs::HasTimesOfThisSystem(directory);
}

/// A listing and the state of its folder.
struct SKept
{
    SharedListing listing;
    LbOs::SDirectoryStamp stamp{};
    Clock::time_point seenSince; ///< when the folder was first seen with this stamp
    bool isTrusted = false;      ///< every later change of the folder changes the stamp
    std::uint64_t lastUse = 0;
};

/// The listings that the process keeps.
class CListings
{
public:
    SharedListing Get(const std::wstring& directory);

    /// The kept listing, which may be out of date; an SKept without a listing if none is kept.
    SKept Find(const std::wstring& directory);

private:
    SharedListing findTrusted(const std::wstring& directory, const LbOs::SDirectoryStamp& stamp);
    SharedListing read(const std::wstring& directory, const std::optional<LbOs::SDirectoryStamp>& stamp);
    void keep(SKept kept);

    LbCriticalSection m_readMutex; ///< one thread reads at a time: the others then find its listing
    LbCriticalSection m_mutex;     ///< protects the members below
    std::pmr::unsynchronized_pool_resource m_memory{&GetEternal<CPageMemory>()};
    std::pmr::unordered_map<std::wstring_view, SKept> m_kept{&m_memory}; ///< by folder; the keys refer to the listings
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
    stamp = getStamp();
    if (SharedListing listing = stamp ? findTrusted(directory, *stamp) : nullptr)
    {
        return listing;
    }
    if (SharedListing listing = stamp ? findShared(directory, *stamp) : nullptr)
    {
        keep({listing, *stamp, Clock::now(), true});
        return listing;
    }
    return read(directory, stamp);
}

SharedListing CListings::read(const std::wstring& directory, const std::optional<LbOs::SDirectoryStamp>& stamp)
{
    constexpr std::int64_t c_CoarseStep = 10'000'000;
    const Clock::time_point now = Clock::now();
    const auto systemNow = std::chrono::system_clock::now();
    const std::shared_ptr<CListing> listing = makeListing(directory, readNames(directory));
    if (!stamp || LbOs::GetDirectoryStamp(directory) != stamp)
    {
        return listing;
    }
    const SKept former = Find(directory);
    const bool isSame = former.listing && former.stamp == *stamp;
    if (isSame)
    {
        listing->CopyMatches(*former.listing);
    }
    const Clock::time_point seenSince = isSame ? former.seenSince : now;
    const bool isTrusted = stamp->changeTime % c_CoarseStep != 0 &&
                           (now - seenSince >= c_LongestClockStep || isOld(directory, *stamp, systemNow));
    keep({listing, *stamp, seenSince, isTrusted});
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

SKept CListings::Find(const std::wstring& directory)
{
    const std::lock_guard lock(m_mutex);
    const auto kept = m_kept.find(directory);
    return kept == m_kept.end() ? SKept() : kept->second;
}

void CListings::keep(SKept kept)
{
    constexpr std::size_t c_Most = 1024;
    const std::lock_guard lock(m_mutex);
    // The key is a view into the entry's listing, so the old entry is erased instead of assigned to.
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
    const auto matches = [name](std::wstring_view wildcard) { return LbFileWildcard::Matches(name, wildcard); };
    return std::ranges::any_of(wildcards, matches) && std::ranges::none_of(excluded, matches);
}

LbFileListing::~LbFileListing() = default;

std::shared_ptr<const LbFileListing> LbFileListing::Get(const std::wstring& directory)
{
    return GetEternal<CListings>().Get(directory);
}

EListingShare LbShareListing(const std::wstring& directory, EListingUse use,
                             std::unique_ptr<LbOs::CSharedMemory>& memory)
{
    // Reading fewer files costs less than a shared block.
    constexpr std::uint32_t c_Fewest = 32;
    auto& listings = GetEternal<CListings>();
    SKept kept = listings.Find(directory);
    const bool isEarly = kept.listing && !kept.isTrusted && Clock::now() - kept.seenSince < c_LongestClockStep;
    if (use == EListingUse::Certain && !isEarly)
    {
        listings.Get(directory);
        kept = listings.Find(directory);
    }
    if (!kept.listing || kept.listing->GetCount() < c_Fewest)
    {
        return EListingShare::None;
    }
    if (!kept.isTrusted)
    {
        return use == EListingUse::Certain ? EListingShare::TooEarly : EListingShare::None;
    }
    const LbListingImage::SListing content = kept.listing->GetContent(kept.stamp);
    memory = LbOs::CSharedMemory::Create(LbListingImage::GetName(kept.stamp), LbListingImage::GetSize(content));
    if (const auto block = memory ? memory->Map(LbOs::EMemoryAccess::Write) : nullptr)
    {
        LbListingImage::Write(content, static_cast<std::byte*>(block.get()));
        return EListingShare::Made;
    }
    return EListingShare::None;
}
