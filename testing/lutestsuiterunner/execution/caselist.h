/// Case runs of a plan as unit tests for the library.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "testing/lutestsuiterunner/model/plan.h"

namespace Runner
{

/// The list for LuTestSuiteSetup::unitTests that runs these cases in this order, each once. With `isApart`, each case
/// runs in its own child process, even if its description says otherwise.
std::vector<LuTestSuite::SUnitTest> MakeCaseList(const SPlan& plan, std::span<const std::uint32_t> cases, bool isApart);

} // namespace Runner
