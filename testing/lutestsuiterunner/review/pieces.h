/// The pieces of a line: what a change of a line removes or adds as a whole.
#pragma once

#include <string_view>
#include <vector>

namespace Runner
{

/// White space, a word, a number, or one other character.
using Pieces = std::vector<std::string_view>;

/// Words are letters, "_" and characters beyond ASCII in a row. With a digit among them they are a number, such as
/// "-1.5e+3", "12:30:00", "550e8400-e29b", "0x1F" or "a17.txt": a change of a digit is a change of the whole number. A
/// unit behind digits, as in "12.5ms", is a word of its own, unless it may be hexadecimal digits.
Pieces SplitPieces(std::string_view line);

bool IsNumber(std::string_view piece);
bool IsWord(std::string_view piece);
bool IsSpace(std::string_view piece);

} // namespace Runner
