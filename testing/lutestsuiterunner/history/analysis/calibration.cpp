#include "testing/lutestsuiterunner/history/analysis/calibration.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "base/lbparallel.h"
#include "testing/lutestsuiterunner/history/analysis/randomnumbers.h"
#include "testing/lutestsuiterunner/history/analysis/robust.h"

namespace Runner::History
{

namespace
{

/// The seed of the orders that determine the threshold. It is fixed, so that an archive always has the same result.
constexpr std::uint64_t c_CalibrationSeed = 0x4C755465737453U;

/// The order of a series' values that follows from an order of all runs.
class CSeriesOrder
{
public:
    explicit CSeriesOrder(std::span<const std::uint16_t> order) : m_order(order), m_places(order.size()) {}

    std::span<const std::uint16_t> Get(const SSeries& series)
    {
        if (series.runs.size() == m_order.size())
        {
            return m_order;
        }
        std::ranges::fill(m_places, c_Absent);
        for (std::size_t index = 0; index < series.runs.size(); ++index)
        {
            m_places[series.runs[index]] = static_cast<std::uint16_t>(index);
        }
        m_result.clear();
        for (const std::uint16_t run : m_order)
        {
            if (m_places[run] != c_Absent)
            {
                m_result.push_back(m_places[run]);
            }
        }
        return m_result;
    }

private:
    static constexpr std::uint16_t c_Absent = 0xFFFF;

