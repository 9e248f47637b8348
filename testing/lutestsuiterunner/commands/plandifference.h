/// Differences between runs that may change the result of a case.
#pragma once

#include <string>

#include "testing/lutestsuiterunner/model/plan.h"

namespace Runner
{

/// What differs between the plans, as a German word: options, or builds. Empty if neither differs.
std::wstring FindDifference(const SPlan& first, const SPlan& other);

/// True if both builds were made of the same sources in the same configuration.
bool HaveSameBuild(const SOrigin& first, const SOrigin& other);

} // namespace Runner
