/// The plan of a run: which case runs there are, with their parameters, and which of them may go parallel.
#pragma once

#include <deque>
#include <span>
#include <vector>

#include "testing/lutestsuite/lutestsuiterunevents.h"

namespace LuTestSuiteRun
{

/// One run of a case with all that an executor needs to know about it.
struct SPlannedCase
{
    const LuTestSuite::SUnitTest& unitTest;
    const LuTestSuite::STestCase& testCase;
    const SParams& params; ///< of the case, see GetCaseParams
    SCaseInfo& info;
};

using PlannedCases = std::span<const SPlannedCase>;

struct SPlan
{
    std::vector<SPlannedCase> parallel;   ///< case runs that may go parallel, in plan order; they come first
    std::vector<SPlannedCase> sequential; ///< the others, in plan order
    bool hasExternal = false;             ///< some run in child processes
    std::deque<SParams> ownParams;        ///< of the cases that have parameters; the others share those of the run
};

/// Unit test by unit test, case by case, repetition by repetition. Fills `cases` with the records, in plan order. The
/// plan refers to the arguments, which outlive it unchanged, but for what executors write into the records.
SPlan MakePlan(const std::vector<LuTestSuite::SUnitTest>& unitTests, const SParams& params,
               std::vector<SCaseInfo>& cases);

} // namespace LuTestSuiteRun
