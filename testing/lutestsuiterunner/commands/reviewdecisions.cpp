#include "testing/lutestsuiterunner/commands/reviewdecisions.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <set>
#include <string_view>

#include "base/lbformat.h"
#include "base/lbreceivedfile.h"
#include "testing/lutestsuiterunner/console/changetext.h"
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
    // Also counts the files that earlier decisions of this call have decided as a whole, because the result is the
    // same.
    const std::size_t count = outcome.done.size() + (change.files.size() - open.files.size());
    CTerminal::Get().WriteOutput(decision == EDecision::Accept ? LbFormat(L"Übernommen: %s (%u)\n", change.id, count)
                                                               : LbFormat(L"Verworfen: %s (%u)\n", change.id, count));
    if (change.parts.empty())
    {
        // The change consists of whole files, so no part of them is left to decide.
        return;
    }
    std::erase_if(m_undecided, [&change](const SChange& other) { return other.checksum == change.checksum; });
    if (decision == EDecision::Reject)
    {
        warnOfDropped(outcome.done);
    }
}

void CReviewDecisions::warnOfDropped(const std::vector<SDecidedFile>& rejected) const
{
    std::set<std::wstring_view> removed;
    std::ranges::transform(rejected, std::inserter(removed, removed.end()), &SDecidedFile::reference);
    std::set<std::wstring_view> dropped;
    std::size_t changes = 0;
    for (const SChange& change : m_undecided)
    {
        const std::size_t before = changes;
        for (const SReceivedFile& file : change.files)
        {
            if (removed.contains(file.reference))
            {
                dropped.insert(file.reference);
                changes = before + 1;
            }
        }
    }
    if (changes > 0)
    {
        CTerminal::Get().WriteError(
            LbFormat(L"Warnung: ohne Entscheidung mit verworfen: %s in %s; ein neuer Lauf zeigt sie wieder\n",
                     changes == 1 ? std::wstring(L"1 andere Änderung") : LbFormat(L"%u andere Änderungen", changes),
                     FormatFileCount(dropped.size())));
    }
}

} // namespace Runner
