#include "testing/lutestsuiterunner/history/analysis/steps.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "testing/lutestsuiterunner/history/analysis/robust.h"

namespace Runner::History
{

namespace
{

constexpr std::size_t c_ShortestPart = 3;
/// Less evidence than this occurs by chance even if a suite measures only a thousand cases.
constexpr double c_FloorBits = 14.0;
/// The interval misses the true run on one side with at most this probability.
constexpr double c_IntervalError = 0.01;

/// The next size of a part to test: each of the first sizes, then sizes that grow by a fifth.
std::size_t getNextSize(std::size_t size)
{
    return std::max(size + 1, size * 6 / 5);
}

/// The pairs of a value before and a value after the place that are in the wrong order, from the sum of the ranks after
/// the place.
std::size_t countInversions(std::size_t behind, std::size_t length, std::uint64_t rankSum, bool isUp)
{
    const std::uint64_t lowest = behind * (behind - 1) / 2;
    const std::uint64_t highest = lowest + behind * (length - behind);
    return static_cast<std::size_t>(isUp ? highest - rankSum : rankSum - lowest);
}

/// Relative to the lower level.
double getChange(double before, double after)
{
    const auto [lower, higher] = std::minmax(before, after);
    if (lower > 0.0)
    {
        return higher / lower - 1.0;
    }
    return higher > 0.0 ? std::numeric_limits<double>::infinity() : 0.0;
}

std::vector<double> applyOrder(const SSeriesView& series)
{
    std::vector<double> values;
    values.reserve(series.order.size());
    for (const std::uint16_t index : series.order)
    {
        values.push_back(series.values[index]);
    }
    return values;
}

std::vector<std::uint16_t> getIdentity(std::size_t length)
{
    std::vector<std::uint16_t> order(length);
    std::iota(order.begin(), order.end(), std::uint16_t{0});
    return order;
}

} // namespace

const std::vector<CStepFinder::SPlace>& CStepFinder::getPlaces(std::size_t length)
{
    if (m_places.size() <= length)
    {
        m_places.resize(length + 1);
    }
    std::vector<SPlace>& places = m_places[length];
    if (!places.empty())
    {
        return places;
    }
    for (std::size_t size = c_ShortestPart; 2 * size <= length; size = getNextSize(size))
    {
        const std::int64_t limit = m_tails.GetLimit(size, length - size, c_FloorBits);
        if (limit >= 0)
        {
            places.push_back({size, limit});
        }
        if (limit >= 0 && 2 * size != length)
        {
            places.push_back({length - size, limit});
        }
    }
    std::ranges::sort(places, {}, &SPlace::index);
    return places;
}

std::size_t CStepFinder::GetTestCount(std::size_t length)
{
    return 2 * getPlaces(length).size();
}

void CStepFinder::findCandidates(const SSeriesView& series)
{
    m_candidates.clear();
    const std::size_t length = series.order.size();
    std::uint64_t rankSum = length * (length - 1) / 2;
    std::size_t index = 0;
    for (const SPlace& place : getPlaces(length))
    {
        for (; index < place.index; ++index)
        {
            rankSum -= series.ranks[series.order[index]];
        }
        for (const bool isUp : {true, false})
        {
            const std::size_t inversions = countInversions(length - index, length, rankSum, isUp);
            if (static_cast<std::int64_t>(inversions) <= place.limit)
            {
                m_candidates.push_back({index, isUp, m_tails.GetBits(index, length - index, inversions)});
            }
        }
    }
}

SStrongest CStepFinder::FindStrongest(const SSeriesView& series)
{
    SStrongest strongest;
    findCandidates(series);
    if (m_candidates.empty())
    {
        return strongest;
    }
    const std::vector<double> values = applyOrder(series);
    const std::vector<double> winsorized = Winsorize(values);
    for (const SCandidate& candidate : m_candidates)
    {
        const double before = GetMedian(std::span(values).first(candidate.index));
        const double after = GetMedian(std::span(values).subspan(candidate.index));
        if (getChange(before, after) < m_smallestChange || (after > before) != candidate.isUp)
        {
            continue;
        }
        const SStepSize size = MeasureStep(winsorized, candidate.index, m_noise);
        if (const double bits = candidate.bits / size.inflation; bits > strongest.bits)
        {
            strongest.bits = bits;
            strongest.bitsIndex = candidate.index;
        }
        if (size.deviations > strongest.deviations)
        {
            strongest.deviations = size.deviations;
            strongest.deviationsIndex = candidate.index;
        }
    }
    return strongest;
}

std::vector<SStep> CStepFinder::FindSteps(std::span<const double> values, std::uint64_t seed,
                                          const SThresholds& thresholds)
{
    std::vector<SStep> steps;
    divide(values, 0, seed, thresholds, steps);
    for (std::size_t number = 0; number < steps.size(); ++number)
    {
        const std::size_t start = number == 0 ? 0 : steps[number - 1].index;
        const std::size_t end = number + 1 == steps.size() ? values.size() : steps[number + 1].index;
        steps[number].before = GetMedian(values.subspan(start, steps[number].index - start));
        steps[number].after = GetMedian(values.subspan(steps[number].index, end - steps[number].index));
    }
    return steps;
}

void CStepFinder::divide(std::span<const double> values, std::size_t start, std::uint64_t seed,
                         const SThresholds& thresholds, std::vector<SStep>& steps)
{
    const std::vector<std::uint16_t> ranks = GetRanks(values, seed);
    const SStrongest strongest = FindStrongest({values, ranks, getIdentity(values.size())});
    if (!thresholds.IsExceededBy(strongest))
    {
        return;
    }
    const bool hasBits = strongest.bits >= thresholds.bits;
    const std::size_t place = hasBits ? strongest.bitsIndex : strongest.deviationsIndex;
    const bool isUp = GetMedian(values.subspan(place)) > GetMedian(values.first(place));
    SStep step = describe(values, ranks, seed, isUp);
    const std::size_t found = step.index;
    divide(values.first(found), start, seed, thresholds, steps);
    step.index += start;
    step.first += start;
    step.last += start;
    steps.push_back(step);
    divide(values.subspan(found), start + found, seed, thresholds, steps);
}

/// The step is where the evidence is strongest, now over all places.
SStep CStepFinder::describe(std::span<const double> values, std::span<const std::uint16_t> ranks, std::uint64_t seed,
                            bool isUp)
{
    const std::size_t length = values.size();
    std::uint64_t rankSum = length * (length - 1) / 2;
    SStep step;
    for (std::size_t index = 1; index < length; ++index)
    {
        rankSum -= ranks[index - 1];
        const std::size_t inversions = countInversions(length - index, length, rankSum, isUp);
        if (const double bits = m_tails.GetBits(index, length - index, inversions); bits > step.bits)
        {
            step.bits = bits;
            step.index = index;
        }
    }
    const SStepSize size = MeasureStep(Winsorize(values), step.index, m_noise);
    step.bits /= size.inflation;
    step.deviations = size.deviations;
    step.before = GetMedian(values.first(step.index));
    step.after = GetMedian(values.subspan(step.index));
    findInterval(values, seed, size.inflation, step);
    return step;
}

bool CStepFinder::isOneLevel(std::span<const double> values, std::uint64_t seed, double inflation, bool isUp)
{
    const std::size_t length = values.size();
    std::vector<std::size_t> sizes;
    for (std::size_t size = 1; size < length; size = getNextSize(size))
    {
        sizes.push_back(size);
    }
    if (sizes.empty())
    {
        return true;
    }
    const double needed = GetLog2(2.0 * static_cast<double>(sizes.size()) / c_IntervalError) * inflation;
    const std::vector<std::uint16_t> ranks = GetRanks(values, seed);
    std::vector<std::uint64_t> sums(length + 1, 0);
    std::partial_sum(ranks.begin(), ranks.end(), sums.begin() + 1, std::plus<std::uint64_t>());
    const auto isStep = [&](std::size_t index) {
        const std::size_t inversions = countInversions(length - index, length, sums[length] - sums[index], isUp);
        return m_tails.GetBits(index, length - index, inversions) >= needed;
    };
    return std::ranges::none_of(sizes, [&](std::size_t size) { return isStep(size) || isStep(length - size); });
}

/// A run belongs to the interval if neither the runs before it nor the runs from it on, tested by themselves, show a
/// step in the same direction. If the step is at that run, neither part contains it.
void CStepFinder::findInterval(std::span<const double> values, std::uint64_t seed, double inflation, SStep& step)
{
    const auto isPossible = [&](std::size_t index) {
        return isOneLevel(values.first(index), seed, inflation, step.IsUp()) &&
               isOneLevel(values.subspan(index), seed, inflation, step.IsUp());
    };
    step.first = step.last = step.index;
    for (std::size_t index = 1; index < values.size(); ++index)
    {
        if (isPossible(index))
        {
            step.first = std::min(step.first, index);
            step.last = std::max(step.last, index);
        }
    }
}

} // namespace Runner::History
