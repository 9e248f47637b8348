/// The decisions of one call of "review".
#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "base/inoncopyable.h"
#include "testing/lutestsuiterunner/review/decision.h"

namespace Runner
{

/// Throws a German message as std::wstring if the change must not be accepted.
void RequireAcceptable(const SChange& change, bool mayBecomeBlank);

/// Carries decisions out and prints them. When changes share a file, its reference gets the parts of all accepted
/// changes, found in the difference from the reference before the first decision.
class CReviewDecisions : public INonCopyable
{
public:
    /// `directory` contains all files.
    explicit CReviewDecisions(std::wstring directory) : m_directory(std::move(directory)) {}

    /// The change without the files that are decided as a whole, and with the present references.
    SChange GetOpen(const SChange& change) const;

    /// Throws as Decide.
    void Carry(EDecision decision, const SChange& change);

private:
    std::wstring m_directory;
    std::map<std::wstring, SDecidedFile> m_decided; ///< by reference
};

} // namespace Runner
