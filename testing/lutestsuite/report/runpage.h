/// The page of a run for those who go on with it. The operation stands in the room of the pages, above this one.
#pragma once

#include <string>

#include "testing/lutestsuite/lutestsuitereport.h"

namespace LuTestSuite
{

/// LuTestSuiteReport::GenerateHTMLReport with an answer: false when the page or a file beside it could not be written,
/// which cost a line of output. An empty path writes nothing, and is false without a line.
bool WriteRunPage(const std::wstring& path, const LuTestSuiteReport::SReportData& data, bool writeCss, bool writeJs,
                  bool smallReport, bool tolerateWarnings);

} // namespace LuTestSuite
