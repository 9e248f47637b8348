/// The commands. Each returns the exit status.
///
/// Each throws a German message as std::wstring if the call is wrong. Each may also throw LbException.
#pragma once

#include "testing/lutestsuiterunner/settings/options.h"

namespace Runner
{

int Execute(const SRunOptions& options);
int Execute(const SResumeOptions& options);
int Execute(const SReportOptions& options);
int Execute(const SMergeOptions& options);
int Execute(const SListOptions& options);
int Execute(const SCaseOptions& options);
int Execute(const SHistoryOptions& options);
int Execute(const SSubmitOptions& options);
int Execute(const SStatusOptions& options);
int Execute(const SWaitOptions& options);
int Execute(const SCancelOptions& options);
int Execute(const SFoldersOptions& options);
int Execute(const SReviewOptions& options);

} // namespace Runner
