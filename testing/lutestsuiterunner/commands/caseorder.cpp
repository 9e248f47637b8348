#include "testing/lutestsuiterunner/commands/caseorder.h"

#include <algorithm>
#include <iterator>

namespace Runner
{

std::vector<std::uint32_t> OrderMissingCases(const CRunState& state, const SRunOptions& options,
                                             const PreviousCases& previous)
{
    std::vector<std::uint32_t> cases = state.FindCases([](std::uint32_t /*index*/) { return true; });
    SortCases(cases, options.order, previous, options.seed.value_or(0));
    // Finished cases are removed after sorting, so that a resumed run keeps the order of the first call.
    std::erase_if(cases, [&state](std::uint32_t index) { return state.GetVerdict(index) != EVerdict::Missing; });
    return cases;
}

std::vector<std::uint64_t> GetExpectedTimes(const PreviousCases& previous)
{
    std::vector<std::uint64_t> times;
    if (std::ranges::any_of(previous, [](const auto& one) { return one.has_value(); }))
    {
        std::ranges::transform(previous, std::back_inserter(times),
                               [](const auto& one) { return one ? one->time : 0; });
    }
    return times;
}

} // namespace Runner
