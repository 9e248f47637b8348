/// The reading side of journals.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/model/records.h"
#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// Reads one journal from its first record to its last, in constant memory, even while it is being written. Ignores a
/// tail (an incomplete last line, or one whose checksum is wrong). One thread at a time.
class CJournalReader
{
public:
    /// Opens the journal with this number in a run's folder. Throws LbException with a German message if the file
    /// cannot be opened.
    CJournalReader(const std::wstring& folder, std::uint32_t number);
    ~CJournalReader();
    CJournalReader(const CJournalReader&) = delete;
    CJournalReader& operator=(const CJournalReader&) = delete;

    /// Reads the next record; false after the last one. Throws LbException with a German message that names file, line
    /// and byte offset if the journal is damaged before its end.
    bool Next(Record& record);

    /// The sequence number of the last record that Next read; 0 before.
    std::uint64_t GetSequence() const;

    /// Number of bytes that were ignored as a tail; final once Next returned false.
    std::uint64_t GetTailSize() const;

    /// A German text without a full stop if the tail is a line with a line end, else empty; final once Next returned
    /// false. A host that has died may have left such a line, but it may also be damage.
    std::wstring DescribeBadLastLine() const;

private:
    class CSource;

    std::unique_ptr<CSource> m_source;
};

/// Reads plan and journals of a run, even while it is in progress. `folder` ends in a separator. Throws LbException
/// with a German message if the folder contains no run, or if a file in it is damaged, missing, or belongs to another
/// run. For a distributed run, only an unreadable plan of the whole run throws. Unreadable data of a shard is a problem
/// of the run; all records before such data count. Once the run has a proof.json, only the records counted there are
/// used.
std::unique_ptr<CRunState> LoadRun(const std::wstring& folder);

/// As LoadRun, for a run that no process executes. If the last journal ends in a bad line with a line end, a warning of
/// the state names it: no host will continue the journal. The same as LoadRun for distributed runs and their shards,
/// because their hosts take no lock.
std::unique_ptr<CRunState> LoadRunWithoutHost(const std::wstring& folder);

/// The numbers of a folder's journals, ascending. `folder` ends in a separator.
std::vector<std::uint32_t> FindJournals(const std::wstring& folder);

/// FindJournals for a given listing of the folder. Also looks for the journals that the listing lacks, up to the first
/// number without a file, because the listing of a network folder may be out of date.
std::vector<std::uint32_t> CompleteJournals(const std::wstring& folder, std::vector<std::uint32_t> listed);

} // namespace Runner
