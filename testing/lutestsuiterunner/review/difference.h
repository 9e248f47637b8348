/// Differences of two texts or byte sequences.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Runner
{

/// Neighbouring lines that differ, without their line ends; of bytes one "line" each.
struct SHunk
{
    std::size_t firstRemoved; ///< number of the first removed line, or of the line before which lines were added
    std::size_t firstAdded;
    std::vector<std::string_view> removed;
    std::vector<std::string_view> added;
};

struct SDifference
{
    bool isBinary = false; ///< one of both has a zero byte
    std::vector<SHunk> hunks;
};

/// The differences of `received` from `reference`, in order; their texts refer to the arguments. Line ends "\r\n" count
/// as "\n" unless nothing else differs. If there are very many differences, one hunk covers everything from the first
/// to the last one.
SDifference FindDifference(std::string_view reference, std::string_view received);

/// A key of the change that does not depend on where and how often it occurs: equal for files with the same change.
std::string GetChangeKey(const SDifference& difference);

} // namespace Runner
