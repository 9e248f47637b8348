/// The steps that the commands "run" and "submit" have in common before a run begins.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/execution/previous.h"
#include "testing/lutestsuiterunner/model/plan.h"
#include "testing/lutestsuiterunner/settings/options.h"

namespace Runner
{

/// Throws a German message as std::wstring if another option needs --previous and --previous is missing.
void RequirePrevious(const SRunOptions& options);

/// With --only-failed, removes the cases that did not fail in the earlier run. Returns the number of cases that
/// --min-cases checks: that of the plan, or that of the selection if none of its cases had failed.
std::size_t ApplyOnlyFailed(const SRunOptions& options, const CPrevious& previous, SPlan& plan);

/// Warns if --fail-fast may end the run only after all cases have run once.
void WarnOfLateFailures(const SRunOptions& options);

/// Warns of suites that do not run because they have no folder, unless --require-all-modules makes them a problem of
/// the run.
void WarnOfSuitesWithoutFolder(const SRunOptions& options, const std::vector<std::wstring>& suites);

/// Warns of class folders that have files for cases only in subfolders, which are not searched.
void WarnOfInnerFolders(const SPlan& plan);

} // namespace Runner
