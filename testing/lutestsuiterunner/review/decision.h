/// Accepts and rejects test output that differs from its references.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/review/changes.h"

namespace Runner
{

enum class EDecision
{
    Accept, ///< what was received becomes the reference
    Reject, ///< what was received is removed
};

/// The file in the reviewed folder that exists while a decision is carried out.
inline constexpr const wchar_t* c_DecisionFile = L"lutestsuite-review.pending";

/// Carries out a decision for all files or for none of them, even if the process is killed: the decision is written to
/// the disk before the first file changes, and FinishDecision completes it. Skips files that have changed since they
/// were read. `directory` contains all files. Throws LbException or a German message as std::wstring if a file cannot
/// be replaced; then all files are as before.
void Decide(const std::wstring& directory, EDecision decision, const std::vector<SReceivedFile>& files);

/// Finishes a decision that an earlier process left unfinished. Returns the number of its files, 0 if there is no such
/// decision. Throws as Decide; the decision then stays unfinished.
std::size_t FinishDecision(const std::wstring& directory);

} // namespace Runner
