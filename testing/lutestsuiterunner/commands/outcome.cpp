#include "testing/lutestsuiterunner/commands/outcome.h"

#include "base/lbformat.h"
#include "testing/lutestsuitehost/hostmain.h"
#include "testing/lutestsuiterunner/console/closing.h"
#include "testing/lutestsuiterunner/console/terminal.h"
#include "testing/lutestsuiterunner/journal/reader.h"
#include "testing/lutestsuiterunner/reports/reports.h"

namespace Runner
{

namespace
{

constexpr std::size_t c_MissingShown = 20;

std::wstring describeMissing(const CRunState& state)
{
    std::wstring text;
    const std::vector<std::uint32_t> missing = state.GetMissingCases();
    for (std::size_t index = 0; index < missing.size() && index < c_MissingShown; ++index)
    {
        text += LbFormat(L"Nicht ausgeführt: %s\n", GetCaseName(state.GetPlan(), missing[index]));
    }
    return missing.size() <= c_MissingShown
               ? text
               : text + LbFormat(L"Nicht ausgeführt: %u weitere\n", missing.size() - c_MissingShown);
}

/// The counts of verdicts, the problems of the whole run, the first missing cases, and the paths of the reports.
std::wstring describeOutcome(const CRunState& state, const std::wstring& folder, bool isInProgress)
{
    const SVerdictCounts counts = state.CountVerdicts();
    std::wstring text = describeMissing(state);
    for (const std::wstring& problem : state.GetProblems())
    {
        text += LbFormat(L"Fehler: %s\n", problem);
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
    text += LbFormat(L"Fälle: %u, bestanden: %u, unzuverlässig: %u, fehlgeschlagen: %u, in Quarantäne: %u, nicht "
                     L"ausgeführt: %u\n",
                     counts.planned, counts.passed, counts.flaky, counts.failed, counts.quarantined, counts.missing);
    return text + LbFormat(L"Reports: %s\n", folder);
}

} // namespace

std::unique_ptr<CRunState> ReportRun(const std::wstring& folder, bool isInProgress)
{
    std::unique_ptr<CRunState> state = LoadRun(folder);
    ReportState(folder, *state, isInProgress);
    return state;
}

void ReportState(const std::wstring& folder, const CRunState& state, bool isInProgress)
{
    WriteReports(folder, state);
    CTerminal::Get().WriteOutput(DescribeClosing(state, folder) + describeOutcome(state, folder, isInProgress));
}

int GetStatus(const CRunState& state)
{
    return state.IsGreen() ? LuTestSuiteHost::c_Succeeded : LuTestSuiteHost::c_Failed;
}

} // namespace Runner
