/// The page that compares two runs.
#pragma once

#include <string>

#include "testing/lutestsuite/lutestsuitereport.h"

namespace LuTestSuite
{

struct SDiffSide
{
    const std::wstring& path; ///< path of the XML report
    const LuTestSuiteReport::SReportData& data;
};

/// Writes only the page. `a` is the reference. Throws on failure and then keeps the existing page.
void WriteDiffPage(const std::wstring& path, const SDiffSide& a, const SDiffSide& b, bool smallReport,
                   bool tolerateWarnings);

/// Like LuTestSuiteReport::GenerateHTMLDiffReport, but returns false and prints a line if the page or a file beside it
/// could not be written.
bool WriteDiffWithCompanions(const std::wstring& path, const SDiffSide& a, const SDiffSide& b, bool writeCss,
                             bool writeJs, bool smallReport, bool tolerateWarnings);

} // namespace LuTestSuite
