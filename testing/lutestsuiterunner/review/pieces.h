/// The pieces into which a line is split. A change of a line removes and adds whole pieces.
#pragma once

#include <string_view>
#include <vector>

namespace Runner
{

/// Each piece is white space, a word, a number, or one other character.
using Pieces = std::vector<std::string_view>;

/// A word is a sequence of letters, "_" and non-ASCII characters. A sequence with a digit is a number, such as
/// "-1.5e+3", "12:30:00", "550e8400-e29b", "0x1F" or "a17.txt": if a digit changes, the whole number changes. A unit
/// behind digits, as in "12.5ms", is a word of its own, unless it may be hexadecimal digits.
Pieces SplitPieces(std::string_view line);

bool IsNumber(std::string_view piece);
bool IsWord(std::string_view piece);
bool IsSpace(std::string_view piece);

} // namespace Runner
