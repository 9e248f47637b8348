/// The version-control records of a build.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "testing/lutestsuite/lutestsuiteutils.h"

namespace LuTestSuite
{

/// Reads a record from lines of the form "key:value". Trims the values, ignores unknown keys and lines without a colon;
/// the last of several equal keys counts. The bytes are UTF-8, else ISO-8859-1. Null if the text is empty.
std::unique_ptr<LuTestSuiteUtils::SSvnInfo> ReadSvnRecord(std::string_view bytes);
std::unique_ptr<LuTestSuiteUtils::SPscmInfo> ReadPscmRecord(std::string_view bytes);

/// The file beside a host that describes the build of the tested product.
inline constexpr const wchar_t* c_BuildRecordFile = L"lutestsuite-build.txt";

/// The record of the product whose hosts are in a directory (with final separator); null if its file is empty or cannot
/// be read. Without the file, the bytes of the library's own record count.
std::unique_ptr<LuTestSuiteUtils::SPscmInfo> FindPscmRecord(const std::wstring& directory, std::string_view own);

} // namespace LuTestSuite
