/// The version-control records that the build embeds in the library.
#pragma once

#include <memory>
#include <string_view>

#include "testing/lutestsuite/lutestsuiteutils.h"

namespace LuTestSuite
{

/// Reads a record from its text: one "key:value" a line, keys as they stand, values without the white space around
/// them. Unknown keys and lines without a colon are ignored, a repeated key overwrites. Bytes are UTF-8, else
/// ISO-8859-1. Null when the text is empty.
std::unique_ptr<LuTestSuiteUtils::SSvnInfo> ReadSvnRecord(std::string_view bytes);
std::unique_ptr<LuTestSuiteUtils::SPscmInfo> ReadPscmRecord(std::string_view bytes);

} // namespace LuTestSuite
