#include "testing/lutestsuiterunner/commands/outcome.h"

#include <functional>
#include <set>
#include <utility>

#include "base/lbformat.h"
#include "base/os/folderlock.h"
#include "testing/lutestsuitehost/hostmain.h"
#include "testing/lutestsuiterunner/console/casetext.h"
#include "testing/lutestsuiterunner/console/closing.h"
#include "testing/lutestsuiterunner/console/terminal.h"
#include "testing/lutestsuiterunner/model/skips.h"
#include "testing/lutestsuiterunner/reports/opencases.h"
#include "testing/lutestsuiterunner/reports/redreasons.h"
#include "testing/lutestsuiterunner/reports/reports.h"

namespace Runner
{

namespace
{

constexpr std::size_t c_CasesShown = 20;

/// One line with the title for each of the first cases, and one line with the number of the others.
std::wstring listCases(
    const std::wstring& title, const SPlan& plan, const std::vector<std::uint32_t>& cases,
    const std::function<std::wstring(std::uint32_t)>& getNote = [](std::uint32_t /*index*/) { return std::wstring(); })
{
    std::wstring text;
    for (std::size_t index = 0; index < cases.size() && index < c_CasesShown; ++index)
    {
        text += LbFormat(L"%s: %s%s\n", title, GetCaseName(plan, cases[index]), getNote(cases[index]));
    }
    return cases.size() <= c_CasesShown ? text
                                        : text + LbFormat(L"%s: %u weitere\n", title, cases.size() - c_CasesShown);
}

/// The cases that ran until the run was canceled, each with its time.
std::wstring describeCanceled(const CRunState& state, const std::vector<std::uint32_t>& cases)
{
    return listCases(L"Lief beim Abbruch", state.GetPlan(), cases, [&state](std::uint32_t index) {
        return LbFormat(L" (%s)", FormatTime(state.GetAttempts(index).back().result.info.time));
    });
}

/// The cases that were under way when hosts ended, and what these hosts printed.
std::wstring describeInterrupted(const CRunState& state, const SOpenCases& open)
{
    std::vector<std::uint32_t> cases;
    std::set<std::wstring> notes;
    for (const auto& [index, note] : open.interrupted)
    {
        cases.push_back(index);
        notes.insert(note);
    }
    std::wstring text = listCases(L"Lief noch, als der Prozess des Laufs endete", state.GetPlan(), cases);
    for (const std::wstring& note : notes)
    {
        text += note.empty() ? L"" : L"Meldungen dieses Prozesses:\n" + note;
    }
    return text;
}

/// The cases without a result: those under way, and those that were not started.
std::wstring describeMissing(const CRunState& state, const SOpenCases& open)
{
    std::vector<std::uint32_t> missing = state.GetMissingCases();
    std::erase_if(missing, [&open](std::uint32_t index) { return open.Contains(index); });
    return listCases(L"Nicht ausgeführt", state.GetPlan(), missing) +
           listCases(L"Noch in Arbeit", state.GetPlan(), open.running) + describeCanceled(state, open.canceled) +
           describeInterrupted(state, open);
}

/// The counts of verdicts, the problems of the whole run, the first missing cases, and the paths of the reports.
std::wstring describeOutcome(const CRunState& state, const std::wstring& folder, bool isInProgress)
{
    const SVerdictCounts counts = state.CountVerdicts();
    std::wstring text = describeMissing(state, FindOpenCases(state, folder, isInProgress));
    for (const std::wstring& problem : state.GetProblems())
    {
        text += LbFormat(L"Fehler: %s\n", problem);
    }
    if (const std::size_t flaky = FindRedFlakyCases(state).size(); flaky > 0)
    {
        text += LbFormat(L"Fehler: %s\n", DescribeRedFlakyCases(flaky));
    }
    if (state.IsCanceled())
    {
        text += LbFormat(L"Der Lauf wurde abgebrochen: %s\n", state.GetCancelReason());
    }
    else if (!state.IsEnded())
    {
        text += isInProgress ? L"Der Lauf ist noch nicht zu Ende.\n" : L"Der Lauf ist nicht beendet.\n";
    }
    // A merged run has no arguments and cannot be resumed. A distributed run and its shards cannot be resumed either.
    const bool isDistributed = state.GetPlan().partCount != 0 || state.GetPlan().part;
    const bool isOwn = !state.GetPlan().arguments.empty() && !isDistributed;
    if ((state.IsCanceled() || !state.IsEnded()) && isOwn && !isInProgress)
    {
        text += DescribeResuming(folder);
    }
    const std::uint32_t skipped = CountSkipped(state);
    text += LbFormat(L"Fälle: %u, bestanden: %u%s, unzuverlässig: %u, fehlgeschlagen: %u, in Quarantäne: %u, nicht "
                     L"ausgeführt: %u\n",
                     counts.planned, counts.passed,
                     skipped == 0 ? std::wstring() : LbFormat(L" (davon %u übersprungen)", skipped), counts.flaky,
                     counts.failed, counts.quarantined, counts.missing);
    return text + LbFormat(L"Reports: %s\n", folder);
}

void print(const CRunState& state, const std::wstring& folder, bool isInProgress)
{
    for (const std::wstring& warning : state.GetWarnings())
    {
        CTerminal::Get().WriteError(LbFormat(L"Warnung: %s\n", warning));
    }
    CTerminal::Get().WriteOutput(DescribeClosing(state, folder) + describeOutcome(state, folder, isInProgress));
}

} // namespace

std::unique_ptr<CRunState> ReportRun(const std::wstring& folder, const LoadState& load)
{
    std::unique_ptr<CRunState> state = load(folder);
    ReportState(folder, *state);
    return state;
}

std::unique_ptr<CRunState> ReportRunInProgress(const std::wstring& folder, const LoadState& load)
{
    std::unique_ptr<CRunState> state = load(folder);
    WriteReports(folder, *state, true);
    std::unique_ptr<CRunState> later = load(folder);
    // If the run has written its final reports meanwhile, the older reports of this process have replaced them.
    const bool isInProgress = !later->IsEnded();
    if (!isInProgress || later->IsCanceled())
    {
        state = std::move(later);
        WriteReports(folder, *state, isInProgress);
    }
    // A canceled run may end while a case is still running. The final reports call such a case interrupted.
    bool isHeld = false;
    LbOs::CFolderLock::TryAcquire(folder, isHeld);
    if (isInProgress && !isHeld)
    {
        return ReportRun(folder, load);
    }
    print(*state, folder, isInProgress);
    return state;
}

void ReportState(const std::wstring& folder, const CRunState& state)
{
    WriteReports(folder, state, false);
    print(state, folder, false);
}

int GetStatus(const CRunState& state)
{
    return state.IsGreen() ? LuTestSuiteHost::c_Succeeded : LuTestSuiteHost::c_Failed;
}

} // namespace Runner
