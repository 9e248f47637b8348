/// The stages of a run, new or resumed.
#pragma once

#include <vector>

#include "testing/lutestsuiterunner/execution/session.h"

namespace Runner
{

/// What to do beyond the first attempts.
struct SStages
{
    std::uint32_t retries = 0;
    bool confirm = false;
};

/// Runs the cases that were under way in dead hosts (see FindUnderWay).
void FinishUnderWay(CSession& session, const CRunState& state, const std::wstring& folder);

/// Runs `cases`, then all failed cases again, as often as demanded, then those that failed in a process which they
/// shared once more in processes of their own. Ends early when the session is canceled.
void RunStages(CSession& session, const CRunState& state, const std::vector<std::uint32_t>& cases,
               const SStages& stages);

} // namespace Runner
