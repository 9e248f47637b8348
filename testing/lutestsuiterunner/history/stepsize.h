/// How large a step is beside the scatter of the runs, and how much the runs resemble their neighbours.
#pragma once

#include <cstddef>
#include <span>

namespace Runner::History
{

/// What all series of an archive have in common.
struct SCommonNoise
{
    double scatter = 0.0;     ///< the usual one of a series, relative to its level
    double correlation = 0.0; ///< of neighbouring runs, 0 to below 1
};

struct SStepSize
{
    double deviations = 0.0; ///< size of the step in standard errors: Student's t, corrected by the inflation
    double inflation = 1.0;  ///< this number of runs counts as one, because neighbours resemble each other; at least 1
};

/// Compares the values before `place` with those from it on. The values are winsorized; both parts hold one at least,
/// and there are three or more.
SStepSize MeasureStep(std::span<const double> values, std::size_t place, const SCommonNoise& noise);

} // namespace Runner::History
