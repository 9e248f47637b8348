/// Text in which every character can be seen.
#pragma once

#include <string>
#include <string_view>

#include "base/lbexport.h"

namespace LbVisibleText
{

/// Replaces control characters other than the kept ones by their pictures, so that names of files and output of cases
/// cannot steer a terminal.
LB_API std::wstring ShowControls(std::wstring text, std::wstring_view kept = {});

/// A text in UTF-8. Control characters become pictures, invisible characters "\u200B", and bytes that are not UTF-8
/// "\xE4".
LB_API std::wstring ShowBytes(std::string_view bytes);

} // namespace LbVisibleText
