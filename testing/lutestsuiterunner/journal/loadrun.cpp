/// Reads runs: those in one folder, and distributed runs, whose shards have their own folders.

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/planfile.h"
#include "testing/lutestsuiterunner/journal/prooffile.h"
#include "testing/lutestsuiterunner/journal/reader.h"
#include "testing/lutestsuiterunner/journal/readparts.h"
#include "testing/lutestsuiterunner/model/textlines.h"

namespace Runner
{

namespace
{

void requireSamePlan(const Record& record, const SPlan& plan)
{
    const auto* const begun = std::get_if<SJournalBegun>(&record);
    if (begun != nullptr && begun->planDigest != plan.digest)
    {
        throw LbException(L"Das Journal gehört zu einem anderen Plan");
    }
}

/// For each journal of a folder, the number of its first records that are used; by the journal's number - 1.
using Counts = std::vector<std::uint64_t>;

/// Calls `take` for the first `count` records of a journal. Adds file and line to the messages of exceptions. Returns
/// what CJournalReader::DescribeBadLastLine returns.
template<typename F>
std::wstring readJournal(const std::wstring& folder, std::uint32_t number, std::uint64_t count, const SPlan& plan,
                         const F& take)
{
    CJournalReader reader(folder, number);
    for (Record record; reader.GetSequence() < count && reader.Next(record);)
    {
        try
        {
            requireSamePlan(record, plan);
            take(SRecordPlace{number, reader.GetSequence()}, record);
        }
        catch (const LbException& exception)
        {
            throw LbException(LbFormat(L"Das Journal %s ist widersprüchlich: Zeile %u: %s",
                                       folder + GetJournalName(number), reader.GetSequence(),
                                       exception.GetMessageText()));
        }
    }
    return reader.DescribeBadLastLine();
}

enum class EHost
{
    MayBeWriting, ///< the end of the last journal may be incomplete
    IsGone
};

/// Calls `take` for each record of a folder's journals. Returns what is wrong at their ends, except at that of the last
/// one while its host may be writing.
template<typename F>
std::vector<std::wstring> readJournals(const std::wstring& folder, const SPlan& plan, EHost host, const F& take)
{
    std::vector<std::wstring> warnings;
    const std::vector<std::uint32_t> numbers = FindJournals(folder);
    for (std::uint32_t index = 0; index < numbers.size(); ++index)
    {
        if (numbers[index] != index + 1)
        {
            throw LbException(LbFormat(L"Das Journal %s fehlt", folder + GetJournalName(index + 1)));
        }
        constexpr std::uint64_t c_All = std::numeric_limits<std::uint64_t>::max();
        std::wstring warning = readJournal(folder, numbers[index], c_All, plan, take);
        const bool isLast = index + 1 == numbers.size();
        if (!warning.empty() && (!isLast || host == EHost::IsGone))
        {
            warnings.push_back(std::move(warning));
        }
    }
    return warnings;
}

/// Calls `take` for the records of a folder's journals that count.
template<typename F>
void readJournals(const std::wstring& folder, const SPlan& plan, const Counts& counts, const F& take)
{
    for (std::uint32_t index = 0; index < counts.size(); ++index)
    {
        std::uint64_t read = 0;
        const auto takeCounted = [&](const SRecordPlace& place, Record& record) {
            take(place, record);
            read = place.sequence;
        };
        if (counts[index] > 0)
        {
            readJournal(folder, index + 1, counts[index], plan, takeCounted);
        }
        if (read < counts[index])
        {
            throw LbException(LbFormat(L"Das Journal %s hat %u statt %u Einträge", folder + GetJournalName(index + 1),
                                       read, counts[index]));
        }
    }
}

/// Applies the records of the shards to the state of the whole run, shard by shard, and numbers all journals in
/// succession. If the run has ended, uses only the records on which its reports are based.
class CPartLoader
{
public:
    /// `parts` receives the shards by number - 1.
    CPartLoader(const std::wstring& folder, SPlan plan, std::vector<SReadPart>& parts)
        : m_folder(folder), m_state(std::make_unique<CRunState>(std::move(plan))), m_parts(parts)
    {
    }

    std::unique_ptr<CRunState> Load()
    {
        readProof();
        const std::uint32_t count = m_state->GetPlan().partCount;
        for (std::uint32_t number = 1; number <= count; ++number)
        {
            load(number);
        }
        end();
        return std::move(m_state);
    }

private:
    /// How a shard's hosts have ended.
    struct SEnd
    {
        bool isEnded = false;      ///< a host finished the shard
        std::wstring cancelReason; ///< of the last host, like the problems
        std::vector<std::wstring> problems;
        std::optional<std::wstring> damage; ///< why not everything could be read
    };

