/// The one home of text conversion. Wide text is UTF-16 on Windows and UTF-32 on Linux.
///
/// Conversions never truncate: what a target cannot hold is replaced as each operation says. All operations are pure
/// and may be called by any thread.
#pragma once

#include <string>
#include <string_view>

#include "base/lbexport.h"

namespace LbEncoding
{

/// Wide text as UTF-8. Lone surrogates become U+FFFD.
LB_API std::string ToUtf8(std::wstring_view text);

/// UTF-8 as wide text. Each byte that is no part of a valid sequence becomes U+FFFD.
LB_API std::wstring FromUtf8(std::string_view bytes);

/// True when all of `bytes` is valid UTF-8.
LB_API bool IsUtf8(std::string_view bytes);

/// UTF-8 as wide text without loss: each byte that is no part of a valid sequence becomes the lone surrogate U+DC00 +
/// byte (byte 0x80 to 0xFF), which ToNative turns back. For file names and arguments of systems whose names are bytes.
LB_API std::wstring FromNative(std::string_view bytes);
LB_API std::string ToNative(std::wstring_view text);

/// The same into a text whose memory is used again: for long listings.
LB_API void FromNative(std::string_view bytes, std::wstring& result);

/// Wide text as UTF-16 code units and back. Lone surrogates pass unchanged both ways.
LB_API std::u16string ToUtf16(std::wstring_view text);
LB_API std::wstring FromUtf16(std::u16string_view text);

/// One byte a character, ISO-8859-1. Characters above U+00FF and control characters (below U+0020, U+007F to U+009F)
/// other than tab, line feed and carriage return become "?" (on Windows one "?" for a surrogate pair, too).
LB_API std::string ToLatin1(std::wstring_view text);
LB_API std::wstring FromLatin1(std::string_view bytes);

/// ISO-8859-1 as UTF-8, without the detour over wide text: for large files.
LB_API std::string Latin1ToUtf8(std::string bytes);

} // namespace LbEncoding
