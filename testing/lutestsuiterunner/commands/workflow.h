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
    CRunFolder& folder;
    CRunState& state;
    const PreviousCases& previous; ///< by case index
};

/// The cases that have no result yet, in the order that the options ask for.
std::vector<std::uint32_t> OrderMissingCases(const CRunState& state, const SRunOptions& options,
                                             const PreviousCases& previous);

/// Records the problems, records the ends of interrupted attempts, runs the cases and their repetitions, and closes the
/// journal. Throws LbException if recording fails.
void CarryOut(const SWork& work, CJournalWriter& writer, const std::vector<std::wstring>& problems,
              const std::vector<std::uint32_t>& cases);

/// Writes the reports from the journal, prints the outcome of the run, and returns the exit status. The quarantine
/// continues the counts of `previous` if that is the folder of a run, else those of the run that the folder contained
/// before.
int Conclude(const CRunFolder& folder, const std::wstring& previous, Quarantine quarantine);

} // namespace Runner
