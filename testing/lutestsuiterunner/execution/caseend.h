/// The record of a case that has ended.
#pragma once

#include "testing/lutestsuite/lutestsuiterunevents.h"
#include "testing/lutestsuiterunner/model/records.h"

namespace Runner
{

/// The record of what the library reports; the caller sets case, attempt and elapsed time. The record contains each
/// line once: `output` contains only lines that the messages lack, and the messages do not contain the stacks.
SCaseEnded MakeCaseEnd(const LuTestSuiteRun::SCaseFinished& finished);

} // namespace Runner
