#include "testing/lutestsuiterunner/cluster/expectedtimes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <numeric>
#include <utility>
#include <vector>

namespace Runner
{

namespace
{

/// The mean of the longest tenth of the times.
std::uint64_t getLongMean(std::vector<std::uint64_t> times)
{
    constexpr std::size_t c_Share = 10;
    const std::size_t count = (times.size() + c_Share - 1) / c_Share;
    std::ranges::partial_sort(times, times.begin() + static_cast<std::ptrdiff_t>(count), std::greater());
    return std::accumulate(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(count), std::uint64_t{0}) / count;
}

} // namespace

void SetExpectedTimes(SPlan& plan, const PreviousCases& previous)
{
    std::vector<std::uint64_t> times;
    for (const std::optional<SPreviousCase>& one : previous)
    {
        if (IsMeasured(one))
        {
            times.push_back(one->time);
        }
    }
    if (times.empty())
    {
        return;
    }
    const std::uint64_t unknown = getLongMean(std::move(times));
    for (std::uint32_t index = 0; index < plan.cases.size(); ++index)
    {
        plan.cases[index].expected = IsMeasured(previous[index]) ? previous[index]->time : unknown;
    }
}

} // namespace Runner
