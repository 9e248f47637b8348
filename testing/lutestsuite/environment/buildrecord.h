/// The version-control records of a build.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "testing/lutestsuite/lutestsuiteutils.h"

namespace LuTestSuite
{

/// Reads a record from lines of the form "key:value". Trims the values, ignores unknown keys and lines without a colon;
/// of several lines with the same key, uses the last. Decodes the bytes as UTF-8, or as ISO-8859-1 if they are not
/// valid UTF-8. Null if the text is empty.
std::unique_ptr<LuTestSuiteUtils::SSvnInfo> ReadSvnRecord(std::string_view bytes);
std::unique_ptr<LuTestSuiteUtils::SPscmInfo> ReadPscmRecord(std::string_view bytes);

/// A file in the host's folder that describes the build of the tested product.
inline constexpr const wchar_t* c_BuildRecordFile = L"lutestsuite-build.txt";

/// Reads the record of the product from c_BuildRecordFile in the directory of its hosts (with final separator). If the
/// file does not exist, reads `own`, the bytes of the library's own record. Null if the file or `own` is empty, or if
/// the file cannot be read.
std::unique_ptr<LuTestSuiteUtils::SPscmInfo> FindPscmRecord(const std::wstring& directory, std::string_view own);

} // namespace LuTestSuite
