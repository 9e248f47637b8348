/// The measurements of an archive as series of numbers, one series for each case.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "testing/lutestsuiterunner/history/analysis/stepsize.h"
#include "testing/lutestsuiterunner/history/analysis/table.h"

namespace Runner::History
{

/// A series, with what the search for steps needs.
struct SSeries
{
    std::uint32_t caseIndex;
    std::span<const double> values;       ///< of the runs in which the case passed
    std::span<const std::uint16_t> runs;  ///< of the values, ascending
    std::span<const std::uint16_t> ranks; ///< of the values
    std::uint64_t seed;
};

/// Series in one block of memory.
class CSeriesBlock
{
public:
    void Add(std::uint32_t caseIndex, std::uint64_t seed, std::span<const double> values,
             std::span<const std::uint16_t> runs);

    std::size_t GetCount() const { return m_entries.size(); }
    SSeries Get(std::size_t index) const;

private:
    struct SEntry
    {
        std::uint32_t caseIndex;
        std::uint64_t seed;
        std::size_t start;
        std::size_t length;
    };

    std::vector<SEntry> m_entries;
    std::vector<double> m_values;
    std::vector<std::uint16_t> m_runs;
    std::vector<std::uint16_t> m_ranks;
};

/// All series of one kind.
struct SMeasure
{
    std::vector<CSeriesBlock> blocks;
    std::size_t count = 0;   ///< of series
    double scatter = 0.0;    ///< see SCommonNoise
    double similarity = 0.0; ///< see SCommonNoise

    /// A random sample of the series, the same in each call.
    std::vector<SSeries> GetSample() const;
};

/// Times at the usual tempo, in seconds. If the times of a case follow the tempo only partly or not at all, for example
/// because it waits, they are adjusted partly or not at all. Cases under 10 microseconds are left out, because reports
/// contain whole microseconds; so are cases whose total variation is below `smallestChange`.
SMeasure GetTimes(const CTable& table, std::span<const double> tempo, double smallestChange);

/// Highest heap use in bytes.
SMeasure GetMemory(const CTable& table, double smallestChange);

} // namespace Runner::History
