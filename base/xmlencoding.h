/// The encoding of XML files.
#pragma once

#include <string>

namespace XMLEncoding
{

/// The text of an XML file as UTF-8 without byte order mark. The encoding is told by the byte order mark, else by the
/// declaration; without one that is known, it is UTF-8 where the bytes are valid UTF-8, else ISO-8859-1. Half a UTF-16
/// code unit at the end becomes U+FFFD. Pure; any thread.
std::string ToUtf8(std::string bytes);

} // namespace XMLEncoding
