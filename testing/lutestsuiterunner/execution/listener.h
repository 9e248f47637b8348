/// Who hears of a run while it goes on.
#pragma once

#include <cstdint>

#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// Calls come one at a time, on any thread, after the journal has the event. What an operation gets is valid until it
/// returns.
class IRunListener
{
public:
    virtual ~IRunListener() = default;

    virtual void OnStarted(std::uint32_t caseIndex) = 0;

    /// `isFinal`: no retry follows that could change the verdict.
    virtual void OnEnded(std::uint32_t caseIndex, const SAttempt& attempt, bool isFinal) = 0;
};

} // namespace Runner
