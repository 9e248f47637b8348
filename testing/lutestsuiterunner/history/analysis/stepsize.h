/// The size of a step relative to the scatter of the runs, and how much each run resembles its neighbours.
#pragma once

#include <cstddef>
#include <span>

namespace Runner::History
{

/// What all series of an archive have in common.
struct SCommonNoise
{
    double scatter = 0.0;     ///< the usual one of a series, relative to its level
    double similarity = 0.0;  ///< 1 if chance explains the differences between the scatters, 0 if they are far greater
    double correlation = 0.0; ///< of neighbouring runs, 0 to below 1
};

struct SStepSize
{
    double deviations = 0.0; ///< size of the step in standard errors of a normal distribution
    double inflation = 1.0;  ///< at least 1; this number of runs counts as one, because neighbours resemble each other
};

/// Compares the values before `place` with the values from `place` on. The values must be winsorized. Each part must
/// have at least one value, and both together at least three.
SStepSize MeasureStep(std::span<const double> values, std::size_t place, const SCommonNoise& noise);

} // namespace Runner::History
