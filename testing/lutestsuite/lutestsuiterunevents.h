/// The events of a run for a host's observer, and operations on the records of runs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/os/stacks.h"
#include "testing/lutestsuite/lutestsuiteexport.h"
#include "testing/lutestsuite/lutestsuiterun.h"

namespace LuTestSuiteRun
{

/// A run is about to begin. All references stay valid until Run returns. The lists and parameters do not change; the
/// records in `cases` do.
struct SRunPlanned
{
    const std::vector<LuTestSuite::SUnitTest>& unitTests;
    const SParams& params;               ///< parameters of the run; GetCaseParams returns those of a case
    const std::vector<SCaseInfo>& cases; ///< one per case run, unit test by unit test, case by case, repetition by
                                         ///< repetition; executing threads write into them as soon as cases start
    std::uint32_t attempt;               ///< see SRunOptions
};

/// A case is about to run.
struct SCaseStarted
{
    std::size_t index;       ///< index of the case run in the plan
    const SCaseInfo& info;   ///< unitTest, testCase, repetition and threadIndex are set; valid until the call returns
    std::uint64_t processId; ///< the id of the process that is to run the case: this one or a child; 0 if no child
                             ///< could be started. If the child ends before it takes the case, the case goes to another
                             ///< child, whose id is in SCaseEnd
};

/// How a case ended.
enum class ECaseEnd : std::uint32_t
{
    Returned = 0,     ///< the case was executed; the result is its verdict
    ChildEnded = 1,   ///< its child process ended without an answer: a crash, or an exit
    ChildMissing = 2, ///< no child process could be started
    TimedOut = 3,     ///< the run ended its child process at the time limit
    Canceled = 4,     ///< no verdict: the run was canceled before the case began (the result is Unknown), or while a
                      ///< child process ran it (the result is Canceled)
    Refused = 5       ///< a name is too long for the request, or the system could not wait for the child
};

/// Details about the end of a case.
struct SCaseEnd
{
    ECaseEnd kind = ECaseEnd::Returned;
    std::uint64_t processId = 0;            ///< the id of the process that ran the case; 0 if there was none
    std::optional<std::int64_t> exitStatus; ///< for ChildEnded: the child's exit status; on Linux, if a signal ended
                                            ///< the child, the negative number of the signal; empty if unknown
    std::wstring reason;                    ///< for ChildEnded and ChildMissing: a German sentence without a full stop
    std::vector<std::wstring> lastLines;    ///< for ChildEnded and TimedOut: the last lines, at most 64, that the case
                                            ///< has written to standard error
    std::vector<LbOs::SThreadStack> stacks; ///< for TimedOut, and for ChildEnded after a crash: the call stacks, see
                                            ///< SRunOptions; the stack of the thread at fault is the first
    std::wstring dumpFile;                  ///< for the same kinds: full path of the child's memory dump; empty if
                                            ///< there is none
    std::wstring dumpFailure;               ///< why the requested dump was not written, in German, without a full
                                            ///< stop; empty otherwise
};

/// A case has its result.
struct SCaseFinished
{
    std::size_t index;     ///< index of the case run in the plan
    const SCaseInfo& info; ///< complete; valid until the call returns
    const SCaseEnd& end;   ///< valid until the call returns
};

/// Watches a run. Each operation does nothing by default.
///
/// The calls come one at a time, under one lock that also guards the setup's checkCallback, in the order of the events:
/// OnPlanned first, OnEnded last. OnPlanned and OnEnded come on the thread that called Run. The others come on the
/// thread that executes the case or that noticed the cancellation. OnCaseStarted comes before any code of the case
/// runs. OnCaseFinished comes as soon as the result is known and before that thread starts another case, so a later
/// case cannot destroy what an observer has stored by then. Other threads with events wait during a call, so an
/// observer must be quick and must not wait for a case. Memory that an observer allocates counts for the cases that
/// other threads run with a heap tracker at that moment.
///
/// An exception of an observer ends the run: no further case starts, cases in child processes are canceled within about
/// a second, the observer is not called again, and Run throws the exception. OnEnded is not called if any exception
/// ends the run.
class LUTESTSUITE_API IRunObserver
{
public:
    virtual ~IRunObserver();

    /// Called once, before any case runs, also for a run without cases.
    virtual void OnPlanned(const SRunPlanned& planned);

    virtual void OnCaseStarted(const SCaseStarted& started);

    /// Called once for each started case, unless an exception ends the run first.
    virtual void OnCaseFinished(const SCaseFinished& finished);

    /// Called at most once, when checkCallback has returned true. The callback is not called again, and no further case
    /// starts. Running cases still report their ends.
    virtual void OnCanceled();

    /// Called when all cases have ended, with the result that Run returns. Run writes the reports of the setup
    /// afterwards. After a cancellation, the result marks cases of worker threads as not executed if their lines were
    /// not printed.
    virtual void OnEnded(const SRunResult& result);
};

/// Options of a run with an observer.
struct SRunOptions
{
    std::uint32_t attempt = 1; ///< passed on in SRunPlanned, for an observer of several runs; the host sets it to more
                               ///< than 1 if it repeats cases of an earlier run
    bool takeStacks = false;   ///< read the call stacks of a child process that crashes or is ended at the time limit
                               ///< (LbOs::ReadStacks), for SCaseEnd and as information lines of the case's messages.
                               ///< That delays the case's end by less than 2 s. A child that ends in another way, by
                               ///< exit or by a handler of a test module, has no stacks
    std::wstring dumpDirectory = {}; ///< full path of an existing folder for memory dumps (LbOs::WriteDump) of
                                     ///< children that crash or are ended at the time limit; empty: no dumps. A dump is
                                     ///< named after its case. Stacks and dump together delay the case's end by less
                                     ///< than 2 s
    /// Called before each case run would start, with its index in the plan, under the lock of the observer's calls. If
    /// it returns false, the case run is left out: it has no events, no console lines and no result. If empty, every
    /// case runs. An exception ends the run, as an exception of the observer does.
    std::function<bool(std::size_t)> isNeeded = {};
};

/// Like Run without an observer, with the same output; LuTestSuiteOut::SetConsoleOut switches the output off.
///
/// To run only some cases, or cases again, the host lists them in LuTestSuiteSetup::unitTests: the run executes the
/// list unchanged and searches no data directory; a class may occur several times. To run each case in its own process,
/// the host sets SParams::external and SParams::isolated.
LUTESTSUITE_API SRunResult Run(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment,
                               IRunObserver& observer, const SRunOptions& options = {});

/// The lines that a run adds to the messages of a case for its stacks, without the prefix of messages. Any thread.
LUTESTSUITE_API std::vector<std::wstring> DescribeStacks(const std::vector<LbOs::SThreadStack>& stacks);

/// The run's parameters, overridden by those of the case. If a value of the case cannot be read, the run's value stays.
/// Exception: any value of "Parallel" other than true means false. Any thread.
LUTESTSUITE_API SParams GetCaseParams(const SParams& runParams, const LuTestSuite::ParameterMap& caseParameters);

/// The statistics of the executed records; ignores records that were not executed. Does not set the start, end and
/// total time of the run. Precondition: each record's unitTest is less than `unitTestCount`. Any thread.
LUTESTSUITE_API SStats CountCases(const std::vector<SCaseInfo>& cases, std::size_t unitTestCount);

} // namespace LuTestSuiteRun
