/// The parts of a difference, each of which may be accepted without the others.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "testing/lutestsuiterunner/review/difference.h"

namespace Runner
{

/// Lines that replace others, at one or several places of the file.
struct SPart
{
    std::wstring checksum; ///< GetPartName: equal for the same removed and added lines in any file
    std::wstring kind;     ///< GetPartKind: equal for similar changes of lines with different values
    std::vector<SHunk> hunks;
};

/// Checksums of parts, or of kinds of parts.
using PartNames = std::set<std::wstring>;

/// The parts of the difference of `received` from `reference`, in the order of their first hunks. The texts of the
/// hunks refer to the arguments. There is at least one part; it has no hunks if the bytes are equal.
///
/// Each pair of lines that PairLines finds is a part. If there are very many pairs, all pairs of one kind are one part.
/// The whole difference is one part if the data is binary, or if no line with text stays unchanged, because accepting
/// only some parts could then make the reference blank.
std::vector<SPart> FindParts(std::string_view reference, std::string_view received);

/// True if the names include the part or its kind.
bool IsNamed(const SPart& part, const PartNames& names);

/// One checksum for several parts; the checksum of the part if there is only one.
std::wstring GetChecksumOf(const PartNames& parts);

/// True if the bytes are nothing but white space and a byte-order mark.
bool IsBlank(std::string_view bytes);

/// Returns the reference with the chosen parts changed: `received` itself if all parts are chosen, the reference itself
/// if no part is. If FindDifference ignores line ends, all lines of the result get the line end that FindIgnoredEnd
/// returns, because the user has not seen the new line ends. If all parts are chosen in this case, the result differs
/// from `received` only in line ends, and the next FindDifference shows them.
///
/// Several parts must be applied in one call: after the first one, the difference from `received` may consist of other
/// parts.
std::string ApplyParts(std::string_view reference, std::string_view received, const PartNames& chosen);

} // namespace Runner
