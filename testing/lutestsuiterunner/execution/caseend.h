/// The record of a case that has ended.
#pragma once

#include "testing/lutestsuite/lutestsuiterunevents.h"
#include "testing/lutestsuiterunner/model/records.h"

namespace Runner
{

/// The record of what the library reports; the caller sets case, attempt and elapsed time. No line is in the record
/// twice: `output` contains only lines that the messages lack, and the stacks are not among the messages.
SCaseEnded MakeCaseEnd(const LuTestSuiteRun::SCaseFinished& finished);

} // namespace Runner
