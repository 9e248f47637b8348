/// The stages of a run, new or resumed.
#pragma once

#include <vector>

#include "testing/lutestsuiterunner/execution/session.h"
#include "testing/lutestsuiterunner/execution/siblings.h"

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
/// `siblings` may be null; otherwise cases that have passed in another host of the shard are left out, and of two hosts
/// at work, the one with the later journal takes the cases in reverse order.
void RunStages(CSession& session, const CRunState& state, const std::vector<std::uint32_t>& cases,
               const SStages& stages, CSiblings* siblings = nullptr);

} // namespace Runner
