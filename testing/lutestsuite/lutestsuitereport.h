/// Reports: the record of a finished run, writing and reading the record as an XML report, and the HTML pages.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "testing/lutestsuite/lutestsuiteexport.h"
#include "testing/lutestsuite/lutestsuitemarkupwriter.h"
#include "testing/lutestsuite/lutestsuiterun.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

/// Static operations, which any thread may call. Files are 8-bit text, ISO-8859-1, see LuStreamWriteASCIIFile. If a
/// report cannot be written, the operation prints one line and throws nothing.
class LUTESTSUITE_API LuTestSuiteReport
{
public:
    LuTestSuiteReport() = delete;

    // The record ------------------------------------------------------------------------------------------------------

    /// How reports classify the result of a case.
    enum EReportResult : std::uint32_t
    {
        eRR_Success = 0,
        eRR_Failure = 1, ///< completed, but did not succeed
        eRR_Error = 2    ///< did not complete
    };

    /// Numbers of cases by EReportResult.
    struct SReportCounts
    {
        std::uint32_t counts[3] = {};
    };

    /// One message line of a case.
    struct SReportDump
    {
        bool IsError = false;
        std::wstring Text; ///< escaped for markup
    };

    /// One unit test.
    struct SReportClass
    {
        std::wstring Name;
        std::uint32_t CasesTotal = 0; ///< number of case runs; the other numbers count case runs, too
        std::uint32_t Successful = 0;
        std::uint32_t Errors = 0;
        std::uint32_t Failures = 0;
        std::uint32_t Warnings = 0;
        std::wstring ContactName; ///< name of the first contact; empty if there is no contact
        std::wstring ContactEMail;
    };

    /// One case run.
    struct SReportCase
    {
        std::uint32_t Id = 0; ///< position among the planned case runs
        std::wstring ClassName;
        std::wstring CaseName;
        float Time = 0.0F;            ///< seconds, like all times
        std::uint64_t Memory = 0;     ///< highest heap use, bytes
        std::int64_t MemoryDelta = 0; ///< bytes still allocated when the case ended
        LuTestSuiteRun::ECaseRunResult Result = LuTestSuiteRun::ECaseRunResult::Ok;
        std::wstring Info; ///< German note about a leak; empty without a leak
        bool Warning = false;
        std::vector<SReportDump> Dumps;
    };

    /// All data of a run that the reports show. Can be moved, but not copied.
    struct SReportData
    {
        std::wstring BuildConfiguration;
        std::unique_ptr<LuTestSuiteUtils::SSvnInfo> SvnInfo;   ///< null when unknown
        std::unique_ptr<LuTestSuiteUtils::SPscmInfo> PscmInfo; ///< null when unknown
        std::wstring Processor;
        std::wstring GPU;
        std::wstring MachineName;
        std::wstring DataDirectory;
        std::wstring ExecutionMode; ///< "Internal", "External" or "External Isolated"
        std::uint32_t ThreadCount = 0;
        std::uint32_t TimeOut = 0; ///< seconds; LuTestSuiteRun::c_NoLimit: no time-out
        std::uint32_t ClassesTotal = 0;
        std::uint32_t ClassesSuccessful = 0; ///< classes whose cases are all Ok
        std::uint32_t ClassesFlagged = 0;    ///< classes with a failed case or with a warning
        std::uint32_t CasesTotal = 0;
        std::uint32_t Successful = 0;
        std::uint32_t Failures = 0;
        std::uint32_t Errors = 0;
        std::uint32_t Warnings = 0;
        std::wstring DateBegin; ///< local time, "Y-m-d H:i:s"
        std::wstring DateEnd;
        float TimeTotal = 0.0F;
        float TimeAvg = 0.0F;
        float TimeMax = 0.0F;
        float TimeMin = 0.0F;
        std::uint64_t MemoryAvg = 0;
        std::uint64_t MemoryMax = 0;
        std::uint64_t MemoryMin = 0;
        std::vector<SReportClass> Classes; ///< one per unit test, in their order
        std::vector<SReportCase> Cases;    ///< one per executed case run, in plan order
    };

