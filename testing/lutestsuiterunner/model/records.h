/// The events of a run, as its journal records them. The state of a run is made from these records, both during the run
/// and when journal files are read.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "testing/lutestsuite/lutestsuiterun.h"

namespace Runner
{

/// The reason for an attempt.
enum class EAttemptKind : std::uint32_t
{
    First = 0,
    Retry = 1,  ///< runs a failed case again
    Confirm = 2 ///< runs a case that failed in a shared process again, in its own process
};

/// How an attempt ended. The first six values are those of the library's run events.
enum class EAttemptEnd : std::uint32_t
{
    Returned = 0,
    ChildEnded = 1,
    ChildMissing = 2,
    TimedOut = 3,
    Canceled = 4, ///< it has no verdict; a resumed run repeats it
    Refused = 5,
    HostEnded = 6 ///< the case ran in the host's process and ended that process
};

/// The first record of each journal.
struct SJournalBegun
{
    std::string planDigest;      ///< of the plan's file
    std::uint64_t caseCount = 0; ///< of the plan
    std::uint32_t journal = 1;   ///< number of the file among the folder's journals, from 1
    std::wstring hostVersion;    ///< this and the following members are information only
    std::uint64_t processId = 0; ///< of the host
    std::wstring machine;
    std::wstring time; ///< local, "Y-m-d H:i:s"
};

/// An attempt begins. In all records, `elapsed` is monotonic time since the journal began, in nanoseconds; the writer
/// sets it if it is 0.
struct SCaseStarted
{
    std::uint32_t caseIndex = 0; ///< into SPlan::cases
    std::uint32_t attempt = 1;   ///< 1, 2, ...; an interrupted attempt is repeated with the same number
    EAttemptKind kind = EAttemptKind::First;
    std::int32_t worker = -1;    ///< -1 for none
    std::uint64_t processId = 0; ///< process that runs it; 0 if unknown
    std::uint64_t elapsed = 0;
};

/// An attempt has its result.
struct SCaseEnded
{
    std::uint32_t caseIndex = 0;
    std::uint32_t attempt = 1;
    EAttemptEnd end = EAttemptEnd::Returned;
    LuTestSuiteRun::SCaseInfo info; ///< unitTest, testCase and repetition come from the plan and are not recorded
    std::uint64_t processId = 0;    ///< of the process that ran it last
    std::optional<std::int64_t> exitStatus;
    std::wstring reason; ///< German, one line: why the child process or the host ended
    std::wstring output; ///< last lines on standard error, each with its line feed; empty if the messages contain them
    std::wstring stacks; ///< lines of text, each with its line feed; the thread at fault first
    std::wstring core;   ///< full path of the process's memory dump; empty without one
    std::uint64_t elapsed = 0;
};

/// The run is canceled, for example by the user, a signal, or the first failure.
struct SRunCanceled
{
    std::wstring reason; ///< German
    std::uint64_t elapsed = 0;
};

/// A problem apart from the cases that makes the run red: a module that does not load, too few cases, a missing shard.
struct SRunProblem
{
    std::wstring text; ///< German, one line
};

/// The host has finished. The last record of a journal.
struct SRunFinished
{
    std::wstring time; ///< local, "Y-m-d H:i:s"
    std::uint64_t elapsed = 0;
};

using Record = std::variant<SJournalBegun, SCaseStarted, SCaseEnded, SRunCanceled, SRunProblem, SRunFinished>;

} // namespace Runner
