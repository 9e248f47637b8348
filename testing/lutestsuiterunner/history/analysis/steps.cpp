#include "testing/lutestsuiterunner/history/analysis/steps.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <numeric>

#include "testing/lutestsuiterunner/history/analysis/robust.h"

namespace Runner::History
{

namespace
{

constexpr std::size_t c_ShortestPart = 3;
/// Less evidence than this occurs by chance even if a suite measures only a thousand cases.
constexpr double c_FloorBits = 12.0;
/// The highest probability that the interval misses the true run, for each of its two sides.
constexpr double c_IntervalError = 0.01;

/// The next size of a part to test: each of the first sizes, then sizes that grow by a fifth.
std::size_t getNextSize(std::size_t size)
{
    return std::max(size + 1, size * 6 / 5);
}

/// The size of the next shorter window at the end of a series.
std::size_t getShorterWindow(std::size_t size)
{
    return size * 4 / 5;
}

/// Computes how many pairs of a value before the place and a value after it are in the wrong order. `rankSum` is the
/// sum of the ranks after the place.
std::size_t countInversions(std::size_t behind, std::size_t length, std::uint64_t rankSum, bool isUp)
{
    const std::uint64_t lowest = behind * (behind - 1) / 2;
    const std::uint64_t highest = lowest + behind * (length - behind);
    return static_cast<std::size_t>(isUp ? highest - rankSum : rankSum - lowest);
}

/// The change relative to the lower level.
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

/// The runs between the neighbours of a step: [start, end).
struct SPart
{
    std::size_t start;
    std::size_t end;
};

SPart getPart(const std::vector<SStep>& steps, std::size_t number, std::size_t length)
{
    return {number == 0 ? 0 : steps[number - 1].index, number + 1 == steps.size() ? length : steps[number + 1].index};
}

/// Sets the levels of each step: the medians of the runs between the step and its neighbours.
void setLevels(std::span<const double> values, std::vector<SStep>& steps)
{
    for (std::size_t number = 0; number < steps.size(); ++number)
    {
        const SPart part = getPart(steps, number, values.size());
        SStep& step = steps[number];
        step.before = GetMedian(values.subspan(part.start, step.index - part.start));
        step.after = GetMedian(values.subspan(step.index, part.end - step.index));
    }
}

/// As getPart, without the runs at which the neighbours may have begun, if runs remain on both sides of the step.
SPart getCertainPart(const std::vector<SStep>& steps, std::size_t number, std::size_t length)
{
    const std::size_t index = steps[number].index;
    SPart part = getPart(steps, number, length);
    if (number > 0 && steps[number - 1].last < index)
    {
        part.start = steps[number - 1].last;
    }
    if (number + 1 < steps.size() && steps[number + 1].first > index)
    {
        part.end = steps[number + 1].first;
    }
    return part;
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
    std::size_t count = 0;
    for (; !getPlaces(length).empty(); length = getShorterWindow(length))
    {
        count += 2 * getPlaces(length).size();
    }
    return count;
}

void CStepFinder::setRanks(const SSeriesView& series)
{
    m_allRanks.clear();
    for (const std::uint16_t index : series.order)
    {
        m_allRanks.push_back(series.ranks[index]);
    }
    m_ranks = m_allRanks;
}

/// Makes the window begin at `start`. Derives its ranks from those of the series, without sorting again.
void CStepFinder::shortenWindow(std::size_t start)
{
    const std::span<const std::uint16_t> window = std::span(m_allRanks).subspan(start);
    m_counts.assign(m_allRanks.size(), 0);
    for (const std::uint16_t rank : window)
    {
        m_counts[rank] = 1;
    }
    std::partial_sum(m_counts.begin(), m_counts.end(), m_counts.begin());
    m_ranks.clear();
    for (const std::uint16_t rank : window)
    {
        m_ranks.push_back(static_cast<std::uint16_t>(m_counts[rank] - 1));
    }
}

void CStepFinder::findCandidates()
{
    m_candidates.clear();
    const std::size_t length = m_ranks.size();
    std::uint64_t rankSum = length * (length - 1) / 2;
    std::size_t index = 0;
    for (const SPlace& place : getPlaces(length))
    {
        for (; index < place.index; ++index)
        {
            rankSum -= m_ranks[index];
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

/// Compares the candidates of the window that begins at `start`.
void CStepFinder::compareCandidates(std::span<const double> all, std::size_t start, SStrongest& strongest)
{
    const std::span<const double> values = all.subspan(start);
    SCommonNoise noise = m_noise;
    if (start > 0)
    {
        // A window has too few runs to show how much its runs resemble their neighbours, so the whole series tells.
        noise.correlation = std::max(noise.correlation, GetCertainCorrelation(all));
    }
    const std::vector<double> winsorized = Winsorize(values);
    for (const SCandidate& candidate : m_candidates)
    {
        const double before = GetMedian(values.first(candidate.index));
        const double after = GetMedian(values.subspan(candidate.index));
        if (getChange(before, after) < m_smallestChange || (after > before) != candidate.isUp)
        {
            continue;
        }
        const SStepSize size = MeasureStep(winsorized, candidate.index, noise);
        if (const double bits = candidate.bits / size.inflation; bits > strongest.bits)
        {
            strongest.bits = bits;
            strongest.bitsPlace = {start, start + candidate.index};
        }
        if (size.deviations > strongest.deviations)
        {
            strongest.deviations = size.deviations;
            strongest.deviationsPlace = {start, start + candidate.index};
        }
    }
}

SStrongest CStepFinder::FindStrongest(const SSeriesView& series)
{
    SStrongest strongest;
    const std::size_t length = series.order.size();
    setRanks(series);
    std::vector<double> values;
    for (std::size_t window = length; !getPlaces(window).empty(); window = getShorterWindow(window))
    {
        if (window < length)
        {
            shortenWindow(length - window);
        }
        findCandidates();
        if (!m_candidates.empty())
        {
            values = values.empty() ? applyOrder(series) : std::move(values);
            compareCandidates(values, length - window, strongest);
        }
    }
    return strongest;
}

std::vector<SStep> CStepFinder::FindSteps(std::span<const double> values, std::uint64_t seed,
                                          const SThresholds& thresholds)
{
    std::vector<SStep> found;
    divide(values, 0, seed, thresholds, found);
    std::vector<SStep> steps = found;
    describeBetweenNeighbours(values, seed, steps);
    findIntervals(values, seed, steps);
    dropSmall(values, std::move(found), steps);
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
    const SStrongest::SPlace place =
        strongest.bits >= thresholds.bits ? strongest.bitsPlace : strongest.deviationsPlace;
    const std::span<const double> window = values.subspan(place.start);
    const std::size_t index = place.index - place.start;
    SStep step;
    step.before = GetMedian(window.first(index));
    step.after = GetMedian(window.subspan(index));
    const SCandidate best = findPlace(window, seed, step.IsUp());
    const SStepSize size = MeasureStep(Winsorize(window), best.index, m_noise);
    const std::size_t found = place.start + best.index;
    step.index = start + found;
    step.bits = best.bits / size.inflation;
    step.deviations = size.deviations;
    divide(values.first(found), start, seed, thresholds, steps);
    steps.push_back(step);
    divide(values.subspan(found), start + found, seed, thresholds, steps);
}

/// The place with the strongest evidence for a step in that direction, of all places and not only those of the grid. 0
/// bits if there is no evidence.
CStepFinder::SCandidate CStepFinder::findPlace(std::span<const double> values, std::uint64_t seed, bool isUp)
{
    const std::size_t length = values.size();
    const std::vector<std::uint16_t> ranks = GetRanks(values, seed);
    std::uint64_t rankSum = length * (length - 1) / 2;
    SCandidate best{0, isUp, 0.0};
    for (std::size_t index = 1; index < length; ++index)
    {
        rankSum -= ranks[index - 1];
        const std::size_t inversions = countInversions(length - index, length, rankSum, isUp);
        if (const double bits = m_tails.GetBits(index, length - index, inversions); bits > best.bits)
        {
            best = {index, isUp, bits};
        }
    }
    return best;
}

/// A step was found in runs that may contain other steps, so its place is approximate. Finds the place and the levels
/// of each step again from the runs between its neighbours, but keeps the evidence of the search.
void CStepFinder::describeBetweenNeighbours(std::span<const double> values, std::uint64_t seed,
                                            std::vector<SStep>& steps)
{
    for (std::size_t number = 0; number < steps.size(); ++number)
    {
        const SPart part = getPart(steps, number, values.size());
        const std::span<const double> runs = values.subspan(part.start, part.end - part.start);
        if (const SCandidate best = findPlace(runs, seed, steps[number].IsUp()); best.bits > 0.0)
        {
            steps[number].index = part.start + best.index;
        }
    }
    setLevels(values, steps);
}

/// The search compares all runs of a part with each other. Between its neighbours a step may be smaller than the
/// smallest change, or have another direction than in the search (`found`). Drops the smallest of these steps, computes
/// the levels again, and repeats both until none of these steps is left: several small steps in one direction become a
/// larger one. Places and intervals stay, since the runs in which they were found contain no other step.
void CStepFinder::dropSmall(std::span<const double> values, std::vector<SStep> found, std::vector<SStep>& steps) const
{
    while (!steps.empty())
    {
        std::vector<double> changes;
        std::ranges::transform(steps, found, std::back_inserter(changes), [](const SStep& step, const SStep& searched) {
            return step.IsUp() == searched.IsUp() ? getChange(step.before, step.after) : 0.0;
        });
        const auto smallest = std::ranges::min_element(changes);
        if (*smallest >= m_smallestChange)
        {
            return;
        }
        steps.erase(steps.begin() + (smallest - changes.begin()));
        found.erase(found.begin() + (smallest - changes.begin()));
        setLevels(values, steps);
    }
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
/// step in the same direction. The reason: if the step is at that run, neither part contains it. Compares only the runs
/// in [start, end), because the other runs may contain another step, which a part would show.
void CStepFinder::findInterval(std::span<const double> values, std::size_t start, std::size_t end, std::uint64_t seed,
                               SStep& step)
{
    const std::span<const double> runs = values.subspan(start, end - start);
    const double inflation =
        runs.size() > 2 ? MeasureStep(Winsorize(runs), step.index - start, m_noise).inflation : 1.0;
    for (std::size_t index = 1; index < runs.size(); ++index)
    {
        if (isOneLevel(runs.first(index), seed, inflation, step.IsUp()) &&
            isOneLevel(runs.subspan(index), seed, inflation, step.IsUp()))
        {
            step.first = std::min(step.first, start + index);
            step.last = std::max(step.last, start + index);
        }
    }
}

/// First compares the runs between the places of the neighbours. These places are uncertain, so a few of the runs may
/// belong to another level. Therefore compares again, only the runs between the neighbours' intervals.
void CStepFinder::findIntervals(std::span<const double> values, std::uint64_t seed, std::vector<SStep>& steps)
{
    for (SStep& step : steps)
    {
        step.first = step.last = step.index;
    }
    for (const auto& getRuns : {getPart, getCertainPart})
    {
        const std::vector<SStep> neighbours = steps;
        for (std::size_t number = 0; number < steps.size(); ++number)
        {
            const SPart part = getRuns(neighbours, number, values.size());
            findInterval(values, part.start, part.end, seed, steps[number]);
        }
    }
}

} // namespace Runner::History
