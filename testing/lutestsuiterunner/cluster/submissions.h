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
/// submission has no shards until the process that makes it has written its file. If that process dies earlier, the
/// submission never gets shards.
std::vector<SSubmission> ReadSubmissions(const std::wstring& folder);

/// Records a submission before its tasks are submitted. Returns false if another process has already used its number.
/// Throws LbException with a German message if the file cannot be written.
bool ClaimSubmission(const std::wstring& folder, const SSubmission& submission);

/// One German line for each reason why shards were lost before this submission: "Teil 3 verloren (...), neu vergeben".
std::vector<std::wstring> DescribeLosses(const SSubmission& submission);

/// Formats ascending numbers for users and for Slurm's option --array: "1-3,7".
std::wstring FormatNumbers(const std::vector<std::uint32_t>& shards);

/// Marks the run as canceled: from now on no process submits tasks for it. Throws LbException with a German message if
/// the mark cannot be written.
void MarkCanceled(const std::wstring& folder);
bool IsMarkedCanceled(const std::wstring& folder);

} // namespace Runner
