#include "testing/lutestsuiterunner/commands/newrun.h"

#include "base/lbformat.h"
#include "testing/lutestsuiterunner/console/terminal.h"
#include "testing/lutestsuiterunner/execution/guards.h"
#include "testing/lutestsuiterunner/execution/innerfolders.h"
#include "testing/lutestsuiterunner/execution/planning.h"

namespace Runner
{

void RequirePrevious(const SRunOptions& options)
{
    if (options.onlyFailed && options.previous.empty())
    {
        throw std::wstring(L"Die Option '--only-failed' braucht '--previous'");
    }
    const bool needsPrevious = options.order == EOrder::FailedFirst || options.order == EOrder::LongestFirst;
    if (needsPrevious && options.previous.empty())
    {
        throw std::wstring(L"Diese Reihenfolge braucht '--previous'");
    }
}

std::size_t ApplyOnlyFailed(const SRunOptions& options, const CPrevious& previous, SPlan& plan)
{
    const std::size_t selected = plan.cases.size();
    if (options.onlyFailed)
    {
        KeepFailed(plan, previous);
    }
    if (!options.onlyFailed || selected == 0 || !plan.cases.empty())
    {
        return plan.cases.size();
    }
    CTerminal::Get().WriteOutput(
        LbFormat(L"Im früheren Lauf %s ist kein Testfall der Auswahl fehlgeschlagen\n", options.previous));
    return selected;
}

void WarnOfLateFailures(const SRunOptions& options)
{
    if (options.failFast != 0 && options.retries != 0)
    {
        CTerminal::Get().WriteError(
            L"Warnung: '--fail-fast' zählt einen Testfall erst nach seiner letzten Wiederholung; die Wiederholungen "
            L"beginnen, wenn alle Testfälle einmal gelaufen sind\n");
    }
}

void WarnOfSuitesWithoutFolder(const SRunOptions& options, const std::vector<std::wstring>& suites)
{
    if (const std::wstring line = DescribeWithoutFolder(suites); !line.empty() && !options.requireAllModules)
    {
        CTerminal::Get().WriteError(LbFormat(L"Warnung: %s\n", line));
    }
}

void WarnOfInnerFolders(const SPlan& plan)
{
    for (const SInnerFolder& one : FindInnerFolders(plan.dataDirectory, plan.unitTests))
    {
        CTerminal::Get().WriteError(
            LbFormat(L"Warnung: %s hat keine Datei für einen Testfall, aber %s: Ordner im Ordner einer Klasse werden "
                     L"nicht durchsucht\n",
                     one.classFolder, one.inner));
    }
}

} // namespace Runner
