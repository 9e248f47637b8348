#include "testing/lutestsuiterunner/history/analysis/allocations.h"

namespace Runner::History
{

std::optional<SCountChange> FindCountChange(std::span<const std::uint64_t> counts)
{
    constexpr std::size_t c_Stable = 5;
    std::optional<SCountChange> change;
    std::size_t equal = 1;    // number of equal values up to the current one
    std::size_t unstable = 0; // number of earlier changes that follow fewer than c_Stable equal values
    for (std::size_t index = 1; index < counts.size(); ++index)
    {
        if (counts[index] == counts[index - 1])
        {
            ++equal;
            continue;
        }
        if (equal >= c_Stable && equal > unstable)
        {
            change = SCountChange{index, counts[index - 1], counts.back()};
        }
        unstable += equal < c_Stable ? 1 : 0;
        equal = 1;
    }
    return change && change->before != change->after ? change : std::nullopt;
}

} // namespace Runner::History
