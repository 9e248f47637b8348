/// All text conversion. Wide text is UTF-16 on Windows and UTF-32 on Linux.
///
/// Conversions never truncate: each operation documents how it replaces what the target cannot hold. All operations are
/// pure functions, callable from any thread.
#pragma once

#include <string>
#include <string_view>

#include "base/lbexport.h"

namespace LbEncoding
{

/// Wide text as UTF-8. Lone surrogates become U+FFFD.
LB_API std::string ToUtf8(std::wstring_view text);

/// UTF-8 as wide text. Each invalid byte becomes U+FFFD.
LB_API std::wstring FromUtf8(std::string_view bytes);

/// True if `bytes` is valid UTF-8.
LB_API bool IsUtf8(std::string_view bytes);

/// UTF-8 as wide text without loss: each invalid byte (0x80 to 0xFF) becomes the lone surrogate U+DC00 + byte, and
/// ToNative restores it. For file names and arguments on systems where names are bytes.
LB_API std::wstring FromNative(std::string_view bytes);
LB_API std::string ToNative(std::wstring_view text);

/// FromNative into `result`, whose memory it reuses; for long listings.
LB_API void FromNative(std::string_view bytes, std::wstring& result);

/// Wide text as UTF-16 code units and back. Both functions keep lone surrogates unchanged.
LB_API std::u16string ToUtf16(std::wstring_view text);
LB_API std::wstring FromUtf16(std::u16string_view text);

/// Wide text as ISO-8859-1, one byte per character, and back. Characters above U+00FF become "?" (a surrogate pair
/// becomes one "?"), and so do control characters (below U+0020, U+007F to U+009F) except tab, line feed and carriage
/// return.
LB_API std::string ToLatin1(std::wstring_view text);
LB_API std::wstring FromLatin1(std::string_view bytes);

/// ISO-8859-1 as UTF-8, without wide text in between; for large files.
LB_API std::string Latin1ToUtf8(std::string bytes);

} // namespace LbEncoding
