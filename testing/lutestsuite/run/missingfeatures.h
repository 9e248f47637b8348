/// Settings that this version reads but does not act on yet.
#pragma once

#include "testing/lutestsuite/lutestsuitesetup.h"

namespace LuTestSuiteRun
{

/// Prints one warning for each requested setting without effect, so that nobody takes a run for what it was not.
void WarnAboutMissingFeatures(const LuTestSuiteSetup& setup);

} // namespace LuTestSuiteRun
