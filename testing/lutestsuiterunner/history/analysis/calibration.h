/// Determines how large a step must be to be reported: so large that chance alone causes such a step with at most the
/// probability that the user accepts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <span>
#include <vector>

#include "testing/lutestsuiterunner/history/analysis/series.h"
#include "testing/lutestsuiterunner/history/analysis/steps.h"

namespace Runner::History
{

struct SStepRules
{
    double alarmRate = 0.05;      ///< probability of any alarm in an archive without steps
    double smallestChange = 0.03; ///< of a level, relative
    std::size_t checks = 20;      ///< shuffled archives to examine
    std::uint64_t checkSeed = 1;  ///< of their orders
};

/// The alarms of shuffled archives.
struct SShuffleCheck
{
    std::uint64_t archives = 0;
    std::uint64_t alarms = 0; ///< steps in all of them together
    std::uint64_t archivesWithAlarm = 0;
};

/// Computes the thresholds for measures of the same runs.
class CCalibration
{
public:
    /// `measures` must outlive the object.
    CCalibration(const std::vector<SMeasure>& measures, std::size_t runCount, const SStepRules& rules);

    const SThresholds& GetThresholds() const { return m_thresholds; }
    std::size_t GetTestCount() const { return m_testCount; }
    std::size_t GetShuffleCount() const { return m_shuffleCount; }

    /// The noise that the series of a measure have in common when the runs are in their true order.
    SCommonNoise GetNoise(const SMeasure& measure) const;

    /// Counts the alarms in shuffled orders that were not used to compute the thresholds. The same thresholds apply to
    /// findings. Leaves out the series with a step, because their values scatter too much in any order.
    SShuffleCheck Check() const;

private:
    using Order = std::vector<std::uint16_t>; ///< of runs

    /// The strongest steps of a series. `series` is its number among the series of all measures.
    struct SFound
    {
        std::size_t series;
        SStrongest steps;
    };

    Order getShuffled(std::uint64_t seed) const;
    SCommonNoise getNoise(const SMeasure& measure, const Order& order) const;
    /// A series without its steps.
    struct SLevelled
    {
        std::vector<double> values;
        std::vector<std::uint16_t> ranks;
    };

    std::vector<SFound> findStrongest(CStepFinder& finder, const Order& order) const;
    SLevelled level(CStepFinder& finder, const SSeries& series) const;
    void levelSeries(const std::vector<SFound>& own);
    std::vector<std::vector<SFound>> findInShuffled() const;
    void stepDown(const std::vector<SFound>& own, const std::vector<std::vector<SFound>>& shuffled);

    const std::vector<SMeasure>& m_measures;
    std::size_t m_runCount;
    SStepRules m_rules;
    std::size_t m_testCount = 0;
    std::size_t m_shuffleCount = 0;
    SThresholds m_thresholds;
    std::set<std::size_t> m_changed;   ///< the series with a step
    std::vector<SLevelled> m_levelled; ///< by number of the series; empty for series without any step
};

} // namespace Runner::History
