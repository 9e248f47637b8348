/// Receives the events of a run.
#pragma once

#include <cstdint>

#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// Calls come one at a time, on any thread, after the journal contains the event. Arguments are valid until the
/// operation returns.
class IRunListener
{
public:
    virtual ~IRunListener() = default;

    virtual void OnStarted(std::uint32_t caseIndex) = 0;

    /// `isFinal`: no retry can change the verdict.
    virtual void OnEnded(std::uint32_t caseIndex, const SAttempt& attempt, bool isFinal) = 0;
};

} // namespace Runner
