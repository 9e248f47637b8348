/// Decisions on test output that differs from its references, and their outcomes.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/review/changes.h"

namespace Runner
{

enum class EDecision
{
    Accept, ///< the references get the change's parts; if it has no parts, the received files become the references,
            ///< except for line ends that were not shown
    Reject, ///< the received file is removed, with all of its parts
};

/// A file after a decision.
struct SDecidedFile
{
    std::wstring reference; ///< path
    std::wstring expected;  ///< checksum of the reference now; empty if there is none
    bool isOpen;            ///< other parts of the file remain to be decided
    std::shared_ptr<const SAccepted> accepted =
        nullptr; ///< input of the decisions on its other parts; null if there are no such parts
};

struct SOutcome
{
    std::vector<SDecidedFile> done;
    std::size_t left = 0; ///< number of files that stay open, because their references changed after an interruption
    std::wstring changed; ///< the file because of which FinishDecision has undone the decision; otherwise empty
};

} // namespace Runner
