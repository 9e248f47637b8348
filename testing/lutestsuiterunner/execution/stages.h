/// The stages of a run, new or resumed.
#pragma once

#include <vector>

#include "testing/lutestsuiterunner/execution/session.h"

namespace Runner
{

/// What to do after the first attempts.
struct SStages
{
    std::uint32_t retries = 0;
    bool confirm = false;
};

/// True if the run has ended without a cancellation and no stage has a case left to run.
bool IsComplete(const CRunState& state, const SStages& stages);

/// Runs the cases that were under way in dead hosts (see FindUnderWay).
void FinishUnderWay(CSession& session, const CRunState& state, const std::wstring& folder);

/// Runs `cases`, then repeats all failed cases as often as demanded. Cases that failed in a shared process then run
/// once more, each in its own process. Ends early when the session is canceled; if cases are left then, records that.
void RunStages(CSession& session, const CRunState& state, const std::vector<std::uint32_t>& cases,
               const SStages& stages);

} // namespace Runner
