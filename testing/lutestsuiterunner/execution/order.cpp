#include "testing/lutestsuiterunner/execution/order.h"

#include <algorithm>
#include <functional>
#include <random>

namespace Runner
{

namespace
{

using Cases = std::vector<std::uint32_t>;

/// The rank of a case for FailedFirst.
int getRank(const std::optional<SPreviousCase>& previous)
{
    return !previous ? 1 : previous->hasFailed ? 0 : 2;
}

/// A case without a time counts as the longest, because it may have hung.
bool isLonger(const std::optional<SPreviousCase>& a, const std::optional<SPreviousCase>& b)
{
    return IsMeasured(a) && IsMeasured(b) ? a->time > b->time : !IsMeasured(a) && IsMeasured(b);
}

/// Replaces std::shuffle, whose result may differ between standard libraries.
void shuffle(Cases& cases, std::uint64_t seed)
{
    std::mt19937_64 random(seed);
    for (std::size_t left = cases.size(); left > 1; --left)
    {
        std::swap(cases[left - 1], cases[random() % left]);
    }
}

/// The mean of the known times; 1 if no time is known.
std::uint64_t getMeanTime(const PreviousCases& previous)
{
    std::uint64_t sum = 0;
    std::uint64_t count = 0;
    for (const std::optional<SPreviousCase>& one : previous)
    {
        sum += one ? one->time : 0;
        count += IsMeasured(one) ? 1 : 0;
    }
    return count == 0 ? 1 : std::max<std::uint64_t>(1, sum / count);
}

} // namespace

bool IsMeasured(const std::optional<SPreviousCase>& previous)
{
    return previous && previous->time > 0;
}

PreviousCases FindPrevious(const SPlan& plan, const CPrevious& previous)
{
    PreviousCases cases(plan.cases.size());
    for (std::uint32_t index = 0; index < cases.size(); ++index)
    {
        cases[index] = previous.Find(plan, index);
    }
    return cases;
}

std::vector<std::uint32_t> DealByTime(const std::vector<std::uint64_t>& times, std::uint32_t shards)
{
    using Load = std::pair<std::uint64_t, std::uint32_t>;
    std::vector<Load> loads;
    for (std::uint32_t shard = 0; shard < shards; ++shard)
    {
        loads.emplace_back(0, shard);
    }
    std::vector<std::uint32_t> owners;
    owners.reserve(times.size());
    for (const std::uint64_t time : times)
    {
        std::ranges::pop_heap(loads, std::greater());
        loads.back().first += time;
        owners.push_back(loads.back().second);
        std::ranges::push_heap(loads, std::greater());
    }
    return owners;
}

void SortCases(Cases& cases, EOrder order, const PreviousCases& previous, std::uint64_t seed)
{
    switch (order)
    {
    case EOrder::FailedFirst:
        std::ranges::stable_sort(cases, {}, [&previous](std::uint32_t index) { return getRank(previous[index]); });
        break;
    case EOrder::LongestFirst:
        std::ranges::stable_sort(
            cases, [&previous](std::uint32_t a, std::uint32_t b) { return isLonger(previous[a], previous[b]); });
        break;
    case EOrder::Random:
        shuffle(cases, seed);
        break;
    case EOrder::Listed:
        break;
    }
}

void SelectShard(SPlan& plan, const PreviousCases& previous)
{
    const std::uint64_t mean = getMeanTime(previous);
    // Without times all cases weigh the same, so that shards get them in turn.
    const auto getTime = [&](std::uint32_t index) {
        return IsMeasured(previous[index]) ? previous[index]->time : mean;
    };
    Cases cases = SortByName(plan);
    std::ranges::stable_sort(cases, std::greater(), getTime);
    std::vector<std::uint64_t> times;
    std::ranges::transform(cases, std::back_inserter(times), getTime);
    const std::vector<std::uint32_t> owners = DealByTime(times, plan.shard.count);
    for (std::size_t place = 0; place < cases.size(); ++place)
    {
        plan.cases[cases[place]].isInShard = owners[place] + 1 == plan.shard.number;
    }
}

} // namespace Runner
