/// What happens in a run, while it happens, and what a host needs to work on the records of runs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/os/stacks.h"
#include "testing/lutestsuite/lutestsuiteexport.h"
#include "testing/lutestsuite/lutestsuiterun.h"

namespace LuTestSuiteRun
{

/// A run is about to begin. What the record refers to stays in its place until Run returns; unit tests, cases and
/// parameters do not change.
struct SRunPlanned
{
    const std::vector<LuTestSuite::SUnitTest>& unitTests;
    const SParams& params;               ///< of the run; GetCaseParams gives those of a case
    const std::vector<SCaseInfo>& cases; ///< one per case run, unit test by unit test, case by case, repetition by
                                         ///< repetition; executing threads write into them as soon as cases start
    std::uint32_t attempt;               ///< see SRunOptions
};

/// A case is about to run.
struct SCaseStarted
{
    std::size_t index;       ///< of the case run in the plan
    const SCaseInfo& info;   ///< unitTest, testCase, repetition and threadIndex are set; valid until the call returns
    std::uint64_t processId; ///< the id of the process that is to run the case: this one or a child; 0 if no child
                             ///< could be started. The case goes to another child if this one has ended before it took
                             ///< the case; SCaseEnd then has the id of the other child
};

/// Why a case runs no longer.
enum class ECaseEnd : std::uint32_t
{
    Returned = 0,     ///< it was executed; the result is its verdict
    ChildEnded = 1,   ///< its child process ended without an answer: a crash, or an exit
    ChildMissing = 2, ///< no child process could be started
    TimedOut = 3,     ///< its child process was ended at the time limit
    Canceled = 4,     ///< the run was canceled, before the case began (the result is Unknown) or while a child process
                      ///< ran it (the result is Canceled): there is no verdict
    Refused = 5       ///< a name is too long for the request, or the system could not wait for the child
};

/// The end of a case, beside its result.
struct SCaseEnd
{
    ECaseEnd kind = ECaseEnd::Returned;
    std::uint64_t processId = 0;            ///< the id of the process that ran the case; 0 for none
    std::optional<std::int64_t> exitStatus; ///< of ChildEnded: of the program; on Linux the negative number of the
                                            ///< signal that ended it; none if unknown
    std::wstring reason;                    ///< of ChildEnded and ChildMissing: a German sentence without a full stop
    std::vector<std::wstring> lastLines;    ///< of ChildEnded and TimedOut: the last lines, at most 64, that the case
                                            ///< has written to standard error
    std::vector<LbOs::SThreadStack> stacks; ///< of ChildEnded by a crash and of TimedOut, see SRunOptions; the one
                                            ///< at fault first
};

/// A case has its result.
struct SCaseFinished
{
    std::size_t index;     ///< of the case run in the plan
    const SCaseInfo& info; ///< complete; valid until the call returns
    const SCaseEnd& end;   ///< valid until the call returns
};

/// Watches a run. Each operation does nothing by default.
///
/// The calls come one at a time, under one lock that also guards the setup's checkCallback, in the order of the events:
/// OnPlanned first, OnEnded last. OnPlanned and OnEnded come on the thread that called Run. The others come on the
/// thread that executes the case or that noticed the cancellation. OnCaseStarted comes before anything of the case
/// runs, OnCaseFinished as soon as the result is known and before that thread starts another case: no later case can
/// lose what an observer has stored by its return. All other threads that have something to tell wait meanwhile, so
/// an observer must be quick and must not wait for a case. What it allocates is charged to the cases that other
/// threads run with a heap tracker at that moment.
///
/// An exception ends the run: no case starts any more, cases in child processes are canceled within about a second,
/// the observer is not called again, and the exception leaves Run. A run that any other exception ends has no OnEnded.
class LUTESTSUITE_API IRunObserver
{
public:
    virtual ~IRunObserver();

    /// Once, also for a run without cases, before any case runs.
    virtual void OnPlanned(const SRunPlanned& planned);

    virtual void OnCaseStarted(const SCaseStarted& started);

    /// Once for each started case, unless an exception ends the run meanwhile.
    virtual void OnCaseFinished(const SCaseFinished& finished);

    /// At most once: checkCallback has returned true. It is not asked again, and no case starts any more; those under
    /// way still finish.
    virtual void OnCanceled();

    /// All cases are through, and the result is what Run returns. Reports of the setup are written afterwards. After a
    /// cancellation, cases of worker threads whose lines were not printed any more are not executed in the result.
    virtual void OnEnded(const SRunResult& result);
};

/// How a watched run differs from others.
struct SRunOptions
{
    std::uint32_t attempt = 1; ///< passed on in SRunPlanned, for an observer of several runs: from 2 on a host repeats
                               ///< cases of an earlier run
    bool takeStacks = false;   ///< read the call stacks of a child process that crashes or is ended at the time limit
                               ///< (LbOs::ReadStacks), for SCaseEnd and as information lines of the case's messages.
                               ///< That delays the case's end by less than 2 s. A child that something else ends, an
                               ///< exit or a handler of a test module, has none
};

/// Runs as without an observer, with the same output (LuTestSuiteOut::SetConsoleOut replaces that).
///
/// LuTestSuiteSetup::unitTests chooses cases and their order, for parts of runs and for repeated cases: the run
/// executes the list unchanged, a class may occur several times, and no data directory is searched. SParams::external
/// with SParams::isolated runs each case in a process of its own.
LUTESTSUITE_API SRunResult Run(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment,
                               IRunObserver& observer, const SRunOptions& options = {});

/// The run's parameters, overridden by those of the case. A value that cannot be read keeps the run's, except for
/// "Parallel": any value other than true means false. Any thread.
LUTESTSUITE_API SParams GetCaseParams(const SParams& runParams, const LuTestSuite::ParameterMap& caseParameters);

/// The statistics of the executed records; records that were not executed count nowhere. Times of the run itself stay
/// empty. Each record's unitTest is less than `unitTestCount`. Any thread.
LUTESTSUITE_API SStats CountCases(const std::vector<SCaseInfo>& cases, std::size_t unitTestCount);

} // namespace LuTestSuiteRun
