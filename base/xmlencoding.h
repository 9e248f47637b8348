/// The encoding of XML files.
#pragma once

#include <string>

namespace XMLEncoding
{

/// The text of an XML file as UTF-8 without byte order mark. The byte order mark, else the declaration, determines the
/// encoding. If neither names a known encoding, it is UTF-8 if the bytes are valid UTF-8, else ISO-8859-1. Half a
/// UTF-16 code unit at the end becomes U+FFFD. A pure function, callable from any thread.
std::string ToUtf8(std::string bytes);

} // namespace XMLEncoding
