/// The command "merge": merges the shards of a run into one run.

#include <algorithm>
#include <numeric>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <variant>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbparallel.h"
#include "base/lbpath.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/commands/commands.h"
#include "testing/lutestsuiterunner/commands/distributed.h"
#include "testing/lutestsuiterunner/commands/outcome.h"
#include "testing/lutestsuiterunner/commands/plandifference.h"
#include "testing/lutestsuiterunner/commands/workflow.h"
#include "testing/lutestsuiterunner/console/messages.h"
#include "testing/lutestsuiterunner/console/terminal.h"
#include "testing/lutestsuiterunner/journal/crashnotes.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/folder.h"
#include "testing/lutestsuiterunner/journal/planfile.h"
#include "testing/lutestsuiterunner/journal/reader.h"
#include "testing/lutestsuiterunner/journal/runfiles.h"

namespace Runner
{

namespace
{

struct SPart
{
    std::wstring folder;
    std::unique_ptr<CRunState> state;
    std::wstring problem; ///< why there is no state
    /// For each case of this part, its index in the first part, which is also its index in the merged run.
    std::vector<std::uint32_t> places;
};

std::wstring getPartName(const SPart& part)
{
    const SShard& shard = part.state->GetPlan().shard;
    return LbFormat(L"Teil %u von %u", shard.number, shard.count);
}

/// Loads the run of the part. Throws LbException if its folder is missing. If the run cannot be read, because its job
/// ended early or its disk was full, the part gets a problem instead of a state.
void load(SPart& part)
{
    if (!LbFileSystem::IsDirectory(part.folder))
    {
        throw LbException(LbFormat(L"Der Ordner %s fehlt", part.folder));
    }
    try
    {
        part.state = LoadRun(part.folder);
    }
    catch (const LbException& exception)
    {
        part.problem = exception.GetMessageText();
    }
}

/// Moves the problems of the parts that cannot be read to `problems`. Sorts the other parts by their numbers, so that
/// the order of the arguments does not matter.
std::vector<SPart> loadParts(const std::vector<std::wstring>& directories, std::vector<std::wstring>& problems)
{
    std::vector<SPart> parts(directories.size());
    LbParallel::For(0, static_cast<std::int64_t>(parts.size()), [&](std::int64_t index) {
        SPart& part = parts[static_cast<std::size_t>(index)];
        part.folder = GetRunFolder(directories[static_cast<std::size_t>(index)]);
        load(part);
    });
    for (SPart& part : parts)
    {
        if (!part.state)
        {
            problems.push_back(std::move(part.problem));
        }
    }
    std::erase_if(parts, [](const SPart& part) { return !part.state; });
    if (parts.empty())
    {
        throw LbException(problems.front());
    }
    std::ranges::stable_sort(parts, {}, [](const SPart& part) { return part.state->GetPlan().shard.number; });
    return parts;
}

bool isSameCase(const LuTestSuite::STestCase& one, const LuTestSuite::STestCase& other)
{
    return one.name == other.name && one.GetKind() == other.GetKind() && one.parameters == other.parameters;
}

bool isSameRun(const SPlannedCase& one, const SPlannedCase& other)
{
    return one.unitTest == other.unitTest && one.testCase == other.testCase && one.repetition == other.repetition;
}

/// True if both plans have the same selection in the same order, as is usual on machines of one kind. This check is
/// cheaper than computing digests and sorting.
bool areEqual(const SPlan& one, const SPlan& other)
{
    const auto isSameUnitTest = [&](const LuTestSuite::SUnitTest& a, const LuTestSuite::SUnitTest& b) {
        return GetUnitTestName(one, a.dataDirectory, a.className) ==
                   GetUnitTestName(other, b.dataDirectory, b.className) &&
               std::ranges::equal(a.cases, b.cases, isSameCase);
    };
    return one.params.repetitions == other.params.repetitions &&
           std::ranges::equal(one.unitTests, other.unitTests, isSameUnitTest) &&
           std::ranges::equal(one.cases, other.cases, isSameRun);
}

/// Throws if a part is a distributed run or one of its shards. The plan of a distributed run has all cases, but its
/// folder has no journal; the plan of a shard has only some of the cases.
void requireNotDistributed(const std::vector<SPart>& parts)
{
    for (const SPart& part : parts)
    {
        if (part.state->GetPlan().partCount != 0 || part.state->GetPlan().part)
        {
            throw LbException(LbFormat(L"Der Lauf in %s kommt von 'submit': 'wait' und 'report' fassen seine Teile "
                                       L"zusammen",
                                       part.folder));
        }
    }
}

void requireSameSelection(const std::vector<SPart>& parts)
{
    const SPlan& first = parts.front().state->GetPlan();
    for (const SPart& part : std::span(parts).subspan(1))
    {
        const SPlan& plan = part.state->GetPlan();
        if (!areEqual(first, plan) && DigestSelection(first) != DigestSelection(plan))
        {
            throw LbException(
                LbFormat(L"Die Läufe in %s und %s haben nicht dieselbe Auswahl", parts.front().folder, part.folder));
        }
    }
}

/// `own` and `whole` are the cases of a part and of the first part, sorted by name.
void findPlacesByName(const std::vector<std::uint32_t>& own, const std::vector<std::uint32_t>& whole,
                      std::vector<std::uint32_t>& places)
{
    for (std::size_t rank = 0; rank < own.size(); ++rank)
    {
        places[own[rank]] = whole[rank];
    }
}

/// Compares by names, because file systems list folders in different orders. Precondition: all parts have the same
/// selection.
void findPlaces(std::vector<SPart>& parts)
{
    const SPlan& first = parts.front().state->GetPlan();
    std::vector<std::uint32_t> whole; // filled only if a part has another order
    for (SPart& part : parts)
    {
        const SPlan& plan = part.state->GetPlan();
        part.places.resize(plan.cases.size());
        if (areEqual(first, plan))
        {
            std::iota(part.places.begin(), part.places.end(), 0U);
            continue;
        }
        if (whole.empty())
        {
            whole = SortByName(first);
        }
        findPlacesByName(SortByName(plan), whole, part.places);
    }
}

/// For each case of the merged run, the part that runs it; null if no part does. Throws LbException if two parts run
/// the same case.
std::vector<const SPart*> findOwners(const std::vector<SPart>& parts)
{
    std::vector<const SPart*> owners(parts.front().state->GetPlan().cases.size());
    for (const SPart& part : parts)
    {
        const SPlan& plan = part.state->GetPlan();
        for (std::uint32_t index = 0; index < owners.size(); ++index)
        {
            if (!plan.cases[index].isInShard)
            {
                continue;
            }
            const SPart*& owner = owners[part.places[index]];
            if (owner != nullptr)
            {
                throw LbException(LbFormat(L"Der Testfall %s gehört zu zwei Läufen: %s und %s",
                                           GetCaseName(plan, index), owner->folder, part.folder));
            }
            owner = &part;
        }
    }
    return owners;
}

/// The first part's plan, extended to the cases of all parts.
SPlan makePlan(const std::vector<SPart>& parts)
{
    SPlan plan = parts.front().state->GetPlan();
    plan.runId = MakeRunId();
    // Each part has a command line of its own; the merged run has no command line.
    plan.arguments.clear();
    plan.shard = {};
    for (SPlannedCase& planned : plan.cases)
    {
        planned.isInShard = true;
        planned.isQuarantined = false;
    }
    for (const SPart& part : parts)
    {
        const SPlan& partPlan = part.state->GetPlan();
        for (std::uint32_t index = 0; index < partPlan.cases.size(); ++index)
        {
            const SPlannedCase& planned = partPlan.cases[index];
            plan.cases[part.places[index]].isQuarantined |= planned.isInShard && planned.isQuarantined;
        }
        plan.rules.isFlakyAllowed = plan.rules.isFlakyAllowed && partPlan.rules.isFlakyAllowed;
        if (plan.origin.machine.find(partPlan.origin.machine) == std::wstring::npos)
        {
            plan.origin.machine += L", " + partPlan.origin.machine;
        }
    }
    return plan;
}

void addProblems(const SPart& part, std::vector<std::wstring>& problems)
{
    if (part.state->IsCanceled())
    {
        problems.push_back(LbFormat(L"%s wurde abgebrochen: %s", getPartName(part), part.state->GetCancelReason()));
    }
    else if (!part.state->IsEnded())
    {
        problems.push_back(LbFormat(L"%s ist nicht beendet", getPartName(part)));
    }
    for (const std::wstring& problem : part.state->GetProblems())
    {
        problems.push_back(LbFormat(L"%s: %s", getPartName(part), problem));
    }
}

std::wstring join(const std::vector<std::wstring>& words)
{
    std::wstring text;
    for (std::size_t index = 0; index < words.size(); ++index)
    {
        text += (index == 0 ? L"" : index + 1 == words.size() ? L" und " : L", ") + words[index];
    }
    return text;
}

/// Names the shards that are not among the parts; empty if they are unknown, because the parts have different numbers
/// of shards.
std::wstring describeMissingShards(const std::vector<SPart>& parts)
{
    const std::uint32_t count = parts.front().state->GetPlan().shard.count;
    std::set<std::uint32_t> numbers;
    for (const SPart& part : parts)
    {
        const SShard& shard = part.state->GetPlan().shard;
        if (shard.count != count)
        {
            return {};
        }
        numbers.insert(shard.number);
    }
    std::vector<std::wstring> missing;
    for (std::uint32_t number = 1; number <= count; ++number)
    {
        if (!numbers.contains(number))
        {
            missing.push_back(std::to_wstring(number));
        }
    }
    return missing.empty()       ? std::wstring()
           : missing.size() == 1 ? LbFormat(L"Teil %s von %u fehlt", missing.front(), count)
                                 : LbFormat(L"Teil %s von %u fehlen", join(missing), count);
}

void findProblems(const std::vector<SPart>& parts, const std::vector<const SPart*>& owners,
                  std::vector<std::wstring>& problems)
{
    for (const SPart& part : parts)
    {
        addProblems(part, problems);
    }
    if (const auto count = std::ranges::count(owners, nullptr); count > 0)
    {
        if (std::wstring shards = describeMissingShards(parts); !shards.empty())
        {
            problems.push_back(std::move(shards));
        }
        problems.push_back(count == 1 ? std::wstring(L"1 Testfall gehört zu keinem der Läufe")
                                      : LbFormat(L"%d Testfälle gehören zu keinem der Läufe", count));
    }
}

/// Copies each journal of a part to a journal of its own in the merged run, so that the processes and the order of the
/// cases are kept. Also applies all records to the state, so that the journals need not be read again.
class CJournalCopier
{
public:
    CJournalCopier(CRunFolder& target, CRunState& state) : m_target(target), m_state(state) {}

