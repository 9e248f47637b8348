#include "base/listingimage.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <type_traits>

#include "base/lbformat.h"

namespace LbListingImage
{

namespace
{

/// Identifies the format, including the size of characters, which differs between platforms.
constexpr std::uint64_t c_Mark = 0x4C62'4C69'7374'0100 + sizeof(wchar_t);

/// The beginnings of the names, their text, and each pattern with its ranks follow the header.
struct SHeader
{
    std::atomic<std::uint64_t> mark; ///< 0 until the block is complete
    LbOs::SDirectoryStamp stamp;
    std::uint64_t begins;
    std::uint64_t characters;
    std::uint64_t patterns;
};

struct SPatternHeader
{
    std::uint64_t characters;
    std::uint64_t ranks;
};

static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

constexpr std::size_t toAligned(std::size_t size)
{
    constexpr std::size_t c_Alignment = 8;
    return (size + c_Alignment - 1) / c_Alignment * c_Alignment;
}

/// Copies items into the block. Without a block it only adds up their sizes.
class CWriter
{
public:
    explicit CWriter(std::byte* block) : m_block(block) {}

    template<typename Items>
    void Put(const Items& items)
    {
        const std::size_t size = items.size() * sizeof(*items.data());
        if (m_block != nullptr && size != 0)
        {
            std::memcpy(m_block + m_size, items.data(), size);
        }
        m_size += toAligned(size);
    }

    std::size_t GetSize() const { return m_size; }

private:
    std::byte* m_block;
    std::size_t m_size = toAligned(sizeof(SHeader));
};

class CReader
{
public:
    explicit CReader(std::span<const std::byte> bytes) : m_left(bytes) {}

    /// Empty if the block is too small.
    template<typename Item>
    std::span<const Item> Take(std::uint64_t count)
    {
        m_isBroken =
            m_isBroken || count > m_left.size() / sizeof(Item) || toAligned(count * sizeof(Item)) > m_left.size();
        if (m_isBroken)
        {
            return {};
        }
        const std::span items(reinterpret_cast<const Item*>(m_left.data()), count);
        m_left = m_left.subspan(toAligned(items.size_bytes()));
        return items;
    }

    std::wstring_view TakeText(std::uint64_t characters)
    {
        const std::span text = Take<wchar_t>(characters);
        return {text.data(), text.size()};
    }

    bool IsBroken() const { return m_isBroken; }

private:
    std::span<const std::byte> m_left;
    bool m_isBroken = false;
};

/// Writes what follows the header, or nothing if `block` is null. Returns the size of the whole block.
std::size_t write(const SListing& listing, std::byte* block)
{
    CWriter writer(block);
    writer.Put(listing.begins);
    writer.Put(listing.text);
    for (const SMatches& matches : listing.matches)
    {
        const SPatternHeader header = {matches.pattern.size(), matches.ranks.size()};
        writer.Put(std::span(&header, 1));
        writer.Put(matches.pattern);
        writer.Put(matches.ranks);
    }
    return writer.GetSize();
}

std::vector<SMatches> takeMatches(CReader& reader, std::uint64_t patterns)
{
    std::vector<SMatches> matches;
    for (std::uint64_t pattern = 0; pattern < patterns && !reader.IsBroken(); ++pattern)
    {
        const std::span<const SPatternHeader> header = reader.Take<SPatternHeader>(1);
        if (!header.empty())
        {
            const std::wstring_view text = reader.TakeText(header[0].characters);
            matches.push_back({text, reader.Take<std::uint32_t>(header[0].ranks)});
        }
    }
    return matches;
}

/// True if each name lies within the text.
bool areBeginsValid(const SListing& listing)
{
    return !listing.begins.empty() && std::ranges::is_sorted(listing.begins) &&
           listing.begins.back() == listing.text.size();
}

/// True if a name exists for each rank. Precondition: areBeginsValid.
bool areRanksValid(const SListing& listing)
{
    return std::ranges::all_of(listing.matches, [&listing](const SMatches& matches) {
        return matches.ranks.empty() ||
               (std::ranges::is_sorted(matches.ranks) && matches.ranks.back() < listing.begins.size() - 1);
    });
}

} // namespace

std::wstring GetName(const LbOs::SDirectoryStamp& stamp)
{
    return LbFormat(L"Listing-%llx-%llx-%llx-%llx", stamp.identity.volume, stamp.identity.number,
                    static_cast<std::uint64_t>(stamp.modificationTime), static_cast<std::uint64_t>(stamp.changeTime));
}

std::size_t GetSize(const SListing& listing)
{
    return write(listing, nullptr);
}

void Write(const SListing& listing, std::byte* block)
{
    write(listing, block);
    auto& header = *reinterpret_cast<SHeader*>(block);
    header.stamp = listing.stamp;
    header.begins = listing.begins.size();
    header.characters = listing.text.size();
    header.patterns = listing.matches.size();
    header.mark.store(c_Mark, std::memory_order_release);
}

std::optional<SListing> Read(std::span<const std::byte> block)
{
    const auto* const header = reinterpret_cast<const SHeader*>(block.data());
    if (block.size() < toAligned(sizeof(SHeader)) || header->mark.load(std::memory_order_acquire) != c_Mark)
    {
        return std::nullopt;
    }
    CReader reader(block.subspan(toAligned(sizeof(SHeader))));
    SListing listing{header->stamp, {}, {}, {}};
    listing.begins = reader.Take<std::uint32_t>(header->begins);
    listing.text = reader.TakeText(header->characters);
    listing.matches = takeMatches(reader, header->patterns);
    const bool isValid = !reader.IsBroken() && areBeginsValid(listing) && areRanksValid(listing);
    return isValid ? std::optional(std::move(listing)) : std::nullopt;
}

} // namespace LbListingImage