    /// Fills a new record from a finished run. Throws LbException, and leaves the record unchanged, if the arguments do
    /// not belong to the same run: if `stats` has counts for another number of unit tests, or if an executed case is
    /// missing in its unit test.
    static void GenerateReportData(SReportData& data, const LuTestSuiteSetup& setup,
                                   const std::vector<LuTestSuite::SUnitTest>& unitTests,
                                   const std::vector<LuTestSuiteRun::SCaseInfo>& cases,
                                   const LuTestSuiteRun::SStats& stats);

    // XML -------------------------------------------------------------------------------------------------------------

    /// Writes the XML report; nothing if the path is empty.
    static void GenerateXMLReport(const std::wstring& path, const SReportData& data);

    /// Resets the record and reads an XML report into it. False if the file does not exist; false, after printing a
    /// line, if it cannot be read. Missing elements are read as empty text or 0.
    static bool LoadReportDataFromXMLFile(const std::wstring& path, SReportData& data);

    // Pages -----------------------------------------------------------------------------------------------------------

    /// Writes the page of one run. Beside it, also writes the style sheet if `writeCss` is true, and the script if
    /// `writeJs` is true. `smallReport` leaves out the cases; `tolerateWarnings` leaves warnings without highlighting.
    /// Writes nothing if the path is empty.
    static void GenerateHTMLReport(const std::wstring& path, const SReportData& data, bool writeCss, bool writeJs,
                                   bool smallReport, bool tolerateWarnings);

    /// Writes the page that compares run B with run A, the reference. The page shows `pathA` and `pathB` as the
    /// sources. Here `smallReport` leaves out only unchanged cases.
    static void GenerateHTMLDiffReport(const std::wstring& path, const std::wstring& pathA, const std::wstring& pathB,
                                       const SReportData& a, const SReportData& b, bool writeCss, bool writeJs,
                                       bool smallReport, bool tolerateWarnings);

    /// Writes "<name>.html" in `root`: a list of the reports in `root`'s folder `subDirectory` whose names begin with
    /// `reportPrefix`, with links to each report and to its comparison with the next older report. Writes comparisons
    /// that are missing.
    static void GenerateReportDirectoryOverview(const std::wstring& root, const std::wstring& name,
                                                const std::wstring& subDirectory, const std::wstring& reportPrefix);

    /// Writes the document type, the start tag of "html", and the element "head", which contains the style sheet if
    /// `inlineStylesheet` is true.
    static void writeHTMLHeader(LuTestSuiteUtils::LuMarkupWriter& writer, bool inlineStylesheet);

    // Parts of records ------------------------------------------------------------------------------------------------

    static EReportResult getReportResult(LuTestSuiteRun::ECaseRunResult result);

    /// Adds each of the nine counts of results to the count of its EReportResult, and returns their total.
    static std::uint32_t getReportCounts(const LuTestSuiteRun::SStats::SCounts& counts, SReportCounts& reportCounts);

    /// The name of a result in XML reports. NoMatchingCase has the name of Unknown.
    static std::wstring toResultString(LuTestSuiteRun::ECaseRunResult result);

    /// The German description of a result.
    static std::wstring toDescriptionString(LuTestSuiteRun::ECaseRunResult result);

    /// The result that has this name; Unknown for other names.
    static LuTestSuiteRun::ECaseRunResult resultStringToType(const std::wstring& name);

    /// Converts nanoseconds to seconds.
    static float toSeconds(std::uint64_t nanoseconds);

    /// getCPUInfo returns processor, clock and memory of the machine; getGPUInfo returns its graphics adapter, or an
    /// empty text if it has none.
    static std::wstring getCPUInfo();
    static std::wstring getGPUInfo();
};
