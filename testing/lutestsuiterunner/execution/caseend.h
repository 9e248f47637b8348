/// The record of a case that has come to its end.
#pragma once

#include "testing/lutestsuite/lutestsuiterunevents.h"
#include "testing/lutestsuiterunner/model/records.h"

namespace Runner
{

/// What the library tells of it; case, attempt and elapsed time are the caller's. No line stands in the record twice:
/// `output` is what the messages do not have, and the stacks are not among the messages.
SCaseEnded MakeCaseEnd(const LuTestSuiteRun::SCaseFinished& finished);

} // namespace Runner
