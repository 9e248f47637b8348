/// Who has been asked to carry out what, as the folder of a distributed run records it. Each file is written once, by
/// the process that could create it; nothing is locked.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/cluster/engine.h"

namespace Runner
{

/// The submissions so far, by number. `folder` is the run's, with separator at its end, as for all that follow. Of one
/// whose process died while it wrote, the shards are unknown and left out.
std::vector<SSubmission> ReadSubmissions(const std::wstring& folder);

/// Records a submission before it is made. False if another process has the number already. Throws LbException with a
/// German message if the file cannot be written.
bool ClaimSubmission(const std::wstring& folder, const SSubmission& submission);

/// From now on no process makes a submission for this run.
void MarkCanceled(const std::wstring& folder);
bool IsMarkedCanceled(const std::wstring& folder);

} // namespace Runner
