#include "testing/lutestsuiterunner/history/analysis/stepsize.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "testing/lutestsuiterunner/history/analysis/ranktails.h"

namespace Runner::History
{

namespace
{

double getMean(std::span<const double> values)
{
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

/// Sums over the residuals: each value minus the mean of its part.
struct SResiduals
{
    double squares = 0.0;  ///< sum of the squares
    double products = 0.0; ///< sum of the products of neighbours in one part
};

SResiduals getResiduals(std::span<const double> values, double mean)
{
    SResiduals residuals;
    double previous = 0.0;
    for (const double value : values)
    {
        const double residual = value - mean;
        residuals.squares += residual * residual;
        residuals.products += previous * residual;
        previous = residual;
    }
    return residuals;
}

/// (1 + r) / (1 - r) for the lag-1 autocorrelation r. The estimate of a short series is too low, so it is corrected. It
/// is also uncertain, so its standard error is subtracted. The correlation that all series share is the lower limit.
double getInflation(double correlation, double length, double commonCorrelation)
{
    constexpr double c_Highest = 0.9;
    const double corrected = std::clamp(correlation + (1.0 + 4.0 * correlation) / length, -1.0, c_Highest);
    const double certain = corrected - std::sqrt((1.0 - corrected * corrected) / length);
    const double used = std::clamp(std::max(certain, commonCorrelation), 0.0, c_Highest);
    return (1.0 + used) / (1.0 - used);
}

/// Returns at least the usual scatter. If the scatters of the series are similar, the usual scatter also replaces one
/// that is larger by less than two standard errors, because so few values cannot prove that the scatter is larger.
double getUsedScatter(double variance, double freedom, double usual, double similarity)
{
    constexpr double c_StandardErrors = 2.0;
    const double usualVariance = usual * usual;
    const double excess = std::max(variance - usualVariance, 0.0);
    const double uncertainty = c_StandardErrors * usualVariance * std::sqrt(2.0 / freedom);
    return std::sqrt(usualVariance + excess - similarity * std::min(excess, uncertainty));
}

/// The number of standard errors that is as improbable for a normal distribution as `t` is for Student's (Wallace
/// 1959). It makes series and windows of different lengths comparable.
double toNormal(double t, double freedom)
{
    const double logarithm = c_LogOf2 * GetLog2(1.0 + t * t / freedom);
    return (8.0 * freedom + 1.0) / (8.0 * freedom + 3.0) * std::sqrt(freedom * logarithm);
}

} // namespace

SStepSize MeasureStep(std::span<const double> values, std::size_t place, const SCommonNoise& noise)
{
    // Used for values without any scatter, such as sizes of memory.
    constexpr double c_SmallestScatter = 1e-6;
    constexpr double c_SmallestDifference = 0.01;
    const double meanBefore = getMean(values.first(place));
    const double meanAfter = getMean(values.subspan(place));
    const SResiduals before = getResiduals(values.first(place), meanBefore);
    const SResiduals after = getResiduals(values.subspan(place), meanAfter);
    const double length = static_cast<double>(values.size());
    const double sizeBefore = static_cast<double>(place);
    const double sizeAfter = length - sizeBefore;
    const double squares = before.squares + after.squares;
    const double level = std::min(meanBefore, meanAfter);
    const double freedom = length - 2.0;
    const double scatter = getUsedScatter(squares / freedom, freedom,
                                          std::max(noise.scatter, c_SmallestScatter) * level, noise.similarity);
    const double error = scatter * std::sqrt(1.0 / sizeBefore + 1.0 / sizeAfter);
    const double correlation = squares > 0.0 ? (before.products + after.products) / squares : 0.0;
    SStepSize size;
    size.inflation = getInflation(correlation, length, noise.correlation);
    if (error > 0.0)
    {
        const double t = std::abs(meanAfter - meanBefore) / (error * std::sqrt(size.inflation));
        size.deviations = toNormal(t, freedom / std::max(1.0 - noise.similarity, c_SmallestDifference));
    }
    return size;
}

} // namespace Runner::History
