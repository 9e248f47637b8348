/// The settings of one call: which cases to run and how, which reports to write, which mode to use.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "testing/lutestsuite/lutestsuiteexport.h"
#include "testing/lutestsuite/lutestsuiterun.h"

/// What to do with data sets of identical content.
enum EDuplicateMode : std::uint32_t
{
    eDM_None = 0,
    eDM_List = 1,
    eDM_Delete = 2
};

/// A plain value. A moved-from object has empty arrays and no callbacks; fill or assign it before using it for a run.
/// One thread at a time.
struct LUTESTSUITE_API LuTestSuiteSetup
{
    LuTestSuiteSetup();
    LuTestSuiteSetup(const LuTestSuiteSetup& other);
    LuTestSuiteSetup(LuTestSuiteSetup&& other) noexcept;
    LuTestSuiteSetup& operator=(const LuTestSuiteSetup& other);
    LuTestSuiteSetup& operator=(LuTestSuiteSetup&& other) noexcept;
    ~LuTestSuiteSetup();

    std::wstring dataDir;                          ///< directory searched for unit-test folders, ends in a separator
    std::vector<std::wstring> includes;            ///< patterns of cases to select
    std::vector<std::wstring> excludes;            ///< patterns of cases to leave out
    std::vector<LuTestSuite::SUnitTest> unitTests; ///< if not empty, the run executes these and does not scan dataDir

    LuTestSuiteRun::SParams params; ///< the run's parameters, passed on as one record

    std::wstring includeConfig;           ///< configuration file whose stored selection is added to the includes
    std::wstring xmlReport;               ///< path of the XML report to write
    std::wstring htmlReport;              ///< path of the HTML report to write
    bool autoXml = false;                 ///< write an XML report under an automatic name; set by hosts only
    bool autoHtml = false;                ///< write an HTML report under an automatic name
    bool openReports = false;             ///< open the HTML report in the browser
    bool smallReport = false;             ///< HTML reports omit the cases; comparisons omit unchanged cases
    std::vector<std::wstring> diffInputs; ///< XML reports to compare
    std::wstring diffOutput;              ///< file of the comparison, in place of the automatic name
    bool writeCss = true;                 ///< write the style sheet next to each HTML report
    bool writeJs = true;                  ///< write the script next to each HTML report
    std::int32_t messageReportMax = 3;    ///< maximum number of message lines per case in reports
    bool tolerateWarnings = true;         ///< HTML reports do not highlight warnings
    bool queryMode = false;               ///< list the cases instead of running them
    std::wstring archiveRun;              ///< "file:name" of an archive run
    EDuplicateMode duplicateMode = eDM_None;
    bool listDisabled = false;      ///< list the disabled cases
    std::vector<std::wstring> dlls; ///< test modules to load besides the fixed list, without extension
    std::wstring memoryId;          ///< this and the next two: names of the objects shared with a parent run
    std::wstring requestEventId;
    std::wstring responseEventId;
    bool noRegex = false; ///< a pattern is plain text that must be the end of a name

    /// Called before each case, and repeatedly while worker threads or child processes run cases. The calls come from
    /// any thread of the run, but never two at a time. Returns true to stop the run; by default returns false.
    std::function<bool()> checkCallback;

    /// Called with the result of each executed case after the line of the case was printed. All calls come from the
    /// thread that called Run. Does nothing by default.
    std::function<void(LuTestSuiteRun::ECaseRunResult)> resultCallback;
};
