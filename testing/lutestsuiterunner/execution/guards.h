/// Checks that fail a run in which nothing was tested.
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuiterunner/settings/options.h"

namespace Runner
{

/// The modules of --dll that are missing: a German line for each.
std::vector<std::wstring> FindMissingModules(const LuTestSuiteSetup& setup);

/// The modules of --dll that are missing or could not be loaded: a German line for each. Call it after LoadModules.
std::vector<std::wstring> FindModuleProblems(const LuTestSuiteSetup& setup);

/// Throws the first problem of FindModuleProblems, for commands whose result would otherwise silently lack cases.
void RequireModules(const LuTestSuiteSetup& setup);

/// A German line about suites without a folder, which names up to three of them; empty if there are none.
std::wstring DescribeWithoutFolder(const std::vector<std::wstring>& suites);

/// Throws if the setup repeats cases. For commands that run each case once.
void RefuseRepetitions(const LuTestSuiteSetup& setup);

/// Problems that make the run red even if all its cases pass: fewer case runs than demanded; if all modules are
/// demanded, also the problems of FindModuleProblems, modules of the fixed list that exist but could not be loaded, and
/// suites without a folder. German, one line each.
std::vector<std::wstring> FindProblems(const SRunOptions& options, const LuTestSuiteSetup& setup, std::size_t caseCount,
                                       const std::vector<std::wstring>& suitesWithoutFolder = {});

} // namespace Runner
