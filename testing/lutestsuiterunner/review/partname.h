/// Names of parts of a difference.
#pragma once

#include <string>

#include "testing/lutestsuiterunner/review/difference.h"

namespace Runner
{

/// A checksum that is equal for the same removed and added text in any file.
std::wstring GetPartName(const SHunk& hunk, bool isBinary);

/// A checksum that is equal for like changes of lines with other values. If one line took the place of another, its
/// removed and added pieces count, and of those that stay only what tells unlike changes apart. Therefore these pieces
/// do not count if they stay:
/// - numbers, unless a number changes just beside them or numbers change their places;
/// - words, if the line only gained or only lost text without numbers; the word before each place counts, however, or
///   else the one behind it;
/// - everything, if only white space changed.
/// Otherwise all text counts.
std::wstring GetPartKind(const SHunk& hunk, bool isBinary);

} // namespace Runner
