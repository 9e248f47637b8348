/// Steps in a series of measurements: where its level changed, and how sure that is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "testing/lutestsuiterunner/history/analysis/ranktails.h"
#include "testing/lutestsuiterunner/history/analysis/stepsize.h"

namespace Runner::History
{

/// A change of level between two neighbouring runs of a series.
struct SStep
{
    std::size_t index = 0; ///< of the first run after the step
    std::size_t first = 0; ///< the interval that contains this run, both ends included
    std::size_t last = 0;
    double before = 0.0; ///< medians between the steps
    double after = 0.0;
    double bits = 0.0;       ///< of evidence by ranks, corrected by the inflation
    double deviations = 0.0; ///< see SStepSize

    bool IsUp() const { return after > before; }
};

/// The strongest step of a series by `bits` and the strongest by `deviations`, with their places. 0 if there is no
/// step.
struct SStrongest
{
    /// Of the runs from `start` on, those before `index` were compared with those from `index` on.
    struct SPlace
    {
        std::size_t start = 0;
        std::size_t index = 0;
    };

    double bits = 0.0;
    SPlace bitsPlace;
    double deviations = 0.0;
    SPlace deviationsPlace;
};

/// What a step needs to be reported: either is enough.
struct SThresholds
{
    double bits = 0.0;       ///< at least
    double deviations = 0.0; ///< more than

    bool IsExceededBy(const SStrongest& steps) const { return steps.bits >= bits || steps.deviations > deviations; }
};

/// A view of a series whose runs may be in another order.
struct SSeriesView
{
    std::span<const double> values;
    std::span<const std::uint16_t> ranks; ///< of the values
    std::span<const std::uint16_t> order; ///< indices of the values in the order of the search
};

/// Looks for steps with rank-sum tests over a grid of places, in the whole series and in shorter windows that end with
/// it. A slow period can hide a later step, but not in a window that begins after the period. Keeps tables; an object
/// belongs to one thread.
class CStepFinder
{
public:
    /// A step is at least `smallestChange` large, relative to the lower level.
    CStepFinder(double smallestChange, const SCommonNoise& noise) : m_smallestChange(smallestChange), m_noise(noise) {}

    void SetNoise(const SCommonNoise& noise) { m_noise = noise; }

    SStrongest FindStrongest(const SSeriesView& series);

    /// All steps beyond a threshold, in the order of the runs. Finds the strongest step first, then those in the parts
    /// before and after it. Place, levels and interval of a step follow from the runs between its neighbours; steps
    /// that are too small there are dropped. `seed` orders equal values.
    std::vector<SStep> FindSteps(std::span<const double> values, std::uint64_t seed, const SThresholds& thresholds);

    /// The number of tests that FindStrongest makes with a series of that length.
    std::size_t GetTestCount(std::size_t length);

private:
    /// A place where a series is divided, and the largest number of inversions that makes it a candidate.
    struct SPlace
    {
        std::size_t index;
        std::int64_t limit;
    };

    struct SCandidate
    {
        std::size_t index;
        bool isUp;
        double bits;
    };

    const std::vector<SPlace>& getPlaces(std::size_t length);
    void setRanks(const SSeriesView& series);
    void shortenWindow(std::size_t start);
    void findCandidates();
    void compareCandidates(std::span<const double> all, std::size_t start, SStrongest& strongest);
    void divide(std::span<const double> values, std::size_t start, std::uint64_t seed, const SThresholds& thresholds,
                std::vector<SStep>& steps);
    SCandidate findPlace(std::span<const double> values, std::uint64_t seed, bool isUp);
    bool isOneLevel(std::span<const double> values, std::uint64_t seed, double inflation, bool isUp);
    void findInterval(std::span<const double> values, std::size_t start, std::size_t end, std::uint64_t seed,
                      SStep& step);
    void describeBetweenNeighbours(std::span<const double> values, std::uint64_t seed, std::vector<SStep>& steps);
    void dropSmall(std::span<const double> values, std::vector<SStep> found, std::vector<SStep>& steps) const;
    void findIntervals(std::span<const double> values, std::uint64_t seed, std::vector<SStep>& steps);

    double m_smallestChange;
    SCommonNoise m_noise;
    CRankTails m_tails;
    std::vector<std::vector<SPlace>> m_places; ///< by length
    // Buffers for the current series; members so that their memory is reused.
    std::vector<std::uint16_t> m_allRanks; ///< of all values of the series, in the order of its view
    std::vector<std::uint16_t> m_ranks;    ///< of the values in the window, among themselves
    std::vector<std::uint16_t> m_counts;   ///< of the values in the window, up to each rank of m_allRanks
    std::vector<SCandidate> m_candidates;
};

} // namespace Runner::History
