/// Command lines as one text, the way programs of Windows read them: words apart by blanks, quotation marks around
/// blanks, a backslash in front of a quotation mark that is meant, or two marks for one between others. Pure functions,
/// the same on all platforms.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/lbexport.h"

namespace LbCommandLine
{

/// The argument in quotation marks: Split gives it back unchanged, whatever it holds.
LB_API std::wstring Quote(std::wstring_view argument);

/// The words of a command line. A quotation mark that nothing closes reaches to the end.
LB_API std::vector<std::wstring> Split(std::wstring_view text);

} // namespace LbCommandLine
