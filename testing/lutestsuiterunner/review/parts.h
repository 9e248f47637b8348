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

/// The parts of the difference of `received` from `reference`, in the order of their first hunks; their texts refer to
/// the arguments. At least one, without hunks if the bytes are equal.
///
/// Each pair of lines that PairLines finds is a part. If there are very many parts, those of one kind are one part. The
/// whole difference is one part if it is one of bytes, or if no line with text stays, because some of its parts alone
/// could make the reference blank.
std::vector<SPart> FindParts(std::string_view reference, std::string_view received);

/// True if the names include the part or its kind.
bool IsNamed(const SPart& part, const PartNames& names);

/// One checksum for several parts; the checksum of the part if there is only one.
std::wstring GetChecksumOf(const PartNames& parts);

/// True if the bytes are nothing but white space and a byte-order mark.
bool IsBlank(std::string_view bytes);

/// The reference with the chosen parts changed. The result is `received` itself if all parts are chosen, and the
/// reference if none is. If FindDifference ignores line ends, all lines get FindIgnoredEnd, because the user has not
/// seen the new ones. If all parts are chosen then, the result differs from `received` only in line ends, and
/// FindDifference shows such a difference.
///
/// Several parts must be applied in one call: the result of the first may differ from `received` in other parts.
std::string ApplyParts(std::string_view reference, std::string_view received, const PartNames& chosen);

} // namespace Runner
