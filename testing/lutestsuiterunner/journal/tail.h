/// Reads the journals of a run while hosts write them.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/journal/recordparser.h"

namespace Runner
{

/// Follows the journals of one folder, cheaply: it reads no byte twice and no large texts. One thread at a time.
class CRunTail
{
public:
    /// `folder` ends in a separator; `caseCount` is the plan's number of cases. Does not read the journal with the
    /// number `own`.
    CRunTail(const std::wstring& folder, std::size_t caseCount, std::uint32_t own = 0);

    /// Reads what was written since the last call. Skips records that cannot be read now, because a host is writing
    /// them or the file system does not answer; a later call reads them. Without new records it only looks for a
    /// further journal, and opens the journals whose hosts have not recorded their end.
    void Poll();

    /// Number of cases with a verdict. A retry may still turn a failure into a success.
    std::uint32_t GetDone() const { return m_done; }
    std::uint32_t GetFailed() const { return m_failed; }

    /// Number of attempts with a verdict, retries included. Never decreases, and duplicates do not count.
    std::uint64_t GetVerdicts() const { return m_verdicts; }

    /// True if a host finished the run and the run was not canceled.
    bool HasEnded() const;

    /// The problems that the last journal's host found with the run.
    const std::vector<std::wstring>& GetProblems() const { return m_problems; }

    /// True if an attempt at the case has passed. `caseIndex` is less than the plan's number of cases.
    bool HasPassed(std::uint32_t caseIndex) const { return m_cases[caseIndex].hasPassed; }

    /// True if the host of this journal has recorded the start of an attempt at the case, but neither the end of that
    /// attempt nor its own end. `number` is at most GetJournalCount().
    bool IsUnderWay(std::uint32_t number, std::uint32_t caseIndex) const
    {
        return m_journals[number - 1].underWay.contains(caseIndex);
    }

    /// The number of records that were read of a journal. `number` is at most GetJournalCount().
    std::uint64_t CountRecords(std::uint32_t number) const { return m_journals[number - 1].sequence; }

    /// True if the host of this journal has recorded its end or that the run was canceled: it starts no further case.
    /// `number` is at most GetJournalCount().
    bool IsOver(std::uint32_t number) const
    {
        return m_journals[number - 1].isEnded || m_journals[number - 1].isCanceled;
    }

    std::uint32_t GetJournalCount() const { return static_cast<std::uint32_t>(m_journals.size()); }

private:
    struct SJournal
    {
        std::uint64_t offset = 0;   ///< behind the last record that was read
        std::uint64_t sequence = 0; ///< of that record
        std::set<std::uint32_t> underWay;
        bool isEnded = false;
        bool isCanceled = false;
    };
    struct SCase
    {
        std::uint32_t attempts = 0; ///< with a verdict
        bool hasPassed = false;
    };

    void read(std::uint32_t number, SJournal& journal);
    void take(SJournal& journal, const Record& record);
    void take(const SCaseEnded& record);

    std::wstring m_folder;
    std::uint32_t m_own;
    CRecordParser m_parser;
    std::vector<SJournal> m_journals; ///< by number - 1
    std::vector<SCase> m_cases;       ///< by case
    std::uint32_t m_done = 0;
    std::uint32_t m_failed = 0;
    std::uint64_t m_verdicts = 0;
    std::vector<std::wstring> m_problems;
};

} // namespace Runner
