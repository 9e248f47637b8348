/// Differences of two texts or byte sequences.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Runner
{

/// Neighbouring lines that differ, without their line ends. In binary data, the removed and the added bytes are one
/// "line" each.
struct SHunk
{
    std::size_t firstRemoved; ///< number of the first removed line, or of the line before which lines were added
    std::size_t firstAdded;
    std::vector<std::string_view> removed;
    std::vector<std::string_view> added;
};

struct SDifference
{
    bool isBinary = false; ///< AreBytes
    std::vector<SHunk> hunks;
};

/// True if either has a zero byte.
bool AreBytes(std::string_view reference, std::string_view received);

/// Lines without their line feeds, and without carriage returns before them if `dropReturns` is set. A text that ends
/// with a line feed has an empty last line.
std::vector<std::string_view> SplitLines(std::string_view text, bool dropReturns);

/// The differences of two sequences of lines, or of other texts, in their order. The hunks refer to the texts of the
/// arguments. If there are very many differences, one hunk extends from the first to the last one.
std::vector<SHunk> CompareLines(const std::vector<std::string_view>& old, const std::vector<std::string_view>& fresh);

/// If "\r\n" and "\n" count as equal, returns the line end of the reference, or of `received` if the reference has only
/// one line. They count as different, and the result is empty, if the reference has both kinds, if nothing but line
/// ends differs, or if the data is binary.
std::string_view FindIgnoredEnd(std::string_view reference, std::string_view received);

/// The differences of `received` from `reference`, in their order; their texts refer to the arguments. Lines are
/// compared by CompareLines, without their ends if FindIgnoredEnd finds one.
SDifference FindDifference(std::string_view reference, std::string_view received);

/// True if line ends are ignored and `received` has line ends other than the result of FindIgnoredEnd.
bool HasIgnoredEnds(std::string_view reference, std::string_view received);

} // namespace Runner
