#include "testing/lutestsuiterunner/execution/siblings.h"

#include <algorithm>
#include <random>
#include <set>
#include <utility>

namespace Runner
{

namespace
{

using Cases = std::vector<std::uint32_t>;

/// Hosts that take the cases in the same order would meet at every case. Therefore two hosts work from opposite ends
/// and meet once. Further hosts take a random order, in which they seldom meet another host.
Cases arrange(Cases cases, std::uint32_t earlierHosts)
{
    if (earlierHosts == 1)
    {
        std::ranges::reverse(cases);
    }
    else if (earlierHosts > 1)
    {
        std::ranges::shuffle(cases, std::minstd_rand(earlierHosts));
    }
    return cases;
}

} // namespace

CSiblings::CSiblings(const std::wstring& folder, std::uint32_t journal, std::size_t caseCount, Clock clock)
    : m_clock(std::move(clock)), m_journal(journal), m_begin(m_clock()), m_tail(folder, caseCount, journal),
      m_lastRecord(m_begin), m_lastPoll(m_begin)
{
    m_tail.Poll();
    m_records = countRecords();
    for (std::uint32_t number = 1; number <= m_tail.GetJournalCount(); ++number)
    {
        m_earlier.push_back(m_tail.CountRecords(number));
        m_isExpecting = m_isExpecting || isAtWork(number);
    }
}

bool CSiblings::HasPassed(std::uint32_t caseIndex)
{
    poll();
    return m_tail.HasPassed(caseIndex);
}

bool CSiblings::IsUnderWay(std::uint32_t caseIndex)
{
    poll();
    for (std::uint32_t number = 1; number <= m_tail.GetJournalCount(); ++number)
    {
        if (m_tail.IsUnderWay(number, caseIndex) && isAtWork(number))
        {
            return true;
        }
    }
    return false;
}

std::uint32_t CSiblings::CountEarlier()
{
    poll();
    std::uint32_t count = 0;
    for (std::uint32_t number = 1; number < m_journal && number <= m_tail.GetJournalCount(); ++number)
    {
        count += isAtWork(number) ? 1 : 0;
    }
    return count;
}

void CSiblings::poll()
{
    const auto now = m_clock();
    const bool isSoon = m_isExpecting && now < m_lastRecord + sc_Silence;
    if (now < m_lastPoll + (isSoon ? sc_ShortInterval : sc_LongInterval))
    {
        return;
    }
    m_lastPoll = now;
    m_tail.Poll();
    if (const std::uint64_t records = countRecords(); records > m_records)
    {
        m_records = records;
        m_lastRecord = now;
        m_isExpecting = true;
    }
}

bool CSiblings::isAtWork(std::uint32_t number) const
{
    const std::uint64_t earlier = number <= m_earlier.size() ? m_earlier[number - 1] : 0;
    const bool isUnknown = m_clock() < m_begin + sc_Silence && !m_tail.IsOver(number);
    return number != m_journal && (isUnknown || m_tail.CountRecords(number) > earlier);
}

std::uint64_t CSiblings::countRecords() const
{
    std::uint64_t count = 0;
    for (std::uint32_t number = 1; number <= m_tail.GetJournalCount(); ++number)
    {
        count += m_tail.CountRecords(number);
    }
    return count;
}

void RunBesideSiblings(Cases cases, CSiblings& siblings, const RunCases& run)
{
    for (bool isLastPass = false; !cases.empty();)
    {
        const std::uint32_t earlierHosts = siblings.CountEarlier();
        std::set<std::uint32_t> settled;
        bool hasChanged = false;
        bool hasBegun = false;
        run(arrange(cases, earlierHosts), [&](std::uint32_t index) {
            hasChanged = hasChanged || siblings.CountEarlier() != earlierHosts;
            const bool hasPassed = siblings.HasPassed(index);
            if (hasChanged || (!hasPassed && !isLastPass && siblings.IsUnderWay(index)))
            {
                return false;
            }
            settled.insert(index);
            hasBegun = hasBegun || !hasPassed;
            return !hasPassed;
        });
        if (isLastPass && !hasChanged)
        {
            return;
        }
        std::erase_if(cases, [&settled](std::uint32_t index) { return settled.contains(index); });
        isLastPass = !hasChanged && !hasBegun;
    }
}

} // namespace Runner
