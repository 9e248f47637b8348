/// The steps that a new run and a resumed run have in common.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuiterunner/execution/order.h"
#include "testing/lutestsuiterunner/execution/quarantine.h"
#include "testing/lutestsuiterunner/journal/folder.h"
#include "testing/lutestsuiterunner/settings/options.h"

namespace Runner
{

/// The data of a run; owned by the caller.
struct SWork
{
    const SRunOptions& options;
    const LuTestSuiteSetup& setup;
    LuTestSuiteEnvironment& environment;
    const std::wstring& folder; ///< of the run, with separator at its end
    CRunState& state;
    const PreviousCases& previous; ///< by case index
};

/// Throws a German message as std::wstring if the folder contains a run and the options do not allow replacing it. Also
/// throws what RequireNoReport throws.
void RequireNoRun(const SRunOptions& options);

/// Throws a German message as std::wstring if the run would replace a report that no run has written, unless `isForced`
/// is set. `folder` ends in a separator.
void RequireNoReport(const std::wstring& folder, bool isForced);

/// Warns if the folder could not be locked, because its file system has no locks.
void WarnOfMissingLock(const std::wstring& folder, bool isLocked);

/// Warns of modules of --dll that are missing, unless --require-all-modules makes the run red because of them.
void WarnOfMissingModules(const SRunOptions& options, const LuTestSuiteSetup& setup);

/// Warns if the options ask for memory dumps or for a time limit, but no case of the plan runs in a child process.
void WarnOfUselessOptions(const SRunOptions& options, const SPlan& plan);

/// Warns of undecided differences from references anywhere in the data directory, and of interrupted decisions in this
/// directory or above it.
void WarnOfReceived(const SPlan& plan);

/// Makes the run's working directory the current one, because paths in the run's options are relative to it. Throws a
/// German message as std::wstring if the directory is gone.
void EnterWorkingDirectory(const SPlan& plan);

/// Calls EnterWorkingDirectory and returns the options with which the run began. Throws a German message as
/// std::wstring if the run has no such options or the directory is gone.
SRunOptions EnterRun(const SPlan& plan);

/// Records the problems, records the ends of interrupted attempts, runs the cases and their repetitions, and closes the
/// journal. Throws LbException if recording fails.
void CarryOut(const SWork& work, CJournalWriter& writer, const std::vector<std::wstring>& problems,
              const std::vector<std::uint32_t>& cases);

/// Reads the quarantine file of a run that already has a plan. The plan determines the cases in quarantine; the file
/// only tells for which patterns passed runs are counted. Warns and returns nothing if the file is gone. Throws what
/// ReadQuarantine throws.
Quarantine ReadQuarantineOf(const SRunOptions& options, const LuTestSuiteSetup& setup, SPlan plan);

/// Counts and prints the passed runs of the quarantine's entries after a complete run. Continues the counts of
/// `previous` if that is the folder of a run, else those of the run that `folder` contained before.
void ConcludeQuarantine(const CRunState& state, const std::wstring& folder, const std::wstring& previous,
                        Quarantine quarantine);

/// Writes the reports from the journal, prints the outcome of the run, concludes the quarantine, warns of differences
/// from references, and returns the exit status.
int Conclude(const std::wstring& folder, const std::wstring& previous, Quarantine quarantine);

} // namespace Runner
