#include "testing/lutestsuiterunner/commands/reviewdecisions.h"

#include <algorithm>

#include "base/lbformat.h"
#include "base/lbreceivedfile.h"
#include "testing/lutestsuiterunner/console/terminal.h"

namespace Runner
{

void RequireAcceptable(const SChange& change, bool mayBecomeBlank)
{
    const auto unrepeated = std::ranges::find(change.files, false, &SReceivedFile::isRepeated);
    if (unrepeated != change.files.end())
    {
        throw LbFormat(L"Änderung %s ist noch nicht in %u Läufen gleich, etwa %s: zuerst den Lauf wiederholen",
                       change.id, LbReceivedFile::c_EnoughRuns, unrepeated->reference);
    }
    if (change.kind == EChange::Blank && !mayBecomeBlank)
    {
        throw LbFormat(L"Mit Änderung %s wären Referenzen leer, etwa %s: das verlangt '--accept-empty'", change.id,
                       change.files.front().reference);
    }
}

SChange CReviewDecisions::GetOpen(const SChange& change) const
{
    SChange open = change;
    std::erase_if(open.files, [this](SReceivedFile& file) {
        const auto decided = m_decided.find(file.reference);
        if (decided == m_decided.end())
        {
            return false;
        }
        file.expected = decided->second.expected;
        file.earlier = decided->second.accepted;
        return !decided->second.isOpen;
    });
    return open;
}

void CReviewDecisions::Carry(EDecision decision, const SChange& change)
{
    const SChange open = GetOpen(change);
    SOutcome outcome;
    if (!open.files.empty())
    {
        outcome = Decide(m_directory, decision, open);
    }
    for (const SDecidedFile& file : outcome.done)
    {
        m_decided.insert_or_assign(file.reference, file);
    }
    // An earlier decision of this call may have decided some of these files as a whole, with the same result.
    const std::size_t count = outcome.done.size() + (change.files.size() - open.files.size());
    CTerminal::Get().WriteOutput(decision == EDecision::Accept ? LbFormat(L"Übernommen: %s (%u)\n", change.id, count)
                                                               : LbFormat(L"Verworfen: %s (%u)\n", change.id, count));
}

} // namespace Runner
