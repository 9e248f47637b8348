/// The values of one case that count: those of the runs in which it passed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "testing/lutestsuiterunner/history/analysis/table.h"

namespace Runner::History
{

/// Shorter times are not compared: reports contain whole microseconds.
inline constexpr double c_ShortestTime = 10e-6;

/// The runs in which the case passed, with their values.
struct SRow
{
    std::vector<double> values;
    std::vector<std::uint16_t> runs;
};

template<typename T>
void ReadRow(std::span<const EOutcome> outcomes, std::span<const T> values, SRow& row)
{
    row.values.clear();
    row.runs.clear();
    for (std::size_t run = 0; run < outcomes.size(); ++run)
    {
        if (outcomes[run] == EOutcome::Passed)
        {
            row.values.push_back(static_cast<double>(values[run]));
            row.runs.push_back(static_cast<std::uint16_t>(run));
        }
    }
}

/// The values, each divided by the divisor of its run.
inline std::vector<double> Divide(const SRow& row, std::span<const double> divisors)
{
    std::vector<double> values(row.values);
    for (std::size_t index = 0; index < values.size(); ++index)
    {
        values[index] /= divisors[row.runs[index]];
    }
    return values;
}

} // namespace Runner::History
