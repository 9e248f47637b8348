/// What a run and a resumed run have in common.
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

/// All that a run works with; the caller keeps it.
struct SWork
{
    const SRunOptions& options;
    const LuTestSuiteSetup& setup;
    LuTestSuiteEnvironment& environment;
    CRunFolder& folder;
    CRunState& state;
    const PreviousCases& previous; ///< by case index
};

/// The cases that have no result yet, in the order that the options ask for.
std::vector<std::uint32_t> OrderMissingCases(const CRunState& state, const SRunOptions& options,
                                             const PreviousCases& previous);

/// Records the problems, finishes what was under way, runs the cases and all that follows from their results, and
/// closes the journal. Throws LbException if recording fails.
void CarryOut(const SWork& work, CJournalWriter& writer, const std::vector<std::wstring>& problems,
              const std::vector<std::uint32_t>& cases);

/// Makes the reports from the journal, prints how the run has ended, and returns the exit status. The numbers of the
/// quarantine go on from those of `previous` if that is the folder of a run, else from those that the run's folder
/// held before.
int Conclude(const CRunFolder& folder, const std::wstring& previous, Quarantine quarantine);

} // namespace Runner
