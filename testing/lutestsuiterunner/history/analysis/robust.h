/// Statistics that are robust against single outliers.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace Runner::History
{

/// 0 for no values. Reorders the values.
double TakeMedian(std::span<double> values);

double GetMedian(std::span<const double> values);

/// Robust standard deviation of the values: the median of their distances from their median, scaled so that it equals
/// the standard deviation if the values are normally distributed.
double GetScatter(std::span<const double> values);

/// Returns the values, but moves those that are more than three scatters from the median to that distance. The distance
/// is at least a hundredth of the median.
std::vector<double> Winsorize(std::span<const double> values);

/// Ranks from 0. Equal values get random ranks among themselves, determined by `seed`. So if all orders of the values
/// are equally likely, all orders of the ranks are, too.
void FillRanks(std::span<const double> values, std::uint64_t seed, std::span<std::uint16_t> ranks);

std::vector<std::uint16_t> GetRanks(std::span<const double> values, std::uint64_t seed);

/// The similarity of neighbours: the lag-1 autocorrelation of the ranks, -1 to 1.
double GetCorrelation(std::span<const std::uint16_t> ranks);

/// The lag-1 autocorrelation of a series whose level may change, reduced by its standard error. It is computed from the
/// squared differences of neighbours and of values two apart: a change of level affects only the one or two differences
/// where it begins.
double GetCertainCorrelation(std::span<const double> values);

} // namespace Runner::History
