#include "testing/lutestsuiterunner/history/analysis/allocations.h"

namespace Runner::History
{

std::optional<SCountChange> FindCountChange(std::span<const std::uint64_t> counts)
{
    constexpr std::size_t c_Stable = 5;
    constexpr std::size_t c_RunsPerChange = 10;
    std::optional<SCountChange> change;
    std::size_t equal = 1;   // values at the end of what was looked at
    std::size_t changes = 0; // so far
    for (std::size_t index = 1; index < counts.size(); ++index)
    {
        if (counts[index] == counts[index - 1])
        {
            ++equal;
            continue;
        }
        if (equal >= c_Stable && changes <= index / c_RunsPerChange)
        {
            change = SCountChange{index, counts[index - 1], counts.back()};
        }
        equal = 1;
        ++changes;
    }
    return change && change->before != change->after ? change : std::nullopt;
}

} // namespace Runner::History
