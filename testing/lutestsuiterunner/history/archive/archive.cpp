#include "testing/lutestsuiterunner/history/archive/archive.h"

#include <algorithm>
#include <limits>

namespace Runner::History
{

namespace
{

constexpr std::uint32_t c_None = std::numeric_limits<std::uint32_t>::max();

/// Adds a later entry of the same name. `count` is the number of entries with a verdict so far, at least 1. A canceled
/// entry has no measurements.
void addEntry(SMeasured& sum, const SMeasured& entry, std::uint32_t& count)
{
    if (!entry.HasVerdict())
    {
        return;
    }
    if (!sum.HasVerdict())
    {
        sum = entry;
        return;
    }
    sum.result = sum.HasPassed() ? entry.result : sum.result;
    sum.hasBoth = sum.hasBoth || entry.hasBoth;
    sum.seconds += (entry.seconds - sum.seconds) / static_cast<float>(++count);
    sum.memory = std::max(sum.memory, entry.memory);
    // If repetitions differ, there is no number to compare.
    sum.allocations = sum.allocations == entry.allocations ? sum.allocations : c_UnknownCount;
}

} // namespace

std::uint32_t CArchive::getIndex(const std::wstring& className, const std::wstring& caseName)
{
    // Most runs have the same cases in the same order.
    const bool isNext =
        m_next < m_names.size() && m_names[m_next].caseName == caseName && m_names[m_next].className == className;
    const std::uint32_t index = isNext ? m_next : findIndex({className, caseName});
    m_next = index + 1;
    return index;
}

/// The index of the name, which is added if it is new.
std::uint32_t CArchive::findIndex(SCaseName name)
{
    const auto getKey = [](const SCaseName& one) { return one.className + L'\0' + one.caseName; };
    for (std::size_t index = m_indices.size(); index < m_names.size(); ++index)
    {
        m_indices.emplace(getKey(m_names[index]), static_cast<std::uint32_t>(index));
    }
    const auto [entry, isNew] = m_indices.try_emplace(getKey(name), static_cast<std::uint32_t>(m_names.size()));
    if (isNew)
    {
        m_names.push_back(std::move(name));
    }
    return entry->second;
}

SRun CArchive::MakeRun(const SRecordedRun& recorded)
{
    SRun run;
    run.label = recorded.label;
    run.cells.reserve(recorded.cases.size());
    std::vector<std::uint32_t> places(m_names.size(), c_None);
    std::vector<std::uint32_t> counts;
    for (const SRecordedCase& testCase : recorded.cases)
    {
        const std::uint32_t index = getIndex(testCase.className, testCase.caseName);
        places.resize(std::max<std::size_t>(places.size(), index + 1), c_None);
        if (places[index] == c_None)
        {
            places[index] = static_cast<std::uint32_t>(run.cells.size());
            run.cells.push_back({index, testCase.measured});
            counts.push_back(1);
        }
        else
        {
            addEntry(run.cells[places[index]].measured, testCase.measured, counts[places[index]]);
        }
        if (!testCase.message.empty())
        {
            run.messages.push_back({index, testCase.message.substr(0, c_LongestMessage)});
        }
    }
    return run;
}

} // namespace Runner::History
