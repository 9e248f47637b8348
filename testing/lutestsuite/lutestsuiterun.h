/// Runs: the records of unit tests, cases, parameters and results, and the run itself.
///
/// The records are plain values; one thread at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/lbvariant.h"
#include "testing/lutestsuite/lutestsuitedatasetfile.h"
#include "testing/lutestsuite/lutestsuiteexport.h"

class LuTestSuiteEnvironment;
struct LuTestSuiteSetup;

namespace LuTestSuite
{

/// Parameters of a case from its description file, by name: "Enable", "ReportMemLeak", "Parallel", "External",
/// "Isolated" (bool, or null for an unreadable "Enable" or "ReportMemLeak"), "TimeOutSec", "MessageReportMax" (unsigned
/// 32-bit).
using ParameterMap = std::unordered_map<std::wstring, LbVariant>;

/// A person responsible for a unit test.
struct SContact
{
    std::wstring name;
    std::wstring email;
    std::wstring role;
};

/// One case: a sub-test of a unit test.
struct STestCase
{
    LuDataSetFile dataSetFile; ///< full path if the sub-test is a file of the unit test's folder, otherwise empty
    std::wstring name;         ///< the sub-test's name
    ParameterMap parameters;

    /// 1 for a file data set, 0 for a named sub-test.
    std::uint32_t GetKind() const { return dataSetFile.empty() ? 0U : 1U; }
};

/// One unit test with the cases to run, in order.
struct LUTESTSUITE_API SUnitTest
{
    std::wstring className;     ///< registered name, also the display name
    std::wstring dataDirectory; ///< the unit test's own directory, ends in a separator
    std::vector<STestCase> cases;
    std::vector<SContact> contacts;
    std::wstring moduleName; ///< file name of the module that holds the class; empty when unknown

    /// The data-set files: full paths of the cases that are files in the unit test's folder, in case order. Computed
    /// from the cases, so that files and cases always agree.
    std::vector<std::wstring> GetDataSetFiles() const;
};

} // namespace LuTestSuite

namespace LuTestSuiteRun
{

/// Outcome of a case. The values are fixed: reports and other processes store them.
enum class ECaseRunResult : std::uint32_t
{
    Ok = 0,
    Error = 1,
    Exception = 2,
    NoInput = 3,
    Different = 4,
    Unknown = 5,        ///< initial value; remains if the case never reached a verdict
    NoMatchingCase = 6, ///< the class does not exist or has no sub-test of that name
    Canceled = 7,
    TimeOut = 8
};

/// Target of re-created reference data. Passed through to the tests; the runner never interprets it.
enum class ETargetSystem : std::uint32_t
{
};

/// "No limit" for the time-out and the case maximum; -1 on the command line.
inline constexpr std::uint32_t c_NoLimit = std::numeric_limits<std::uint32_t>::max();

/// "Never", for the two breakpoints.
inline constexpr std::uint64_t c_NoBreak = std::numeric_limits<std::uint64_t>::max();

/// Parameters of a run or of one case. Order and widths are fixed, because other processes receive the bytes unchanged.
struct SParams
{
    bool trackHeap = false;                   ///< track heap allocations during the case
    bool dumpHeap = false;                    ///< list the live allocations when memory grew
    bool reportMemLeak = true;                ///< mark a case whose memory grew with a warning
    bool external = false;                    ///< run the case in a child process
    bool isolated = false;                    ///< one child process per case
    bool assertDialog = true;                 ///< assertion dialogs stay enabled during the run
    bool verbose = false;                     ///< extra information
    bool deVerboseOutput = false;             ///< value for IDebugging::eO_VerboseOutput
    bool deDebuggingSerialization = false;    ///< value for IDebugging::eO_DebuggingSerialization
    bool dePredefinedBreakPoints = false;     ///< value for IDebugging::eO_PredefinedBreakPoints
    bool parallel = false;                    ///< the case may run on a worker thread
    std::uint32_t workerThreads = 0;          ///< number of worker threads; 0 means not chosen
    std::uint32_t repetitions = 1;            ///< runs of every case
    std::uint32_t timeOutSec = c_NoLimit;     ///< limit per case in seconds, only in a child process
    std::uint32_t testCaseMax = c_NoLimit;    ///< upper limit of cases to run
    std::uint64_t breakAllocId = c_NoBreak;   ///< allocation number at which to break
    std::uint64_t breakAllocSize = c_NoBreak; ///< allocation size in bytes at which to break
    alignas(8) bool repetitionsGiven = false; ///< append the case time to the console's result line
};

/// One planned or executed run of one case.
struct SCaseInfo
{
    std::uint32_t unitTest = 0;   ///< index into the run's unit tests
    std::uint32_t testCase = 0;   ///< index into that unit test's cases
    std::uint32_t repetition = 0; ///< 0-based
    ECaseRunResult result = ECaseRunResult::Unknown;
    std::uint64_t memoryGrowth = 0; ///< heap bytes still allocated when the case ended, a signed value in 64 bits
    std::uint64_t allocations = 0;  ///< allocations plus reallocations during the case
    std::uint64_t peakMemory = 0;   ///< highest heap use during the case, bytes
    std::uint64_t time = 0;         ///< duration of the sub-test, nanoseconds
    std::wstring messages;          ///< the test's message lines, then any heap dump lines
    bool warning = false;           ///< memory grew and the case reports that
    bool executed = false;          ///< the case was started and has ended
    std::int32_t threadIndex = -1;  ///< worker thread that ran the case; -1 if no worker did
    std::int32_t processIndex = -1; ///< child process that ran the case; -1 if no child did
};

/// Statistics of a run.
struct SStats
{
    /// Numbers of cases, of all unit tests or of one.
    struct SCounts
    {
        static constexpr std::size_t sc_uiResults = 9;

