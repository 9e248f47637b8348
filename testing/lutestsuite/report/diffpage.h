/// The page that compares two runs, for those who go on with it.
#pragma once

#include <string>

#include "testing/lutestsuite/lutestsuitereport.h"

namespace LuTestSuite
{

struct SDiffSide
{
    const std::wstring& path; ///< of the XML report
    const LuTestSuiteReport::SReportData& data;
};

/// Writes the page alone. `a` is the reference. Failures are thrown; what was written stays.
void WriteDiffPage(const std::wstring& path, const SDiffSide& a, const SDiffSide& b, bool smallReport,
                   bool tolerateWarnings);

/// LuTestSuiteReport::GenerateHTMLDiffReport with an answer: false when the page or a file beside it could not be
/// written, which cost a line of output.
bool WriteDiffWithCompanions(const std::wstring& path, const SDiffSide& a, const SDiffSide& b, bool writeCss,
                             bool writeJs, bool smallReport, bool tolerateWarnings);

} // namespace LuTestSuite
