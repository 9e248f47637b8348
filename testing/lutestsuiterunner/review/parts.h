/// The parts of a difference, each of which may be accepted without the others.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "testing/lutestsuiterunner/review/difference.h"

namespace Runner
{

/// Lines that take the place of others, wherever and however often in the file.
struct SPart
{
    std::wstring checksum; ///< GetPartName: equal for the same removed and added lines in any file
    std::wstring kind;     ///< GetPartKind: equal for like changes of lines with other values
    std::vector<SHunk> hunks;
};

/// Checksums of parts, or of kinds of parts.
using PartNames = std::set<std::wstring>;

/// The parts of the difference of `received` from `reference`, in the order of their first hunks; their texts refer to
/// the arguments. At least one, without hunks if the bytes are equal.
///
/// The lines of one place are a part each where PairLines separates them; very many lines are a part for each kind. A
/// difference is one part as a whole if it is one of bytes, or if no line with text stays: without its other parts it
/// could leave nothing.
std::vector<SPart> FindParts(std::string_view reference, std::string_view received);

/// True if the names include the part or its kind.
bool IsNamed(const SPart& part, const PartNames& names);

/// One checksum for several parts; that of the part if it is alone.
std::wstring GetChecksumOf(const PartNames& parts);

/// True if the bytes are nothing but white space and a byte-order mark.
bool IsBlank(std::string_view bytes);

/// The reference with the chosen parts changed: `received` itself if these are all, the reference if it has no such
/// part. Where FindDifference ignores line ends, all lines get FindIgnoredEnd: nobody has seen the new ones. If all
/// parts are chosen, the difference of the result is then one of line ends only, which FindDifference does show.
///
/// The parts of a difference cannot be applied one after the other, each to the result before: the difference of such a
/// result from `received` may have other parts.
std::string ApplyParts(std::string_view reference, std::string_view received, const PartNames& chosen);

} // namespace Runner
