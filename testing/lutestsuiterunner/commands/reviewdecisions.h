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

/// Carries decisions out and prints them. Knows what the earlier ones have made of the files that several changes
/// share.
class CReviewDecisions : public INonCopyable
{
public:
    /// `directory` contains all files.
    explicit CReviewDecisions(std::wstring directory) : m_directory(std::move(directory)) {}

    /// The change without the files that are decided as a whole, and with the present references.
    SChange GetOpen(const SChange& change) const;

    /// Throws as Decide.
    void Carry(EDecision decision, const SChange& change);

    /// True if files were left alone.
    bool HasLeft() const { return m_hasLeft; }

private:
    std::wstring m_directory;
    std::map<std::wstring, SDecidedFile> m_decided; ///< by reference
    bool m_hasLeft = false;
};

} // namespace Runner