        std::uint32_t results[sc_uiResults] = {}; ///< indexed by ECaseRunResult
        std::uint32_t executed = 0;
        std::uint32_t warnings = 0;

        std::uint32_t GetCount(ECaseRunResult result) const { return results[static_cast<std::size_t>(result)]; }
    };

    SCounts total;
    std::vector<SCounts> unitTests;                  ///< one per unit test, same order
    std::uint32_t unitTestsExecuted = 0;             ///< unit tests with at least one executed case
    std::uint32_t unitTestsPassed = 0;               ///< of these, the number whose executed cases are all Ok
    std::uint32_t unitTestsPassedWithoutWarning = 0; ///< of the passed ones, the number without a warning
    std::uint64_t caseTimeMin = std::numeric_limits<std::uint64_t>::max(); ///< nanoseconds, like all times
    std::uint64_t caseTimeMax = 0;
    std::uint64_t caseTimeSum = 0;
    std::uint64_t totalTime = 0;
    std::uint64_t peakMemoryMin = std::numeric_limits<std::uint64_t>::max(); ///< bytes, like all memory
    std::uint64_t peakMemoryMax = 0;
    std::uint64_t peakMemorySum = 0;
    std::wstring startTime; ///< local time, "Y-m-d H:i:s"
    std::wstring endTime;
};

/// What a run returns.
struct SRunResult
{
    std::vector<SCaseInfo> cases; ///< one per planned case run, in plan order
    SStats stats;
};

/// Callbacks for operations without a setup; in a setup they are called checkCallback and resultCallback. Calling an
/// empty callback throws std::bad_function_call.
struct SCallbacks
{
    std::function<bool()> isCanceled;                 ///< returns true to stop the operation
    std::function<void(ECaseRunResult)> caseFinished; ///< receives each executed case's result
};

/// Carries out one normal run. Loads the test modules, finds and selects the unit tests, and runs their cases in this
/// process or in child processes: first the cases that may run on worker threads, then the others one after another.
/// Prints a line per case and the summary, and writes the reports that the setup requests.
///
/// The calling thread prints everything and calls the setup's resultCallback. All executing threads call the setup's
/// checkCallback, one at a time; checkCallback must not wait for another of these threads. While cases run, the
/// executable's folder is the working directory; the environment's working directory is restored before the reports are
/// written, and when an exception leaves the run.
///
/// A failure inside a case becomes the case's result; a report that cannot be written prints a line. Exceptions of
/// discovery and selection pass through. Throws LbException if the objects shared with child processes cannot be
/// created. Also throws LbException, before any case runs, if a report has a relative path and there is no working
/// directory.
LUTESTSUITE_API SRunResult Run(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment);

/// Serves a parent run as its child process: runs the cases that arrive through the shared objects named in the setup,
/// until the parent asks the process to exit or no case has arrived for five seconds. From the call on, also after it
/// returns, a crash of the process shows no dialog and dumps no memory (LbOs::EndSilentlyOnCrash). Throws LbException
/// if a name is missing, if an object cannot be opened, or if the answer to a case cannot be signaled.
LUTESTSUITE_API void RunExternalExecution(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment);

/// Re-creates the stored reference data of cases instead of checking against it: calls each unit test that implements
/// IUnitTestRecreate, case by case, and prints each outcome. The host must have loaded the modules. Data directories
/// must be full paths, because the executable's folder is the working directory meanwhile. Unit tests receive
/// `targetSystem` and `option` as IUnitTestRecreate::SRequest. Both callbacks must be set; caseFinished always receives
/// Ok. If a case fails, prints a line. Exceptions of callbacks pass through. Call it on the thread that created the
/// environment.
LUTESTSUITE_API void Recreate(LuTestSuiteEnvironment& environment, const std::vector<LuTestSuite::SUnitTest>& unitTests,
                              ETargetSystem targetSystem, bool option, const SCallbacks& callbacks);

} // namespace LuTestSuiteRun
