/// Converts arguments to a command line and back, by the rules of Windows programs: blanks separate words, a word with
/// blanks is enclosed in quotation marks, and a literal quotation mark is written as backslash and mark or, inside
/// quotation marks, as two marks. Pure functions, the same on all platforms.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/lbexport.h"

namespace LbCommandLine
{

/// Encloses the argument in quotation marks, escaped so that Split returns it unchanged.
LB_API std::wstring Quote(std::wstring_view argument);

/// The words of a command line. If a closing quotation mark is missing, the word extends to the end.
LB_API std::vector<std::wstring> Split(std::wstring_view text);

} // namespace LbCommandLine
