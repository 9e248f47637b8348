/// A made-up run for the tests of journals and reports.
#pragma once

#include <cstdint>
#include <random>
#include <string>

#include "testing/lutestsuiterunner/model/plan.h"
#include "testing/lutestsuiterunner/model/records.h"

/// Three unit tests with six enabled cases and one disabled case. Two of the unit tests have the same class, in
/// different folders.
Runner::SPlan MakeSamplePlan(std::uint32_t repetitions = 1);

/// Random text of at most `longest` code units of any kind: control characters, lone surrogates, quotes, markup.
std::wstring MakeRandomText(std::mt19937& random, std::size_t longest);

Runner::SCaseStarted MakeStart(std::uint32_t caseIndex, std::uint32_t attempt = 1,
                               Runner::EAttemptKind kind = Runner::EAttemptKind::First);

Runner::SCaseEnded MakeEnd(std::uint32_t caseIndex, LuTestSuiteRun::ECaseRunResult result, std::uint32_t attempt = 1);

/// All fields of a record as text, for comparisons.
std::string ToText(const Runner::Record& record);
