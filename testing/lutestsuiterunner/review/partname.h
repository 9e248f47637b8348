/// Names of parts of a difference.
#pragma once

#include <string>

#include "testing/lutestsuiterunner/review/difference.h"

namespace Runner
{

/// A checksum that is equal for the same removed and added text in any file.
std::wstring GetPartName(const SHunk& hunk, bool isBinary);

/// A checksum that is equal for similar changes of lines with different values. If one line has replaced another, the
/// checksum includes the removed and the added pieces, and those unchanged pieces that tell different changes apart.
/// It does not include these unchanged pieces:
/// - numbers, unless a number changes just beside them or numbers change their places;
/// - words, if text without numbers was only added or only removed; but it includes the word before each place, or, if
///   there is none, the word behind it;
/// - everything, if only white space changed.
/// For other changes it includes all text.
std::wstring GetPartKind(const SHunk& hunk, bool isBinary);

} // namespace Runner
