/// A sorted listing of a folder as one block of memory that processes share. Not for use outside of LbBase.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/os/directories.h"

namespace LbListingImage
{

/// The ranks of the files that match one pattern.
struct SMatches
{
    std::wstring_view pattern;
    std::span<const std::uint32_t> ranks;
};

/// Refers to memory of the caller, or to the block that it was read from.
struct SListing
{
    LbOs::SDirectoryStamp stamp;           ///< of the folder when it was read
    std::wstring_view text;                ///< the names, one after the other
    std::span<const std::uint32_t> begins; ///< where names begin in the text, and where the last one ends
    std::vector<SMatches> matches;
};

/// The name of the block of a folder that has this stamp.
std::wstring GetName(const LbOs::SDirectoryStamp& stamp);

std::size_t GetSize(const SListing& listing);

/// Fills a zeroed block of at least GetSize bytes. Read in another process rejects the block until it is complete.
void Write(const SListing& listing, std::byte* block);

/// Empty if the block is not complete or has another format, or if its names or ranks are out of range.
std::optional<SListing> Read(std::span<const std::byte> block);

} // namespace LbListingImage
