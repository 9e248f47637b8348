/// The encoding of XML files.
#pragma once

#include <string>

namespace XMLEncoding
{

/// The text of an XML file as UTF-8 without byte order mark. The byte order mark determines the encoding; without one,
/// UTF-16 is recognised by the first character "<", otherwise the declaration determines it. If the encoding is still
/// unknown, the bytes are read as UTF-8 if they are valid UTF-8, else as ISO-8859-1. Half a UTF-16 code unit at the end
/// becomes U+FFFD. A pure function, callable from any thread.
std::string ToUtf8(std::string bytes);

} // namespace XMLEncoding
