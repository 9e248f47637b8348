/// Accepts and rejects test output that differs from its references.
#pragma once

#include <optional>
#include <string>

#include "testing/lutestsuiterunner/review/decisionrecords.h"

namespace Runner
{

/// Carries out a decision for all files or for no file. The decision is written to the disk before the first file
/// changes, so that FinishDecision can complete it if the process is killed. `directory` contains all files. Throws
/// LbException or a German message as std::wstring if a file or its reference has changed since it was read, does not
/// contain the change, or cannot be replaced; then all files are as before. A reference that is a link stays a link,
/// and its target is replaced; links that lead to no file, or to the file of another reference, are refused.
SOutcome Decide(const std::wstring& directory, EDecision decision, const SChange& change);

/// Removes the temporary files of a decision that was interrupted before its first step or after its last one. Does
/// nothing while another process decides in this folder.
void RemoveRemains(const std::wstring& directory);

/// Finishes a decision of an earlier process; the outcome includes what that process has done. Empty if there is no
/// such decision. If no reference has changed yet, and a run has made other output for one of the files, the decision
/// is undone instead. Throws a German message as std::wstring if a file cannot be replaced or the decision's file is
/// damaged; the decision then stays unfinished.
std::optional<SOutcome> FinishDecision(const std::wstring& directory);

} // namespace Runner
