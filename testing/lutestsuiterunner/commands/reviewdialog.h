/// The questions of "review".
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "base/inoncopyable.h"
#include "testing/lutestsuiterunner/commands/reviewdecisions.h"
#include "testing/lutestsuiterunner/console/changetext.h"

namespace Runner
{

/// Shows one change after the other and asks what to do with it.
class CReviewDialog : public INonCopyable
{
public:
    /// Reads one answer per line from `answers`; the end of the stream counts as the answer "e". `directory` and
    /// `answers` must outlive the object. `mayBecomeBlank`: accepts blank references without a further question.
    CReviewDialog(const std::wstring& directory, const SDiffStyle& style, bool mayBecomeBlank, std::istream& answers);

    /// Ends after the last change, or with the answer "e". If a decision cannot be carried out, prints an error line
    /// and asks again. Throws LbException if a file cannot be read or written.
    void Ask(const std::vector<SChange>& changes, CReviewDecisions& decisions) const;

private:
    void show(const SChange& change, const SDiffStyle& style) const;
    bool askFor(const SChange& change, CReviewDecisions& decisions) const;
    bool carry(EDecision decision, const SChange& change, CReviewDecisions& decisions) const;
    std::wstring readAnswer(const wchar_t* question) const;

    const std::wstring& m_directory;
    SDiffStyle m_style;
    bool m_mayBecomeBlank;
    std::istream& m_answers;
};

} // namespace Runner
