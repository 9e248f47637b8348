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

/// What to do first.
struct SFirstAttempts
{
    std::vector<std::uint32_t> suspects; ///< run in processes of their own, before other cases (but see RunStages)
    std::vector<std::uint32_t> cases;    ///< finished cases and suspects are left out
};

/// True if the run has ended without a cancellation and no stage has a case left to run.
bool IsComplete(const CRunState& state, const SStages& stages);

/// Handles the cases that were under way in other hosts (see FindUnderWay): records the crashes, runs the repeated
/// cases, and returns the suspects.
std::vector<std::uint32_t> FinishUnderWay(CSession& session, const CRunState& state, const std::wstring& folder);

/// Runs the first attempts, then repeats all failed cases as often as demanded. If confirmations are demanded, cases
/// that failed in a shared process then run once more, each in its own process. Ends early when the session is
/// canceled; if cases are left then, records the cancellation. `siblings` may be null; otherwise the hosts of the shard
/// share the first attempts (see RunBesideSiblings), and the cases that were running when an earlier host was canceled
/// (see FindCanceled) run after the others, each in its own process. Thus the other cases get a verdict even if the
/// scheduler ends each host during such a case.
void RunStages(CSession& session, const CRunState& state, const SFirstAttempts& first, const SStages& stages,
               CSiblings* siblings = nullptr);

} // namespace Runner
