/// The writing side of a journal.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "testing/lutestsuiterunner/model/records.h"

namespace Runner
{

/// The only writer of one journal. Each record is one write: once Write has returned, the record survives the end of
/// the process. About a second later it also survives a crash of the machine: a thread of the writer flushes the file.
/// Any thread may call; records have the order of the calls.
class CJournalWriter
{
public:
    /// Creates a journal in a run's folder, with the number in `begun`, and writes its first record. Throws
    /// CNameTakenException if the file exists, else LbException with a German message if it cannot be written.
    CJournalWriter(const std::wstring& folder, const SJournalBegun& begun);

    /// Closes without reporting errors; see Close.
    ~CJournalWriter();
    CJournalWriter(const CJournalWriter&) = delete;
    CJournalWriter& operator=(const CJournalWriter&) = delete;

    /// The journal's number among those of its folder.
    std::uint32_t GetNumber() const { return m_number; }

    /// Writes the record and returns its sequence number; sets `elapsed` to the present time if it is 0. First writes
    /// large texts to a file in the folder's "output". Throws LbException with a German message that names the file if
    /// a write or the thread's flush failed. From then on each call throws, because a record must not follow an
    /// incomplete one.
    std::uint64_t Write(const Record& record);

    /// Flushes everything to the disk and closes the files; throws as Write does. Later calls of Write throw.
    void Close();

private:
    class CFiles;

    std::uint32_t m_number;
    std::unique_ptr<CFiles> m_files;
};

} // namespace Runner
