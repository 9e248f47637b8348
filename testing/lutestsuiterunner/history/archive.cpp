#include "testing/lutestsuiterunner/history/archive.h"

#include <algorithm>
#include <limits>

namespace Runner::History
{

namespace
{

constexpr std::uint32_t c_None = std::numeric_limits<std::uint32_t>::max();

/// Adds a later entry of the same name. `count` is the number of entries so far.
void addEntry(SMeasured& sum, const SMeasured& entry, std::uint32_t count)
{
    sum.result = !sum.HasVerdict() || (sum.HasPassed() && entry.HasVerdict()) ? entry.result : sum.result;
    sum.hasBoth = sum.hasBoth || entry.hasBoth;
    sum.seconds += (entry.seconds - sum.seconds) / static_cast<float>(count + 1);
    sum.memory = std::max(sum.memory, entry.memory);
    // If repetitions differ, there is no number to compare.
    sum.allocations = sum.allocations == entry.allocations ? sum.allocations : c_UnknownCount;
}

} // namespace

std::uint32_t CArchive::GetIndex(const std::wstring& className, const std::wstring& caseName)
{
    m_key.assign(className).append(1, L'\0').append(caseName);
    const auto [entry, isNew] = m_indices.try_emplace(m_key, static_cast<std::uint32_t>(m_names.size()));
    if (isNew)
    {
        m_names.push_back({className, caseName});
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
        const std::uint32_t index = GetIndex(testCase.className, testCase.caseName);
        places.resize(std::max<std::size_t>(places.size(), index + 1), c_None);
        if (places[index] == c_None)
        {
            places[index] = static_cast<std::uint32_t>(run.cells.size());
            run.cells.push_back({index, testCase.measured});
            counts.push_back(1);
        }
        else
        {
            addEntry(run.cells[places[index]].measured, testCase.measured, counts[places[index]]++);
        }
        if (!testCase.message.empty())
        {
            run.messages.push_back({index, testCase.message.substr(0, c_LongestMessage)});
        }
    }
    return run;
}

} // namespace Runner::History
