/// Accepts and rejects test output that differs from its references.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/review/changes.h"

namespace Runner
{

enum class EDecision
{
    Accept, ///< the change's parts are taken over into the references, or what was received becomes the reference
    Reject, ///< what was received is removed, with all of its parts
};

/// What a decision has done to a file.
struct SDecidedFile
{
    std::wstring reference; ///< path
    std::wstring expected;  ///< checksum of the reference now; empty if there is none
    bool isOpen;            ///< other parts of the file remain to be decided
};

struct SOutcome
{
    std::vector<SDecidedFile> done;
    std::size_t left = 0; ///< files that were left alone because they had changed since they were read
};

/// Carries a decision out for all files or for none of them, also if the process is killed: the decision is written to
/// the disk before the first file changes, and FinishDecision does the rest. Leaves files alone if they or their
/// references have changed since they were read. `directory` contains all files. Throws LbException or a German message
/// as std::wstring if a file cannot be replaced; then all files are as before.
SOutcome Decide(const std::wstring& directory, EDecision decision, const SChange& change);

/// Finishes a decision that an earlier process has not; counts what that has done, too. Nothing if there is no such
/// decision. Throws a German message as std::wstring if a file cannot be replaced or the decision's file is damaged;
/// the decision then remains to be finished. Without its file, what is not done of it can be reviewed again.
std::optional<SOutcome> FinishDecision(const std::wstring& directory);

} // namespace Runner
