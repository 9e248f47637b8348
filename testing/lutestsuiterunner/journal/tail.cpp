#include "testing/lutestsuiterunner/journal/tail.h"

#include <algorithm>

#include "base/inoncopyable.h"
#include "base/os/durablefiles.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/line.h"
#include "testing/lutestsuiterunner/journal/linereader.h"

namespace Runner
{

namespace
{

/// An open file that is closed with the object.
class COpenFile : public INonCopyable
{
public:
    explicit COpenFile(LbOs::FileHandle file) : m_file(file) {}
    ~COpenFile()
    {
        if (IsOpen())
        {
            LbOs::CloseFile(m_file);
        }
    }

    bool IsOpen() const { return m_file != LbOs::c_InvalidFile; }

    /// True if the file has bytes from this offset on. Asks the open file, because a network file system updates what
    /// it knows about a file when the file is opened.
    bool IsLongerThan(std::uint64_t offset) const
    {
        return LbOs::GetFileSize(m_file) > static_cast<std::int64_t>(offset);
    }

    std::size_t Read(char* buffer, std::size_t size) const
    {
        return static_cast<std::size_t>(std::max<std::int64_t>(0, LbOs::ReadFileBytes(m_file, buffer, size)));
    }

private:
    LbOs::FileHandle m_file;
};

} // namespace

CRunTail::CRunTail(const std::wstring& folder, std::size_t caseCount, std::uint32_t own)
    : m_folder(folder), m_own(own), m_cases(caseCount)
{
}

void CRunTail::Poll()
{
    // Queries the name, because the listing of a network folder may be out of date.
    while (LbOs::QueryEntry(m_folder + GetJournalName(GetJournalCount() + 1)) == LbOs::EEntry::File)
    {
        m_journals.emplace_back();
        m_problems.clear();
    }
    for (std::uint32_t number = 1; number <= m_journals.size(); ++number)
    {
        if (number != m_own && !m_journals[number - 1].isEnded)
        {
            read(number, m_journals[number - 1]);
        }
    }
}

void CRunTail::read(std::uint32_t number, SJournal& journal)
{
    const COpenFile file(LbOs::OpenForReadingFrom(m_folder + GetJournalName(number), journal.offset));
    if (!file.IsOpen() || !file.IsLongerThan(journal.offset))
    {
        return;
    }
    CLineReader lines([&file](char* buffer, std::size_t size) { return file.Read(buffer, size); }, c_LargestRecord,
                      journal.sequence);
    try
    {
        const LoadText noText = [](const STextPlace&) { return std::string(); };
        Record record;
        for (std::string_view json; lines.Next(json);)
        {
            if (m_parser.Parse(json, noText, record))
            {
                take(journal, record);
            }
        }
    }
    catch (const SDamage&)
    {
        // The record is not complete yet, or it is damaged and the reports will say so.
    }
    journal.offset += lines.GetEnd();
    journal.sequence = lines.GetSequence();
}

bool CRunTail::HasEnded() const
{
    return std::ranges::any_of(m_journals,
                               [](const SJournal& journal) { return journal.isEnded && !journal.isCanceled; });
}

void CRunTail::take(SJournal& journal, const Record& record)
{
    if (const auto* const started = std::get_if<SCaseStarted>(&record);
        started != nullptr && started->caseIndex < m_cases.size())
    {
        journal.underWay.insert(started->caseIndex);
    }
    else if (const auto* const ended = std::get_if<SCaseEnded>(&record))
    {
        journal.underWay.erase(ended->caseIndex);
        take(*ended);
    }
    else if (const auto* const problem = std::get_if<SRunProblem>(&record);
             problem != nullptr && &journal == &m_journals.back())
    {
        m_problems.push_back(problem->text);
    }
    journal.isCanceled = journal.isCanceled || std::holds_alternative<SRunCanceled>(record);
    if (std::holds_alternative<SRunFinished>(record))
    {
        journal.isEnded = true;
        journal.underWay.clear();
    }
}

void CRunTail::take(const SCaseEnded& record)
{
    if (record.end == EAttemptEnd::Canceled || record.caseIndex >= m_cases.size())
    {
        return;
    }
    SCase& state = m_cases[record.caseIndex];
    const bool isFirst = state.attempts == 0;
    const bool hasPassed = record.info.result == LuTestSuiteRun::ECaseRunResult::Ok;
    m_done += isFirst ? 1 : 0;
    m_failed += isFirst && !hasPassed ? 1 : 0;
    m_failed -= !isFirst && hasPassed && !state.hasPassed ? 1 : 0;
    state.hasPassed = state.hasPassed || hasPassed;
    if (record.attempt > state.attempts)
    {
        m_verdicts += record.attempt - state.attempts;
        state.attempts = record.attempt;
    }
}

} // namespace Runner
