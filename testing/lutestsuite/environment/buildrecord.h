/// The version-control records that the build embeds in the library.
#pragma once

#include <memory>
#include <string_view>

#include "testing/lutestsuite/lutestsuiteutils.h"

namespace LuTestSuite
{

/// Reads a record from lines of the form "key:value". Trims the values, ignores unknown keys and lines without a colon;
/// the last of several equal keys counts. The bytes are UTF-8, else ISO-8859-1. Null if the text is empty.
std::unique_ptr<LuTestSuiteUtils::SSvnInfo> ReadSvnRecord(std::string_view bytes);
std::unique_ptr<LuTestSuiteUtils::SPscmInfo> ReadPscmRecord(std::string_view bytes);

} // namespace LuTestSuite
