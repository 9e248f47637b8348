#include "base/subtestsearch.h"

#include <algorithm>
#include <array>
#include <functional>
#include <mutex>
#include <span>
#include <unordered_map>

#include "base/lbcriticalsection.h"
#include "base/pagememory.h"

namespace
{

using LbSubtestSearch::SSubtests;

/// The hash of a name, or of a class with its directory. A collision makes a search slower, but not wrong, because each
/// answer is checked.
using Hash = std::size_t;

/// Stores, for each class and directory, the hashes of all sub-test names that have been read so far, beginning with
/// index 0.
class CKnownNames
{
public:
    struct SAnswer
    {
        std::optional<std::uint32_t> subtest;
        std::uint32_t count = 0; ///< number of known names
        bool areAll = false;     ///< true if the object's listing and count show that the object has no other names
    };

    SAnswer Find(Hash owner, Hash name, const SSubtests& subtests) const
    {
        const std::lock_guard lock(m_mutex);
        const auto known = m_known.find(owner);
        if (known == m_known.end())
        {
            return {};
        }
        const SOwner& names = known->second;
        const auto subtest = names.subtests.find(name);
        return {subtest == names.subtests.end() ? std::nullopt : std::optional(subtest->second), names.count,
                names.completeFor && names.completeFor == subtests.listing && names.count == subtests.count};
    }

    std::optional<std::uint32_t> Find(Hash owner, Hash name) const
    {
        const std::lock_guard lock(m_mutex);
        const auto known = m_known.find(owner);
        if (known == m_known.end())
        {
            return std::nullopt;
        }
        const auto subtest = known->second.subtests.find(name);
        return subtest == known->second.subtests.end() ? std::nullopt : std::optional(subtest->second);
    }

    /// Adds the names of the sub-tests from `first` on. Ignores them if the names before them are no longer known.
    void Append(Hash owner, std::uint32_t first, std::span<const Hash> names)
    {
        const std::lock_guard lock(m_mutex);
        SOwner& known = m_known.try_emplace(owner, &m_memory).first->second;
        if (first > known.count)
        {
            return;
        }
        for (const Hash name : names)
        {
            const auto [entry, isNew] = known.subtests.try_emplace(name, first);
            entry->second = std::min(entry->second, first);
            ++first;
        }
        known.count = std::max(known.count, first);
    }

    /// Forgets the names of the class. Returns a number for SetComplete that identifies the names known from now on.
    std::uint64_t Forget(Hash owner)
    {
        const std::lock_guard lock(m_mutex);
        SOwner& known = m_known.try_emplace(owner, &m_memory).first->second;
        known.subtests.clear();
        known.count = 0;
        known.completeFor.reset();
        return ++known.number;
    }

    /// Records that all names of an object with this listing have been appended since Forget returned `number`.
    void SetComplete(Hash owner, std::uint64_t number, const SSubtests& subtests)
    {
        const std::lock_guard lock(m_mutex);
        SOwner& known = m_known.at(owner);
        if (known.number == number && known.count == subtests.count)
        {
            known.completeFor = subtests.listing;
        }
    }

private:
    struct SOwner
    {
        explicit SOwner(std::pmr::memory_resource* memory) : subtests(memory) {}

        std::pmr::unordered_map<Hash, std::uint32_t> subtests;
        std::uint32_t count = 0;
        std::uint64_t number = 0;
        std::shared_ptr<const LbFileListing> completeFor;
    };

    mutable LbCriticalSection m_mutex;
    std::pmr::unsynchronized_pool_resource m_memory{&GetEternal<CPageMemory>()};
    std::pmr::unordered_map<Hash, SOwner> m_known{&m_memory};
};

/// Passes hashes of names to CKnownNames in groups, so that threads seldom wait for each other.
class CRecorder
{
public:
    CRecorder(Hash owner, std::uint32_t first) : m_owner(owner), m_first(first) {}
    CRecorder(const CRecorder&) = delete;
    CRecorder& operator=(const CRecorder&) = delete;
    ~CRecorder() { flush(); }

    void Add(Hash name)
    {
        m_names[m_count++] = name;
        if (m_count == m_names.size())
        {
            flush();
        }
    }

private:
    /// If memory is short, the names are not stored.
    void flush() noexcept
    try
    {
        GetEternal<CKnownNames>().Append(m_owner, m_first, std::span(m_names).first(m_count));
        m_first += static_cast<std::uint32_t>(m_count);
        m_count = 0;
    }
    catch (const std::bad_alloc&)
    {
        m_count = 0;
    }

    Hash m_owner;
    std::uint32_t m_first;
    std::array<Hash, 64> m_names{};
    std::size_t m_count = 0;
};

Hash getHash(std::wstring_view text)
{
    return std::hash<std::wstring_view>()(text);
}

Hash getOwner(const std::type_info& type, const std::wstring& directory)
{
    constexpr Hash c_Factor = 0x9E3779B97F4A7C15;
    return type.hash_code() * c_Factor + getHash(directory);
}

bool isNamed(const SSubtests& subtests, std::optional<std::uint32_t> subtest, std::wstring_view name)
{
    return subtest && *subtest < subtests.count && subtests.getName(*subtest) == name;
}

std::optional<std::uint32_t> searchFrom(std::uint32_t first, const SSubtests& subtests, Hash owner,
                                        std::wstring_view name)
{
    CRecorder recorder(owner, first);
    for (std::uint32_t subtest = first; subtest < subtests.count; ++subtest)
    {
        const std::wstring each = subtests.getName(subtest);
        recorder.Add(getHash(each));
        if (each == name)
        {
            return subtest;
        }
    }
    return std::nullopt;
}

} // namespace

void LbSubtestSearch::Remember(const std::type_info& type, const std::wstring& directory, std::uint32_t count,
                               const std::function<const std::wstring&(std::uint32_t)>& getName)
{
    const Hash owner = getOwner(type, directory);
    GetEternal<CKnownNames>().Forget(owner);
    CRecorder recorder(owner, 0);
    for (std::uint32_t subtest = 0; subtest < count; ++subtest)
    {
        recorder.Add(getHash(getName(subtest)));
    }
}

std::optional<std::uint32_t> LbSubtestSearch::FindRemembered(const std::type_info& type, const std::wstring& directory,
                                                             std::wstring_view name)
{
    return GetEternal<CKnownNames>().Find(getOwner(type, directory), getHash(name));
}

std::optional<std::uint32_t> LbSubtestSearch::Find(const SSubtests& subtests, std::wstring_view name)
{
    const Hash owner = getOwner(subtests.type, subtests.directory);
    auto& names = GetEternal<CKnownNames>();
    const CKnownNames::SAnswer known = names.Find(owner, getHash(name), subtests);
    if (isNamed(subtests, known.subtest, name))
    {
        return known.subtest;
    }
    if (!known.subtest && known.areAll)
    {
        return std::nullopt;
    }
    if (isNamed(subtests, subtests.likely, name))
    {
        return subtests.likely;
    }
    if (known.count == 0)
    {
        return searchFrom(0, subtests, owner, name);
    }
    if (const std::optional<std::uint32_t> found = searchFrom(known.count, subtests, owner, name))
    {
        return found;
    }
    // The sub-test has another index than before, or it does not exist.
    const std::uint64_t number = names.Forget(owner);
    const std::optional<std::uint32_t> found = searchFrom(0, subtests, owner, name);
    if (!found)
    {
        names.SetComplete(owner, number, subtests);
    }
    return found;
}
