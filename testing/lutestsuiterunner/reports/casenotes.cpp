#include "testing/lutestsuiterunner/reports/casenotes.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "base/lbformat.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "testing/lutestsuiterunner/model/textlines.h"
#include "testing/lutestsuiterunner/reports/processlists.h"

namespace Runner
{

namespace
{

constexpr std::wstring_view c_ErrorMark = L"ERROR: ";

void addAttempts(const CRunState& state, std::uint32_t caseIndex, std::vector<std::wstring>& notes)
{
    for (const SAttempt& attempt : state.GetAttempts(caseIndex))
    {
        if (attempt.IsFinished())
        {
            notes.push_back(LbFormat(L"%u. Versuch%s: %s", attempt.result.attempt,
                                     attempt.kind == EAttemptKind::Confirm ? L" (im eigenen Prozess)" : L"",
                                     attempt.HasPassed() ? std::wstring(L"bestanden") : GetFailureLine(attempt)));
        }
    }
}

void addDuplicates(const CRunState& state, std::uint32_t caseIndex, std::vector<std::wstring>& notes)
{
    for (const SAttempt& attempt : state.GetAttempts(caseIndex))
    {
        if (attempt.duplicates > 0)
        {
            notes.push_back(LbFormat(L"%u. Versuch: noch %u Ergebnisse von anderen Prozessen, die nicht zählen",
                                     attempt.result.attempt, attempt.duplicates));
        }
    }
}

/// Names the latest predecessor first, because it is the most likely cause.
void addPredecessors(const CRunState& state, const SAttempt& attempt, std::vector<std::wstring>& notes)
{
    constexpr std::size_t c_Shown = 10;
    const std::span<const std::uint32_t> cases = state.GetPredecessors(attempt);
    notes.push_back(cases.empty() ? std::wstring(L"Im selben Prozess endete davor kein anderer Testfall")
                    : cases.size() == 1
                        ? std::wstring(L"Im selben Prozess lief davor ein Testfall:")
                        : LbFormat(L"Im selben Prozess liefen davor %u Testfälle, zuletzt:", cases.size()));
    const std::size_t shown = std::min(cases.size(), c_Shown);
    for (std::size_t back = 1; back <= shown; ++back)
    {
        notes.push_back(L"  " + GetCaseName(state.GetPlan(), cases[cases.size() - back]));
    }
    if (cases.size() > c_Shown)
    {
        notes.push_back(
            LbFormat(L"  alle: die ersten %u Zeilen von %s", cases.size(), GetProcessListName(attempt.process)));
    }
}

} // namespace

std::wstring GetFailureLine(const SAttempt& attempt)
{
    for (const std::wstring& line : SplitLines(attempt.result.info.messages))
    {
        if (const std::size_t mark = line.find(c_ErrorMark); mark != std::wstring::npos)
        {
            return line.substr(mark + c_ErrorMark.size());
        }
    }
    return attempt.result.reason.empty() ? LuTestSuiteReport::toDescriptionString(attempt.result.info.result)
                                         : attempt.result.reason;
}

std::vector<std::wstring> GetCaseNotes(const CRunState& state, std::uint32_t caseIndex)
{
    std::vector<std::wstring> notes;
    const SAttempt* const reported = state.GetReported(caseIndex);
    const EVerdict verdict = state.GetVerdict(caseIndex);
    if (state.GetPlan().cases[caseIndex].isQuarantined)
    {
        notes.emplace_back(L"In Quarantäne");
    }
    if (verdict == EVerdict::Flaky)
    {
        notes.push_back(LbFormat(L"Unzuverlässig: erst beim %u. Versuch bestanden", reported->result.attempt));
    }
    if (verdict == EVerdict::FailedShared)
    {
        notes.emplace_back(L"Fehler nur im gemeinsamen Prozess");
        addPredecessors(state, *reported, notes);
    }
    if (state.GetAttempts(caseIndex).size() > 1)
    {
        addAttempts(state, caseIndex, notes);
    }
    addDuplicates(state, caseIndex, notes);
    // A case that ended the host has lost its messages, so a note gives the reason.
    if (reported != nullptr && reported->result.info.messages.find(reported->result.reason) == std::wstring::npos)
    {
        notes.push_back(L"Der Prozess endete: " + reported->result.reason);
    }
    if (reported != nullptr && !reported->result.core.empty())
    {
        notes.push_back(L"Speicherabbild: " + reported->result.core);
    }
    return notes;
}

} // namespace Runner
