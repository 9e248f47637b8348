/// The writing side of a journal.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "testing/lutestsuiterunner/model/records.h"

namespace Runner
{

/// Writes one journal, which it holds alone. A record is one write: when Write has returned, the record survives the
/// process. It survives the machine about a second later at most: a thread of the writer brings what was written to
/// the disk. Any thread may call; records get the order of the calls.
class CJournalWriter
{
public:
    /// Creates the journal of the number that `begun` names in a run's folder, and writes its first record. Throws
    /// LbException with a German message if there is such a file already, or it cannot be written.
    CJournalWriter(const std::wstring& folder, const SJournalBegun& begun);

    /// Closes without a word; see Close.
    ~CJournalWriter();
    CJournalWriter(const CJournalWriter&) = delete;
    CJournalWriter& operator=(const CJournalWriter&) = delete;

    /// Writes the record, with the present time as `elapsed` where that is 0, and returns its sequence number. Large
    /// texts go to a file in the folder's "output" before. Throws LbException with a German message that names the file
    /// if anything could not be written, now or by the thread before; from then on each call throws, for nothing may be
    /// appended behind a record that is torn.
    std::uint64_t Write(const Record& record);

    /// Brings everything to the disk and closes the files; throws as Write does. Later calls of Write throw.
    void Close();

private:
    class CFiles;

    std::unique_ptr<CFiles> m_files;
};

} // namespace Runner
