#include "testing/lutestsuiterunner/history/table.h"

#include <algorithm>

#include "base/lbencoding.h"
#include "testing/lutestsuiterunner/history/randomnumbers.h"

namespace Runner::History
{

namespace
{

bool hasAllocations(const SRun* run)
{
    return std::ranges::any_of(run->cells,
                               [](const SCell& cell) { return cell.measured.allocations != c_UnknownCount; });
}

EOutcome getOutcome(const SMeasured& measured)
{
    if (!measured.HasVerdict())
    {
        return EOutcome::Undecided;
    }
    return measured.HasPassed() ? EOutcome::Passed : EOutcome::Failed;
}

std::uint64_t addText(std::uint64_t seed, const std::wstring& text)
{
    for (const char byte : LbEncoding::ToUtf8(text))
    {
        seed = MixBits(seed + static_cast<unsigned char>(byte) + 1);
    }
    return MixBits(seed);
}

} // namespace

CTable::CTable(const std::vector<SCaseName>& names, std::vector<const SRun*> runs)
    : m_names(&names), m_runs(std::move(runs))
{
    const std::size_t size = names.size() * m_runs.size();
    m_outcomes.resize(size, EOutcome::Absent);
    m_seconds.resize(size);
    m_memory.resize(size);
    if (std::ranges::any_of(m_runs, hasAllocations))
    {
        m_allocations.resize(size, c_UnknownCount);
    }
    for (std::size_t run = 0; run < m_runs.size(); ++run)
    {
        fill(run);
    }
    std::ranges::sort(m_both);
}

void CTable::fill(std::size_t run)
{
    for (const SCell& cell : m_runs[run]->cells)
    {
        const std::size_t place = cell.caseIndex * m_runs.size() + run;
        m_outcomes[place] = getOutcome(cell.measured);
        m_seconds[place] = cell.measured.seconds;
        m_memory[place] = cell.measured.memory;
        m_hasMemory = m_hasMemory || cell.measured.memory != 0;
        if (!m_allocations.empty())
        {
            m_allocations[place] = cell.measured.allocations;
        }
        if (cell.measured.hasBoth)
        {
            m_both.push_back(place);
        }
    }
}

std::uint64_t CTable::GetSeed(std::size_t testCase) const
{
    const SCaseName& name = GetName(testCase);
    return addText(addText(0, name.className), name.caseName);
}

std::span<const std::uint64_t> CTable::GetAllocations(std::size_t testCase) const
{
    return m_allocations.empty() ? std::span<const std::uint64_t>() : getRow(m_allocations, testCase);
}

bool CTable::HasBoth(std::size_t testCase, std::size_t run) const
{
    return std::ranges::binary_search(m_both, testCase * m_runs.size() + run);
}

bool CTable::HasBoth(std::size_t testCase) const
{
    const auto next = std::ranges::lower_bound(m_both, testCase * m_runs.size());
    return next != m_both.end() && *next < (testCase + 1) * m_runs.size();
}

} // namespace Runner::History
