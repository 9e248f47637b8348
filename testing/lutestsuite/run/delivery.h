/// The end of a case, whichever way it ran.
#pragma once

#include <functional>

#include "testing/lutestsuite/run/consolelines.h"

namespace LuTestSuiteRun
{

/// Delivers a finished case: completes its console line, tells the host its result and marks its record executed. By
/// the thread that owns the run's console, behind the case's header.
inline void DeliverCase(const CCaseLines& lines, const std::function<void(ECaseRunResult)>& caseFinished,
                        SCaseInfo& info)
{
    lines.WriteResult(info);
    caseFinished(info.result);
    info.executed = true;
}

} // namespace LuTestSuiteRun
