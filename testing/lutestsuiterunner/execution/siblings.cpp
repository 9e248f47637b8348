#include "testing/lutestsuiterunner/execution/siblings.h"

namespace Runner
{

CSiblings::CSiblings(const std::wstring& folder, std::uint32_t journal, std::size_t caseCount,
                     std::chrono::milliseconds interval)
    : m_tail(folder, caseCount), m_journal(journal), m_interval(interval), m_last(std::chrono::steady_clock::now())
{
    m_tail.Poll();
    m_earlierRecords = countEarlierRecords();
    for (std::uint32_t number = 1; number < m_journal && number <= m_tail.GetJournalCount(); ++number)
    {
        m_hasOpenJournal = m_hasOpenJournal || !m_tail.IsOver(number);
    }
}

bool CSiblings::HasPassed(std::uint32_t caseIndex)
{
    poll();
    return m_tail.HasPassed(caseIndex);
}

bool CSiblings::IsEarlierHostActive()
{
    poll();
    return m_hasPolled ? countEarlierRecords() > m_earlierRecords : m_hasOpenJournal;
}

void CSiblings::poll()
{
    const auto now = std::chrono::steady_clock::now();
    if (now >= m_last + m_interval)
    {
        m_tail.Poll();
        m_last = now;
        m_hasPolled = true;
    }
}

/// The number of records in earlier journals.
std::uint64_t CSiblings::countEarlierRecords() const
{
    std::uint64_t count = 0;
    for (std::uint32_t number = 1; number < m_journal && number <= m_tail.GetJournalCount(); ++number)
    {
        count += m_tail.CountRecords(number);
    }
    return count;
}

} // namespace Runner
