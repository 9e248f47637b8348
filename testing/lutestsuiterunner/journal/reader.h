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

/// Reads one journal from its first record to its last, in constant memory; also one that is being written. A tail that
/// was torn (an incomplete last line, or one whose checksum is wrong) is left out. One thread at a time.
class CJournalReader
{
public:
    /// Of the journal of this number in a run's folder. Throws LbException with a German message if the file cannot be
    /// opened.
    CJournalReader(const std::wstring& folder, std::uint32_t number);
    ~CJournalReader();
    CJournalReader(const CJournalReader&) = delete;
    CJournalReader& operator=(const CJournalReader&) = delete;

    /// Reads the next record; false behind the last one. Throws LbException with a German message that names file, line
    /// and byte offset if the journal is damaged before its end.
    bool Next(Record& record);

    /// Of the record that Next read last; 0 before.
    std::uint64_t GetSequence() const;

    /// Number of bytes that were left out as a torn tail; final once Next returned false.
    std::uint64_t GetTailSize() const;

private:
    class CSource;

    std::unique_ptr<CSource> m_source;
};

/// Reads plan and journals of a run, also of one under way. `folder` ends in a separator. Throws LbException with a
/// German message if the folder holds no run, or something in it is damaged, missing, or of another run.
std::unique_ptr<CRunState> LoadRun(const std::wstring& folder);

/// The numbers of a folder's journals, ascending.
std::vector<std::uint32_t> FindJournals(const std::wstring& folder);

} // namespace Runner
