#include "testing/lutestsuiterunner/history/analysis/robust.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "testing/lutestsuiterunner/history/analysis/randomnumbers.h"

namespace Runner::History
{

namespace
{

constexpr double c_WinsorizedScatters = 3.0;

} // namespace

double TakeMedian(std::span<double> values)
{
    if (values.empty())
    {
        return 0.0;
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return values.size() % 2 == 1 ? *middle : (*std::max_element(values.begin(), middle) + *middle) / 2.0;
}

double GetMedian(std::span<const double> values)
{
    std::vector<double> copy(values.begin(), values.end());
    return TakeMedian(copy);
}

namespace
{

double getScatter(std::span<const double> values, double median)
{
    constexpr double c_DeviationByMedian = 1.4826;
    std::vector<double> distances(values.begin(), values.end());
    for (double& value : distances)
    {
        value = std::abs(value - median);
    }
    return c_DeviationByMedian * TakeMedian(distances);
}

} // namespace

double GetScatter(std::span<const double> values)
{
    return getScatter(values, GetMedian(values));
}

std::vector<double> Winsorize(std::span<const double> values)
{
    // The distance is at least a hundredth of the level. Otherwise it would be 0 if more than half of the values are
    // equal, and a step would disappear.
    constexpr double c_SmallestPart = 0.01;
    const double median = GetMedian(values);
    const double distance = std::max(c_WinsorizedScatters * getScatter(values, median), c_SmallestPart * median);
    std::vector<double> result(values.begin(), values.end());
    for (double& value : result)
    {
        value = std::clamp(value, median - distance, median + distance);
    }
    return result;
}

void FillRanks(std::span<const double> values, std::uint64_t seed, std::span<std::uint16_t> ranks)
{
    std::vector<std::uint16_t> order(values.size());
    std::iota(order.begin(), order.end(), std::uint16_t{0});
    const auto getTicket = [seed](std::uint16_t index) { return MixBits(seed ^ MixBits(index + 1U)); };
    std::ranges::sort(order, [&](std::uint16_t a, std::uint16_t b) {
        return values[a] != values[b] ? values[a] < values[b] : getTicket(a) < getTicket(b);
    });
    for (std::size_t rank = 0; rank < order.size(); ++rank)
    {
        ranks[order[rank]] = static_cast<std::uint16_t>(rank);
    }
}

std::vector<std::uint16_t> GetRanks(std::span<const double> values, std::uint64_t seed)
{
    std::vector<std::uint16_t> ranks(values.size());
    FillRanks(values, seed, ranks);
    return ranks;
}

double GetCorrelation(std::span<const std::uint16_t> ranks)
{
    const double mean = (static_cast<double>(ranks.size()) - 1.0) / 2.0;
    double products = 0.0;
    double squares = 0.0;
    double previous = 0.0;
    for (const std::uint16_t rank : ranks)
    {
        const double value = rank - mean;
        products += previous * value;
        squares += value * value;
        previous = value;
    }
    return squares > 0.0 ? products / squares : 0.0;
}

namespace
{

/// The mean square of the winsorized differences between values that are `distance` apart.
double getMeanSquare(std::span<const double> values, std::size_t distance)
{
    std::vector<double> differences;
    for (std::size_t index = distance; index < values.size(); ++index)
    {
        differences.push_back(values[index] - values[index - distance]);
    }
    const double largest = c_WinsorizedScatters * getScatter(differences, 0.0);
    double sum = 0.0;
    for (const double difference : differences)
    {
        const double used = std::clamp(difference, -largest, largest);
        sum += used * used;
    }
    return sum / static_cast<double>(differences.size());
}

} // namespace

double GetCertainCorrelation(std::span<const double> values)
{
    constexpr std::size_t c_Fewest = 4;
    if (values.size() < c_Fewest)
    {
        return 0.0;
    }
    const double neighbours = getMeanSquare(values, 1);
    if (neighbours == 0.0)
    {
        return 0.0;
    }
    // If r is the correlation, the two mean squares are expected to be proportional to 1 - r and 1 - r * r.
    const double ratio = getMeanSquare(values, 2) / neighbours;
    return std::clamp(ratio - 1.0 - std::sqrt(2.0 / static_cast<double>(values.size())), 0.0, 1.0);
}

} // namespace Runner::History