    std::span<const std::uint16_t> m_order;
    std::vector<std::uint16_t> m_places; ///< of runs in the series
    std::vector<std::uint16_t> m_result;
};

std::vector<std::uint16_t> getIdentity(std::size_t count)
{
    std::vector<std::uint16_t> order(count);
    std::iota(order.begin(), order.end(), std::uint16_t{0});
    return order;
}

std::size_t countTests(CStepFinder& finder, const SMeasure& measure)
{
    std::size_t count = 0;
    for (const CSeriesBlock& block : measure.blocks)
    {
        for (std::size_t index = 0; index < block.GetCount(); ++index)
        {
            count += finder.GetTestCount(block.Get(index).values.size());
        }
    }
    return count;
}

/// Number of shuffled orders that exceed the threshold. With one, the threshold would depend more on chance; with more,
/// the search takes longer.
constexpr std::size_t c_OrdersBeyond = 2;

/// The largest step, in standard errors, of the series that are not in `changed`.
template<typename Found>
double getLargest(const std::vector<Found>& all, const std::set<std::size_t>& changed)
{
    double largest = 0.0;
    for (const Found& found : all)
    {
        if (found.steps.deviations > largest && !changed.contains(found.series))
        {
            largest = found.steps.deviations;
        }
    }
    return largest;
}

/// Takes the largest step of each order, and returns the c_OrdersBeyond-th largest of these.
template<typename Found>
double getThreshold(const std::vector<std::vector<Found>>& shuffled, const std::set<std::size_t>& changed)
{
    std::vector<double> largest;
    for (const std::vector<Found>& all : shuffled)
    {
        largest.push_back(getLargest(all, changed));
    }
    const auto place = largest.begin() + static_cast<std::ptrdiff_t>(c_OrdersBeyond - 1);
    std::ranges::nth_element(largest, place, std::ranges::greater());
    return *place;
}

} // namespace

CCalibration::CCalibration(const std::vector<SMeasure>& measures, std::size_t runCount, const SStepRules& rules)
    : m_measures(measures), m_runCount(runCount), m_rules(rules)
{
    // Each of the two thresholds, in bits and in deviations, gets half of the rate.
    const double rate = rules.alarmRate / 2.0;
    CStepFinder finder(rules.smallestChange, {});
    for (const SMeasure& measure : measures)
    {
        m_testCount += countTests(finder, measure);
    }
    m_thresholds.bits = GetLog2(std::max(static_cast<double>(m_testCount), 1.0) / rate);
    // If nothing has changed, the true order is one of the orders beyond the threshold with probability c_OrdersBeyond
    // / (number of shuffled orders + 1).
    m_shuffleCount = static_cast<std::size_t>(std::ceil(static_cast<double>(c_OrdersBeyond) / rate)) - 1;
    const std::vector<SFound> own = findStrongest(finder, getIdentity(m_runCount));
    levelSeries(own);
    stepDown(own, findInShuffled());
}

std::vector<std::vector<CCalibration::SFound>> CCalibration::findInShuffled() const
{
    std::vector<std::vector<SFound>> shuffled(m_shuffleCount);
    LbParallel::ForRanges(0, static_cast<std::int64_t>(m_shuffleCount), [&](std::int64_t first, std::int64_t last) {
        CStepFinder finder(m_rules.smallestChange, {});
        for (std::int64_t number = first; number < last; ++number)
        {
            shuffled[static_cast<std::size_t>(number)] =
                findStrongest(finder, getShuffled(c_CalibrationSeed + static_cast<std::uint64_t>(number)));
        }
    });
    return shuffled;
}

/// Scales the parts between all relevant steps to one level. Steps that chance explains are removed, too.
CCalibration::SLevelled CCalibration::level(CStepFinder& finder, const SSeries& series) const
{
    constexpr SThresholds c_All{1.0, std::numeric_limits<double>::infinity()};
    SLevelled levelled{{series.values.begin(), series.values.end()}, {}};
    for (const SStep& step : finder.FindSteps(series.values, series.seed, c_All))
    {
        if (step.before > 0.0 && step.after > 0.0)
        {
            const auto begin = levelled.values.begin() + static_cast<std::ptrdiff_t>(step.index);
            std::for_each(begin, levelled.values.end(), [&](double& value) { value *= step.before / step.after; });
        }
    }
    levelled.ranks = GetRanks(levelled.values, series.seed);
    return levelled;
}

/// Removes the steps of the series. The values of a series with a step differ more than those of other series, so its
/// shuffled orders would show larger steps. If many cases change, this would make the threshold too high.
void CCalibration::levelSeries(const std::vector<SFound>& own)
{
    std::set<std::size_t> numbers;
    for (const SFound& found : own)
    {
        numbers.insert(found.series);
    }
    std::size_t number = 0;
    for (const SMeasure& measure : m_measures)
    {
        m_levelled.resize(m_levelled.size() + measure.count);
        CStepFinder finder(m_rules.smallestChange, GetNoise(measure));
        for (const CSeriesBlock& block : measure.blocks)
        {
            for (std::size_t index = 0; index < block.GetCount(); ++index, ++number)
            {
                if (numbers.contains(number))
                {
                    m_levelled[number] = level(finder, block.Get(index));
                }
            }
        }
    }
}

/// Even without its step, a series with a step scatters more than the others. Once its step is found, the series is
/// left out, which lowers the threshold for the others: the step-down method.
void CCalibration::stepDown(const std::vector<SFound>& own, const std::vector<std::vector<SFound>>& shuffled)
{
    for (std::size_t known = 1; known != m_changed.size();)
    {
        known = m_changed.size();
        m_thresholds.deviations = getThreshold(shuffled, m_changed);
        for (const SFound& found : own)
        {
            if (m_thresholds.IsExceededBy(found.steps))
            {
                m_changed.insert(found.series);
            }
        }
    }
}

CCalibration::Order CCalibration::getShuffled(std::uint64_t seed) const
{
    Order order = getIdentity(m_runCount);
    CRandomNumbers numbers(MixBits(seed));
    Shuffle(order, numbers);
    return order;
}

SCommonNoise CCalibration::GetNoise(const SMeasure& measure) const
{
    return getNoise(measure, getIdentity(m_runCount));
}

SCommonNoise CCalibration::getNoise(const SMeasure& measure, const Order& order) const
{
    CSeriesOrder seriesOrder(order);
    std::vector<double> correlations;
    std::vector<std::uint16_t> ranks;
    for (const SSeries& series : measure.GetSample())
    {
        ranks.clear();
        for (const std::uint16_t index : seriesOrder.Get(series))
        {
            ranks.push_back(series.ranks[index]);
        }
        correlations.push_back(GetCorrelation(ranks));
    }
    return {measure.scatter, measure.similarity, std::max(TakeMedian(correlations), 0.0)};
}

/// Leaves out the series without any step, which are nearly all of them.
std::vector<CCalibration::SFound> CCalibration::findStrongest(CStepFinder& finder, const Order& order) const
{
    CSeriesOrder seriesOrder(order);
    std::vector<SFound> all;
    std::size_t number = 0;
    for (const SMeasure& measure : m_measures)
    {
        finder.SetNoise(getNoise(measure, order));
        for (const CSeriesBlock& block : measure.blocks)
        {
            for (std::size_t index = 0; index < block.GetCount(); ++index, ++number)
            {
                SSeries series = block.Get(index);
                if (!m_levelled.empty() && !m_levelled[number].values.empty())
                {
                    series.values = m_levelled[number].values;
                    series.ranks = m_levelled[number].ranks;
                }
                const SStrongest steps = finder.FindStrongest({series.values, series.ranks, seriesOrder.Get(series)});
                if (steps.bits > 0.0)
                {
                    all.push_back({number, steps});
                }
            }
        }
    }
    return all;
}

SShuffleCheck CCalibration::Check() const
{
    std::vector<std::size_t> alarms(m_rules.checks, 0);
    LbParallel::ForRanges(0, static_cast<std::int64_t>(alarms.size()), [&](std::int64_t first, std::int64_t last) {
        CStepFinder finder(m_rules.smallestChange, {});
        for (std::int64_t number = first; number < last; ++number)
        {
            // Uses seeds that differ from those of the thresholds.
            const std::uint64_t seed = MixBits(m_rules.checkSeed) ^ static_cast<std::uint64_t>(number);
            const std::vector<SFound> all = findStrongest(finder, getShuffled(seed));
            alarms[static_cast<std::size_t>(number)] =
                static_cast<std::size_t>(std::ranges::count_if(all, [this](const SFound& found) {
                    return m_thresholds.IsExceededBy(found.steps) && !m_changed.contains(found.series);
                }));
        }
    });
    SShuffleCheck check;
    check.archives = alarms.size();
    check.alarms = std::accumulate(alarms.begin(), alarms.end(), std::size_t{0});
    check.archivesWithAlarm =
        static_cast<std::size_t>(std::ranges::count_if(alarms, [](std::size_t count) { return count > 0; }));
    return check;
}

} // namespace Runner::History
