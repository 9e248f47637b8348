/// The page of one run.
#pragma once

#include <string>

#include "testing/lutestsuite/lutestsuitereport.h"

namespace LuTestSuite
{

/// Like LuTestSuiteReport::GenerateHTMLReport, but returns false and prints a line if the page or a file beside it
/// could not be written. For an empty path, writes and prints nothing and returns false.
bool WriteRunPage(const std::wstring& path, const LuTestSuiteReport::SReportData& data, bool writeCss, bool writeJs,
                  bool smallReport, bool tolerateWarnings);

} // namespace LuTestSuite
