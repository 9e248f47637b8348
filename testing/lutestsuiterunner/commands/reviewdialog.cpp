#include "testing/lutestsuiterunner/commands/reviewdialog.h"

#include <istream>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbformat.h"
#include "testing/lutestsuiterunner/console/terminal.h"

namespace Runner
{

CReviewDialog::CReviewDialog(const std::wstring& directory, const SDiffStyle& style, bool mayBecomeBlank,
                             std::istream& answers)
    : m_directory(directory), m_style(style), m_mayBecomeBlank(mayBecomeBlank), m_answers(answers)
{
}

void CReviewDialog::Ask(const std::vector<SChange>& changes, CReviewDecisions& decisions) const
{
    for (std::size_t index = 0; index < changes.size(); ++index)
    {
        const SChange change = decisions.GetOpen(changes[index]);
        if (change.files.empty())
        {
            continue;
        }
        CTerminal::Get().WriteColoured(LbFormat(L"\n[%u/%u] ", index + 1, changes.size()) +
                                       FormatTitle(change, m_directory));
        show(change, m_style);
        if (!askFor(change, decisions))
        {
            return;
        }
    }
    CTerminal::Get().WriteOutput(L"Keine weiteren Änderungen\n");
}

void CReviewDialog::show(const SChange& change, const SDiffStyle& style) const
{
    CTerminal::Get().WriteColoured(ShowDifference(change, change.files.front(), m_directory, style));
}

/// False if the user ends the review.
bool CReviewDialog::askFor(const SChange& change, CReviewDecisions& decisions) const
{
    while (true)
    {
        const std::wstring answer =
            readAnswer(L"Übernehmen (j), verwerfen (v), nebeneinander (n), Dateien (d), weiter (w), Ende (e)? ");
        if (answer == L"j" && carry(EDecision::Accept, change, decisions))
        {
            return true;
        }
        if (answer == L"v" && carry(EDecision::Reject, change, decisions))
        {
            return true;
        }
        if (answer == L"n")
        {
            SDiffStyle style = m_style;
            style.isSideBySide = true;
            show(change, style);
        }
        if (answer == L"d")
        {
            CTerminal::Get().WriteOutput(FormatFiles(change, m_directory, L"    "));
        }
        if (answer == L"w" || answer == L"e")
        {
            return answer == L"w";
        }
    }
}

/// False if the change must not be accepted, the user withdraws the answer, or files have changed meanwhile.
bool CReviewDialog::carry(EDecision decision, const SChange& change, CReviewDecisions& decisions) const
try
{
    if (decision == EDecision::Accept)
    {
        RequireAcceptable(change, true);
        if (change.kind == EChange::Blank && !m_mayBecomeBlank &&
            readAnswer(L"Diese Referenzen wären leer. Wirklich (ja/nein)? ") != L"ja")
        {
            return false;
        }
    }
    decisions.Carry(decision, change);
    return true;
}
catch (const std::wstring& reason)
{
    CTerminal::Get().WriteError(L"Fehler: " + reason + L"\n");
    return false;
}

/// The end of the input ends the review.
std::wstring CReviewDialog::readAnswer(const wchar_t* question) const
{
    CTerminal::Get().WriteOutput(question);
    std::string line;
    if (!std::getline(m_answers, line))
    {
        return L"e";
    }
    return LbEncoding::FromUtf8(line.ends_with('\r') ? line.substr(0, line.size() - 1) : line);
}

} // namespace Runner