    void Copy(const SPart& part)
    {
        for (const std::uint32_t number : FindJournals(part.folder))
        {
            std::unique_ptr<CJournalWriter> writer;
            CJournalReader reader(part.folder, number);
            for (Record record; reader.Next(record);)
            {
                copy(part, record, writer);
            }
            if (writer)
            {
                writer->Close();
                CopyCrashNote(part.folder, number, m_target.GetPath(), m_number);
            }
        }
    }

    /// Writes the last journal, which records how the merged run has ended.
    void End(const std::wstring& time, const std::vector<std::wstring>& problems)
    {
        // Not 0, because the writer replaces 0 by the real time. This journal must not add to the run's time.
        constexpr std::uint64_t c_Elapsed = 1;
        SJournalBegun begun;
        begun.time = time;
        const auto writer = begin(std::move(begun));
        for (const std::wstring& problem : problems)
        {
            note(*writer, SRunProblem{problem});
        }
        note(*writer, SRunFinished{time, c_Elapsed});
        writer->Close();
    }

private:
    std::unique_ptr<CJournalWriter> begin(SJournalBegun begun)
    {
        begun.planDigest = m_state.GetPlan().digest;
        begun.caseCount = m_state.GetPlan().cases.size();
        begun.journal = ++m_number;
        auto writer = m_target.AddJournal(begun);
        m_state.Apply({m_number, 1}, begun);
        return writer;
    }