    void readProof()
    {
        try
        {
            m_proven = ReadProvenRecords(m_folder, m_state->GetPlan().digest);
        }
        catch (const LbException& exception)
        {
            m_problems.push_back(exception.GetMessageText());
        }
    }

    /// Null if all records of the shard count.
    const Counts* getProven(std::uint32_t number) const
    {
        return m_proven && number <= m_proven->size() ? &(*m_proven)[number - 1] : nullptr;
    }

    void load(std::uint32_t number)
    {
        const std::wstring folder = m_folder + GetShardFolderName(number);
        SEnd end;
        SReadPart part;
        std::optional<SPlan> plan;
        const std::uint32_t before = m_journal;
        try
        {
            plan = readPartPlan(folder, number);
            readRecords(number, *plan, part, end);
        }
        catch (const LbException& exception)
        {
            // The other shards, and the records of this one that were read, still count.
            end.damage = exception.GetMessageText();
        }
        // Also counts journals that contain no record yet.
        const Counts* const proven = getProven(number);
        const std::size_t journals = proven != nullptr ? proven->size() : FindJournals(folder).size();
        part.records.resize(std::max(part.records.size(), journals));
        m_journal = std::max(m_journal, before + static_cast<std::uint32_t>(part.records.size()));
        part.verdicts = plan ? countVerdicts(*plan) : 0;
        // A host that began later adds nothing to a complete shard.
        end.isEnded = end.isEnded && !end.damage && plan && hasAllVerdicts(*plan, part.verdicts);
        if (!end.isEnded)
        {
            noteProblems(number, end);
        }
        m_isEnded = m_isEnded && end.isEnded;
        m_parts.push_back(std::move(part));
    }

    SPlan readPartPlan(const std::wstring& folder, std::uint32_t number) const
    {
        SPlan plan = ReadPlan(folder + c_PlanName);
        const SPlan& whole = m_state->GetPlan();
        if (!plan.part || plan.part->wholeDigest != whole.digest || plan.shard != SShard{number, whole.partCount})
        {
            throw LbException(LbFormat(L"Der Plan in %s gehört nicht zu dem in %s", folder, m_folder));
        }
        return plan;
    }

    void readRecords(std::uint32_t number, const SPlan& plan, SReadPart& part, SEnd& end)
    {
        const std::uint32_t before = m_journal;
        const auto take = [&](const SRecordPlace& place, Record& record) {
            m_journal = before + place.journal;
            apply({m_journal, place.sequence}, plan, record);
            note(record, end);
            part.records.resize(place.journal);
            part.records.back() = place.sequence;
        };
        const std::wstring folder = m_folder + GetShardFolderName(number);
        if (const Counts* const proven = getProven(number))
        {
            readJournals(folder, plan, *proven, take);
        }
        else
        {
            m_state->AddWarnings(readJournals(folder, plan, EHost::MayBeWriting, take));
        }
    }

    static void note(const Record& record, SEnd& end)
    {
        if (std::holds_alternative<SJournalBegun>(record))
        {
            end.cancelReason.clear();
            end.problems.clear();
        }
        else if (const auto* const canceled = std::get_if<SRunCanceled>(&record))
        {
            end.cancelReason = canceled->reason;
        }
        else if (const auto* const problem = std::get_if<SRunProblem>(&record))
        {
            end.problems.push_back(problem->text);
        }
        else if (std::holds_alternative<SRunFinished>(record))
        {
            end.isEnded = end.isEnded || end.cancelReason.empty();
        }
    }

    std::uint32_t countVerdicts(const SPlan& part) const
    {
        std::uint32_t count = 0;
        for (std::uint32_t index = 0; index < part.cases.size(); ++index)
        {
            const bool isMissing = m_state->GetVerdict(part.part->indices[index]) == EVerdict::Missing;
            count += part.cases[index].isInShard && !isMissing ? 1 : 0;
        }
        return count;
    }

    static bool hasAllVerdicts(const SPlan& part, std::uint32_t verdicts)
    {
        return std::cmp_equal(verdicts, std::ranges::count_if(part.cases, &SPlannedCase::isInShard));
    }

