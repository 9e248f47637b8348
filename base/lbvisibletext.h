/// Makes invisible characters of a text visible.
#pragma once

#include <string>
#include <string_view>

#include "base/lbexport.h"

namespace LbVisibleText
{

/// Replaces each control character that is not in `kept` by its Unicode symbol (U+240A for a line feed) or, from U+0080
/// to U+009F, by U+FFFD, so that file names and output of cases cannot control a terminal.
LB_API std::wstring ShowControls(std::wstring text, std::wstring_view kept = {});

/// Converts UTF-8 to wide text. Control characters below U+0080 become their Unicode symbols, invisible characters
/// become escapes such as "\u200B", and bytes that are not UTF-8 become escapes such as "\xE4".
LB_API std::wstring ShowBytes(std::string_view bytes);

} // namespace LbVisibleText
