#include "testing/lutestsuiterunner/history/analysis/table.h"

#include <algorithm>

#include "base/lbencoding.h"
#include "testing/lutestsuiterunner/history/analysis/randomnumbers.h"

namespace Runner::History
{

namespace
{

constexpr std::size_t c_RowsInCache = 256;

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
    // Block by block, so that the rows of a block stay in the processor's cache while all runs are added. If the cells
    // of a run are not in the order of the cases, some are added with a later block.
    std::vector<std::size_t> next(m_runs.size(), 0);
    for (std::size_t end = 0; end < names.size();)
    {
        end = std::min(end + c_RowsInCache, names.size());
        for (std::size_t run = 0; run < m_runs.size(); ++run)
        {
            const std::vector<SCell>& cells = m_runs[run]->cells;
            for (; next[run] < cells.size() && cells[next[run]].caseIndex < end; ++next[run])
            {
                fill(run, cells[next[run]]);
            }
        }
    }
    std::ranges::sort(m_both);
}

void CTable::fill(std::size_t run, const SCell& cell)
{
    const std::size_t place = cell.caseIndex * m_runs.size() + run;
    const SMeasured& measured = cell.measured;
    m_outcomes[place] = getOutcome(measured);
    m_seconds[place] = measured.seconds;
    m_memory[place] = measured.memory;
    m_hasMemory = m_hasMemory || measured.memory != 0;
    if (measured.allocations != c_UnknownCount)
    {
        m_allocations.resize(m_outcomes.size(), c_UnknownCount);
        m_allocations[place] = measured.allocations;
    }
    if (measured.hasBoth)
    {
        m_both.push_back(place);
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