    void apply(const SRecordPlace& place, const SPlan& part, Record& record)
    {
        if (auto* const begun = std::get_if<SJournalBegun>(&record))
        {
            begun->caseCount = m_state->GetPlan().cases.size();
        }
        else if (auto* const started = std::get_if<SCaseStarted>(&record))
        {
            started->caseIndex = getWhole(part, started->caseIndex);
        }
        else if (auto* const ended = std::get_if<SCaseEnded>(&record))
        {
            ended->caseIndex = getWhole(part, ended->caseIndex);
        }
        m_state->Apply(place, record);
        m_endTime = std::max(m_endTime, m_state->GetEndTime());
    }

    static std::uint32_t getWhole(const SPlan& part, std::uint32_t caseIndex)
    {
        if (caseIndex >= part.cases.size() || !part.cases[caseIndex].isInShard)
        {
            throw LbException(LbFormat(L"Der Plan enthält den Testfall %u nicht", caseIndex));
        }
        return part.part->indices[caseIndex];
    }

    void noteProblems(std::uint32_t number, const SEnd& end)
    {
        const std::wstring name = LbFormat(L"Teil %u von %u", number, m_state->GetPlan().partCount);
        if (end.damage)
        {
            m_problems.push_back(LbFormat(L"%s konnte nicht vollständig gelesen werden: %s", name, *end.damage));
        }
        else if (!end.cancelReason.empty())
        {
            m_problems.push_back(LbFormat(L"%s wurde abgebrochen: %s", name, end.cancelReason));
        }
        else
        {
            m_problems.push_back(LbFormat(L"%s ist nicht beendet", name));
        }
        for (const std::wstring& problem : end.problems)
        {
            m_problems.push_back(LbFormat(L"%s: %s", name, problem));
        }
    }

    /// Applies the end of the run in the form of records, as if one more journal contained them.
    void end()
    {
        ++m_journal;
        std::uint64_t sequence = 0;
        const SPlan& plan = m_state->GetPlan();
        SJournalBegun begun{plan.digest, plan.cases.size(), m_journal, {}, 0, {}, m_endTime};
        m_state->Apply({m_journal, ++sequence}, begun);
        const std::wstring path = m_folder + c_ProblemsName;
        if (LbFileSystem::IsFile(path))
        {
            std::ranges::move(SplitLines(LbEncoding::FromUtf8(LbFileSystem::ReadFile8Bit(path))),
                              std::back_inserter(m_problems));
        }
        for (const std::wstring& problem : m_problems)
        {
            m_state->Apply({m_journal, ++sequence}, SRunProblem{problem});
        }
        if (m_isEnded)
        {
            m_state->Apply({m_journal, ++sequence}, SRunFinished{m_endTime, 0});
        }
    }

    const std::wstring& m_folder;
    std::unique_ptr<CRunState> m_state;
    std::vector<SReadPart>& m_parts;
    std::optional<RecordCounts> m_proven; ///< empty while the run has not ended
    std::uint32_t m_journal = 0;          ///< the last one so far, in the numbering of the whole
    std::wstring m_endTime;
    std::vector<std::wstring> m_problems;
    bool m_isEnded = true; ///< true while all shards read so far have ended
};

std::unique_ptr<CRunState> load(const std::wstring& folder, EHost host)
{
    const std::wstring planPath = folder + c_PlanName;
    if (LbOs::QueryEntry(planPath) != LbOs::EEntry::File)
    {
        throw LbException(LbFormat(L"Der Ordner %s enthält keinen Lauf", folder));
    }
    SPlan plan = ReadPlan(planPath);
    if (plan.partCount > 0)
    {
        std::vector<SReadPart> parts;
        return CPartLoader(folder, std::move(plan), parts).Load();
    }
    // The hosts of a shard hold no lock on its folder.
    const EHost last = plan.part ? EHost::MayBeWriting : host;
    auto state = std::make_unique<CRunState>(std::move(plan));
    const auto take = [&state](const SRecordPlace& place, const Record& record) { state->Apply(place, record); };
    state->AddWarnings(readJournals(folder, state->GetPlan(), last, take));
    return state;
}

} // namespace

std::unique_ptr<CRunState> LoadDistributedRun(const std::wstring& folder, std::vector<SReadPart>& parts)
{
    parts.clear();
    return CPartLoader(folder, ReadPlan(folder + c_PlanName), parts).Load();
}

std::unique_ptr<CRunState> LoadRun(const std::wstring& folder)
{
    return load(folder, EHost::MayBeWriting);
}

std::unique_ptr<CRunState> LoadRunWithoutHost(const std::wstring& folder)
{
    return load(folder, EHost::IsGone);
}

} // namespace Runner
