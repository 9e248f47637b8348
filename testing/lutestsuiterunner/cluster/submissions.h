/// The submissions of a distributed run, recorded in its folder. Each file is written once, by the process that
/// succeeds in creating it, so no lock is needed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/cluster/engine.h"

namespace Runner
{

/// The submissions so far, by number. Here and below, `folder` is the run's folder with a separator at its end. A
/// submission has no shards until its process has written it; if the process dies before, it never has any.
std::vector<SSubmission> ReadSubmissions(const std::wstring& folder);

/// Records a submission before it is made. False if another process has the number already. Throws LbException with a
/// German message if the file cannot be written.
bool ClaimSubmission(const std::wstring& folder, const SSubmission& submission);

/// A German line for each reason for which shards were lost before the submission: "Teil 3 verloren (...), neu
/// vergeben".
std::vector<std::wstring> DescribeLosses(const SSubmission& submission);

/// Ascending numbers, as users and Slurm's option --array take them: "1-3,7".
std::wstring FormatNumbers(const std::vector<std::uint32_t>& shards);

/// From now on no process makes a submission for this run.
void MarkCanceled(const std::wstring& folder);
bool IsMarkedCanceled(const std::wstring& folder);

} // namespace Runner
