/// The plan of a run: which case runs there are, and which of them may go parallel.
#pragma once

#include <vector>

#include "testing/lutestsuite/lutestsuiterun.h"

namespace LuTestSuiteRun
{

struct SPlan
{
    std::vector<SCaseInfo> cases;        ///< in plan order
    std::vector<std::uint32_t> parallel; ///< indices of case runs that may go parallel, in plan order; they come first
    std::vector<std::uint32_t> sequential; ///< indices of the others, in plan order
    bool hasExternal = false;              ///< some run in child processes
};

/// Unit test by unit test, case by case, repetition by repetition.
SPlan MakePlan(const std::vector<LuTestSuite::SUnitTest>& unitTests, const SParams& params);

} // namespace LuTestSuiteRun
