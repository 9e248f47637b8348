/// Names of parts of a difference.
#pragma once

#include <string>

#include "testing/lutestsuiterunner/review/difference.h"

namespace Runner
{

/// A checksum that is equal for the same removed and added text in any file.
std::wstring GetPartName(const SHunk& hunk, bool isBinary);

/// A checksum that is equal for similar changes of lines with different values. If one line has replaced another, the
/// checksum includes the removed and the added pieces, and the unchanged pieces except the following:
/// - numbers, unless a number changes just beside them or numbers change their places;
/// - words, if text without numbers was only added or only removed. In this case the checksum still includes the word
///   before each changed place or, if no word is before it, the word behind it;
/// - all unchanged pieces, if only white space changed.
/// For other changes the checksum includes all text.
std::wstring GetPartKind(const SHunk& hunk, bool isBinary);

} // namespace Runner
