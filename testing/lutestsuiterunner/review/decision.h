/// Accepts and rejects test output that differs from its references.
#pragma once

#include <optional>
#include <string>

#include "testing/lutestsuiterunner/review/decisionrecords.h"

namespace Runner
{

/// Carries a decision out for all files or for none of them, also if the process is killed: the decision is written to
/// the disk before the first file changes, and FinishDecision does the rest. `directory` contains all files. Throws
/// LbException or a German message as std::wstring if a file or its reference has changed since it was read, has no
/// part of the change, or cannot be replaced; then all files are as before. A reference that is a link stays one, and
/// its target is replaced; links that lead to no file, or to the file of another reference, are refused.
SOutcome Decide(const std::wstring& directory, EDecision decision, const SChange& change);

/// Removes what is left of a decision that was interrupted before it began or after its end, unless another process
/// decides here.
void RemoveRemains(const std::wstring& directory);

/// Finishes a decision that an earlier process has not; counts what that has done, too. Nothing if there is no such
/// decision. If no reference has changed yet, and a run has made other output of one of the files, all files are put
/// back instead. Throws a German message as std::wstring if a file cannot be replaced or the decision's file is
/// damaged; the decision then remains to be finished.
std::optional<SOutcome> FinishDecision(const std::wstring& directory);

} // namespace Runner