    void note(CJournalWriter& writer, const Record& record) { m_state.Apply({m_number, writer.Write(record)}, record); }

    /// Replaces the index of the record's case in the part by its index in the merged run.
    static void moveCase(const SPart& part, Record& record)
    {
        if (auto* const started = std::get_if<SCaseStarted>(&record))
        {
            started->caseIndex = part.places[started->caseIndex];
        }
        if (auto* const ended = std::get_if<SCaseEnded>(&record))
        {
            ended->caseIndex = part.places[ended->caseIndex];
        }
    }

    void copy(const SPart& part, Record& record, std::unique_ptr<CJournalWriter>& writer)
    {
        moveCase(part, record);
        const bool isOfTheWhole =
            std::holds_alternative<SRunCanceled>(record) || std::holds_alternative<SRunProblem>(record);
        if (const auto* const begun = std::get_if<SJournalBegun>(&record))
        {
            writer = begin(*begun);
        }
        else if (!isOfTheWhole)
        {
            note(*writer, record);
        }
    }

    CRunFolder& m_target;
    CRunState& m_state;
    std::uint32_t m_number = 0;
};

std::wstring getEndTime(const std::vector<SPart>& parts)
{
    std::wstring time;
    for (const SPart& part : parts)
    {
        time = std::max(time, part.state->GetEndTime());
    }
    return time;
}

/// True if replacing the run in the folder would remove the part. Subfolders are removed only if the folder contains a
/// distributed run; otherwise they hold runs of their own.
bool isRemovedWith(const std::wstring& folder, const SPart& part)
{
    const bool isDistributed = LbFileSystem::IsFile(folder + c_ShardsName);
    return LbOs::AreSameFile(part.folder, folder) ||
           (isDistributed && LbOs::AreSameFile(LbPath::GetParent(part.folder), folder));
}

void requireReplaceable(const std::vector<SPart>& parts, const std::wstring& folder, bool isForced)
{
    if (std::ranges::any_of(parts, [&folder](const SPart& part) { return isRemovedWith(folder, part); }))
    {
        throw LbException(LbFormat(L"Der Ordner %s enthält einen der Läufe", folder));
    }
    if (!isForced && ContainsRun(folder))
    {
        throw LbException(LbFormat(L"Der Ordner %s enthält schon einen Lauf: '--force' ersetzt ihn", folder));
    }
    RequireNoReport(folder, isForced);
}

void warnOfDifferences(const std::vector<SPart>& parts)
{
    const SPart& first = parts.front();
    for (const SPart& part : parts)
    {
        if (const std::wstring what = FindDifference(first.state->GetPlan(), part.state->GetPlan()); !what.empty())
        {
            CTerminal::Get().WriteError(
                LbFormat(L"Warnung: Die Läufe in %s und %s haben verschiedene %s\n", first.folder, part.folder, what));
        }
    }
}

} // namespace

int Execute(const SMergeOptions& options)
{
    if (options.directories.empty() || options.out.empty())
    {
        throw std::wstring(L"Die Ordner der Läufe fehlen");
    }
    MoveLibraryLinesToErrors();
    std::vector<std::wstring> problems;
    std::vector<SPart> parts = loadParts(options.directories, problems);
    requireNotDistributed(parts);
    requireSameSelection(parts);
    findPlaces(parts);
    const std::vector<const SPart*> owners = findOwners(parts);
    requireReplaceable(parts, GetRunFolder(options.out), options.force);
    warnOfDifferences(parts);

    const std::unique_ptr<LbOs::CFolderLock> replaced = EndReplacedRun(GetRunFolder(options.out));
    CRunFolder target(options.out);
    WarnOfMissingLock(target.GetPath(), target.IsLocked());
    SPlan plan = makePlan(parts);
    plan.digest = target.ReplacePlan(plan);
    CRunState whole(std::move(plan));
    CJournalCopier copier(target, whole);
    for (const SPart& part : parts)
    {
        copier.Copy(part);
        whole.AddWarnings(part.state->GetWarnings());
    }
    findProblems(parts, owners, problems);
    copier.End(getEndTime(parts), problems);
    ReportState(target.GetPath(), whole);
    return GetStatus(whole);
}

} // namespace Runner
