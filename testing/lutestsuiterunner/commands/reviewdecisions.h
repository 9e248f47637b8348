/// The decisions of one call of "review".
#pragma once

#include <map>
#include <string>
#include <vector>

#include "base/inoncopyable.h"
#include "testing/lutestsuiterunner/review/decision.h"

namespace Runner
{

/// Throws a German message as std::wstring if the change must not be accepted.
void RequireAcceptable(const SChange& change, bool mayBecomeBlank);

/// Carries out decisions and prints them. If accepted changes share a file, its reference gets the parts of all of
/// them; the parts refer to the reference as it was before the first decision. Rejecting a change removes the received
/// file; a warning counts the undecided changes that are lost with it.
class CReviewDecisions : public INonCopyable
{
public:
    /// `directory` contains all files. `undecided` are the changes without a decision: they are lost in each file that
    /// they share with a rejected change. Carry removes the change that it decides from this list.
    CReviewDecisions(std::wstring directory, std::vector<SChange> undecided)
        : m_directory(std::move(directory)), m_undecided(std::move(undecided))
    {
    }

    /// Returns the change without the files that are completely decided, and with the current checksums of references.
    SChange GetOpen(const SChange& change) const;

    /// Carries out one decision. Throws what Decide throws.
    void Carry(EDecision decision, const SChange& change);

private:
    void warnOfDropped(const std::vector<SDecidedFile>& rejected) const;

    std::wstring m_directory;
    std::vector<SChange> m_undecided;
    std::map<std::wstring, SDecidedFile> m_decided; ///< by reference
};

} // namespace Runner
