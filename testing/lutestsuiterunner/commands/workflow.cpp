#include "testing/lutestsuiterunner/commands/workflow.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "base/lbdatetime.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lbreceivedfile.h"
#include "base/os/files.h"
#include "base/os/interruption.h"
#include "base/os/process.h"
#include "testing/lutestsuiterunner/cluster/submissions.h"
#include "testing/lutestsuiterunner/commands/caseorder.h"
#include "testing/lutestsuiterunner/commands/outcome.h"
#include "testing/lutestsuiterunner/console/closing.h"
#include "testing/lutestsuiterunner/console/messages.h"
#include "testing/lutestsuiterunner/console/progress.h"
#include "testing/lutestsuiterunner/console/terminal.h"
#include "testing/lutestsuiterunner/execution/cancellationwatch.h"
#include "testing/lutestsuiterunner/execution/guards.h"
#include "testing/lutestsuiterunner/execution/hostcrash.h"
#include "testing/lutestsuiterunner/execution/stages.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/reader.h"
#include "testing/lutestsuiterunner/journal/runfiles.h"
#include "testing/lutestsuiterunner/review/changes.h"
#include "testing/lutestsuiterunner/settings/commandline.h"

namespace Runner
{

namespace
{

void printQuarantine(const Quarantine& quarantine)
{
    for (const std::wstring& pattern : FindIdleEntries(quarantine))
    {
        CTerminal::Get().WriteOutput(LbFormat(L"Quarantäne: '%s' trifft keinen Testfall\n", pattern));
    }
    for (const SQuarantineEntry& entry : quarantine)
    {
        if (entry.passedRuns >= c_RunsUntilRelease)
        {
            CTerminal::Get().WriteOutput(LbFormat(
                L"Quarantäne: '%s' hat %u Läufe in Folge bestanden und kann aus der Quarantäne entfernt werden\n",
                entry.pattern, entry.passedRuns));
        }
    }
}

/// The number of case runs outside the quarantine that failed at the first attempt and at all retries.
std::uint32_t countFailed(const CRunState& state, std::uint32_t retries)
{
    std::uint32_t count = 0;
    for (std::uint32_t index = 0; index < state.GetPlan().cases.size(); ++index)
    {
        const bool hasFailed = std::ranges::any_of(state.GetAttempts(index), [retries](const SAttempt& attempt) {
            return attempt.IsFinished() && !attempt.HasPassed() && attempt.kind != EAttemptKind::Confirm &&
                   attempt.result.attempt > retries;
        });
        count += hasFailed && !state.GetPlan().cases[index].isQuarantined ? 1 : 0;
    }
    return count;
}

/// Creates the folder for memory dumps and returns its full path; empty if the run makes no dumps. Only warns if the
/// folder cannot be created, because the results of the run do not depend on it.
std::wstring prepareDumpFolder(const SRunOptions& options)
{
    if (options.core.empty())
    {
        return {};
    }
    std::wstring folder = LbOs::GetFullPath(options.core);
    LbFileSystem::AssertDirectory(folder);
    if (!LbFileSystem::IsDirectory(folder))
    {
        CTerminal::Get().WriteError(
            LbFormat(L"Warnung: Der Ordner %s für Speicherabbilder konnte nicht angelegt werden\n", folder));
    }
    return folder;
}

/// A run that stopped because of too many failures is resumed without that limit: the user wants all results.
SSessionLimits getLimits(const SWork& work)
{
    const std::uint32_t failed = countFailed(work.state, work.options.retries);
    const std::uint32_t most = work.options.failFast;
    return {work.options.retries, failed >= most ? 0 : most, failed};
}

/// Names up to three of the files, relative to the directory, and counts the others.
std::wstring describeReceived(const std::vector<std::wstring>& references, const std::wstring& directory)
{
    constexpr std::size_t c_MostNamed = 3;
    const std::size_t begin = LbPath::WithSeparator(directory).size();
    std::wstring names;
    for (std::size_t index = 0; index < std::min(c_MostNamed, references.size()); ++index)
    {
        names += (index == 0 ? L"" : L", ") + references[index].substr(begin) + LbReceivedFile::c_Suffix;
    }
    if (references.size() <= c_MostNamed)
    {
        return references.size() == 1 ? LbFormat(L"%s ist", names) : LbFormat(L"%s sind", names);
    }
    const std::size_t others = references.size() - c_MostNamed;
    return others == 1 ? LbFormat(L"%s und eine weitere .received-Datei sind", names)
                       : LbFormat(L"%s und %u weitere .received-Dateien sind", names, others);
}

void announceCancellation()
{
    const bool isUser = LbOs::GetInterruption() == LbOs::EInterruption::User;
    CTerminal::Get().WriteError(isUser ? L"Abbruch angefordert; noch einmal Strg-C beendet sofort\n"
                                       : L"Abbruch angefordert\n");
}

/// Writes the reports and ends the process, because a case that runs in this process does not end.
[[noreturn]] void giveUp(CSession& session, const SWork& work)
try
{
    session.Abandon();
    CTerminal::Get().WriteError(L"Warnung: Der Lauf endet, obwohl ein Testfall im Prozess des Laufs noch läuft\n");
    // The process that follows a distributed run writes its reports.
    if (!work.options.planned)
    {
        ReportRun(work.folder);
    }
    LbOs::EndProcess(LbOs::GetExitStatus(LbOs::GetInterruption()));
}
catch (...)
{
    // Most likely the disk is full. "report" makes the reports later.
    LbOs::EndProcess(2);
}

} // namespace

void RequireNoRun(const SRunOptions& options)
{
    const std::wstring folder = GetRunFolder(options.out);
    const bool isDistributed = LbFileSystem::IsFile(folder + c_ShardsName);
    if (!options.force && isDistributed && IsMarkedCanceled(folder))
    {
        throw LbFormat(L"Der Ordner %s enthält schon einen abgebrochenen Lauf: '--force' ersetzt ihn", folder);
    }
    if (!options.force && (isDistributed || !FindJournals(folder).empty()))
    {
        throw LbFormat(L"Der Ordner %s enthält schon einen Lauf: '%s' setzt ihn fort, '--force' ersetzt ihn", folder,
                       isDistributed ? L"wait" : L"resume");
    }
    RequireNoReport(folder, options.force);
}

void RequireNoReport(const std::wstring& folder, bool isForced)
{
    if (const std::wstring name = FindForeignReport(folder); !isForced && !name.empty())
    {
        throw LbFormat(L"Der Ordner %s enthält keinen Lauf, aber die Datei %s: '--force' ersetzt sie", folder, name);
    }
}

void WarnOfMissingLock(const std::wstring& folder, bool isLocked)
{
    if (!isLocked)
    {
        CTerminal::Get().WriteError(
            LbFormat(L"Warnung: Der Ordner %s kann nicht gesperrt werden: ein zweiter Lauf, der "
                     L"zugleich hineinschreibt, bleibt unbemerkt\n",
                     folder));
    }
}

void WarnOfMissingModules(const SRunOptions& options, const LuTestSuiteSetup& setup)
{
    if (options.requireAllModules)
    {
        return;
    }
    for (const std::wstring& problem : FindMissingModules(setup))
    {
        CTerminal::Get().WriteError(LbFormat(L"Warnung: %s\n", problem));
    }
}

void WarnOfUselessOptions(const SRunOptions& options, const SPlan& plan)
{
    // --confirm repeats a failed case in a child process.
    const bool hasLimit = plan.params.timeOutSec != LuTestSuiteRun::c_NoLimit;
    if ((options.core.empty() && !hasLimit) || options.confirm || plan.cases.empty())
    {
        return;
    }
    for (std::uint32_t index = 0; index < plan.cases.size(); ++index)
    {
        if (GetParams(plan, index).external)
        {
            return;
        }
    }
    const std::pair<const wchar_t*, bool> given[] = {{L"--core", !options.core.empty()}, {L"-t", hasLimit}};
    for (const auto& [option, isGiven] : given)
    {
        if (isGiven)
        {
            CTerminal::Get().WriteError(LbFormat(
                L"Warnung: '%s' bewirkt nichts: kein Testfall läuft in einem Kindprozess (-x oder -s)\n", option));
        }
    }
}

void WarnOfReceived(const SPlan& plan)
{
    const SFound found = FindReceived(plan.dataDirectory);
    std::vector<std::wstring> unfinished = FindUnfinishedAbove(plan.dataDirectory);
    unfinished.insert(unfinished.end(), found.unfinished.begin(), found.unfinished.end());
    for (const std::wstring& folder : unfinished)
    {
        CTerminal::Get().WriteError(
            LbFormat(L"Warnung: In %s ist eine Entscheidung unvollendet: LuTestSuiteRunner review %s\n", folder,
                     QuoteForShell(folder)));
    }
    if (!found.references.empty())
    {
        CTerminal::Get().WriteError(LbFormat(L"Warnung: %s nicht geprüft: LuTestSuiteRunner review %s\n",
                                             describeReceived(found.references, plan.dataDirectory),
                                             QuoteForShell(plan.dataDirectory)));
    }
}

void EnterWorkingDirectory(const SPlan& plan)
{
    if (!LbOs::SetWorkingDirectory(plan.workingDirectory))
    {
        throw LbFormat(L"Das Arbeitsverzeichnis %s des Laufs gibt es nicht mehr", plan.workingDirectory);
    }
}

SRunOptions EnterRun(const SPlan& plan)
{
    EnterWorkingDirectory(plan);
    std::vector<std::wstring> arguments = {L"LuTestSuiteRunner"};
    arguments.insert(arguments.end(), plan.arguments.begin(), plan.arguments.end());
    Command command = ReadCommandLine(arguments);
    if (SRunOptions* const options = std::get_if<SRunOptions>(&command))
    {
        return std::move(*options);
    }
    throw std::wstring(L"Dieser Lauf besteht aus mehreren und kann nicht fortgesetzt werden");
}

void CarryOut(const SWork& work, CJournalWriter& writer, const std::vector<std::wstring>& problems,
              const std::vector<std::uint32_t>& cases)
{
    const std::uint32_t journal = writer.GetNumber();
    LbOs::CatchInterruptions();
    ShowOnlyWarnings();
    const CCrashNote note(work.folder, journal);
    {
        CProgressLine progress(work.state, cases, GetExpectedTimes(work.previous));
        const SSessionParts parts = {work.state, writer,  work.environment,
                                     progress,   journal, prepareDumpFolder(work.options)};
        CSession session(parts, work.setup, getLimits(work));
        const CCancellationWatch watch(&announceCancellation, [&session, &work] { giveUp(session, work); });
        for (const std::wstring& problem : problems)
        {
            session.Note(SRunProblem{problem});
        }
        const SPlan& plan = work.state.GetPlan();
        // Created before the first case runs, so that CSiblings notices everything that other hosts record from then
        // on.
        std::optional<CSiblings> siblings;
        if (plan.part)
        {
            siblings.emplace(work.folder, journal, plan.cases.size());
        }
        const std::vector<std::uint32_t> suspects = FinishUnderWay(session, work.state, work.folder);
        RunStages(session, work.state, {suspects, cases}, {work.options.retries, work.options.confirm},
                  siblings ? &*siblings : nullptr);
        session.Note(SRunFinished{LbDateTime::FormatNow(L"Y-m-d H:i:s")});
    }
    writer.Close();
}

Quarantine ReadQuarantineOf(const SRunOptions& options, const LuTestSuiteSetup& setup, SPlan plan)
{
    if (options.quarantine.empty())
    {
        return {};
    }
    if (!LbFileSystem::IsFile(options.quarantine))
    {
        CTerminal::Get().WriteError(LbFormat(L"Warnung: Die Datei %s fehlt; ihre Testfälle bleiben in Quarantäne, aber "
                                             L"ihre bestandenen Läufe werden nicht gezählt\n",
                                             options.quarantine));
        return {};
    }
    return ReadQuarantine(options.quarantine, setup, plan);
}

void ConcludeQuarantine(const CRunState& state, const std::wstring& folder, const std::wstring& previous,
                        Quarantine quarantine)
{
    if (quarantine.empty())
    {
        return;
    }
    // An XML report and an archive contain no numbers of passed runs.
    const bool isRun = !previous.empty() && ContainsRun(GetRunFolder(previous));
    CountPassedRuns(quarantine, state, isRun ? GetRunFolder(previous) : folder);
    // A canceled run does not count until it is resumed and complete. It keeps the earlier numbers for the next run.
    const bool isComplete = state.IsEnded() && !state.IsCanceled();
    for (SQuarantineEntry& entry : quarantine)
    {
        entry.passedRuns = isComplete ? entry.passedRuns : entry.earlierRuns;
    }
    WritePassedRuns(quarantine, state.GetPlan().runId, folder);
    if (isComplete)
    {
        printQuarantine(quarantine);
    }
}

int Conclude(const std::wstring& folder, const std::wstring& previous, Quarantine quarantine)
{
    const std::unique_ptr<CRunState> state = ReportRun(folder);
    ConcludeQuarantine(*state, folder, previous, std::move(quarantine));
    WarnOfReceived(state->GetPlan());
    const int interrupted = LbOs::GetExitStatus(LbOs::GetInterruption());
    return interrupted != 0 ? interrupted : GetStatus(*state);
}

} // namespace Runner
