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

/// Carries decisions out and prints them. When changes share a file, its reference gets the parts of all accepted
/// changes, found in the difference from the reference before the first decision. Rejecting a change removes what was
/// received; a warning counts the undecided changes that are removed with it.
class CReviewDecisions : public INonCopyable
{
public:
    /// `directory` contains all files. `undecided` are the changes that are removed without a decision if a change that
    /// shares a file with them is rejected; Carry removes its change from them.
    CReviewDecisions(std::wstring directory, std::vector<SChange> undecided)
        : m_directory(std::move(directory)), m_undecided(std::move(undecided))
    {
    }

    /// The change without the files that are decided as a whole, and with the present references.
    SChange GetOpen(const SChange& change) const;

    /// Throws as Decide.
    void Carry(EDecision decision, const SChange& change);

private:
    void warnOfDropped(const std::vector<SDecidedFile>& rejected) const;

    std::wstring m_directory;
    std::vector<SChange> m_undecided;
    std::map<std::wstring, SDecidedFile> m_decided; ///< by reference
};

} // namespace Runner
