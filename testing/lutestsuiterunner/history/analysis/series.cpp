#include "testing/lutestsuiterunner/history/analysis/series.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "base/lbparallel.h"
#include "testing/lutestsuiterunner/history/analysis/randomnumbers.h"
#include "testing/lutestsuiterunner/history/analysis/ranktails.h"
#include "testing/lutestsuiterunner/history/analysis/robust.h"
#include "testing/lutestsuiterunner/history/analysis/row.h"

namespace Runner::History
{

namespace
{

constexpr std::size_t c_BlockSize = 2048;
constexpr std::size_t c_SampleSize = 1000;

bool isConstant(std::span<const double> values, double smallestChange)
{
    const auto [lowest, highest] = std::ranges::minmax_element(values);
    return values.empty() || *highest < *lowest * (1.0 + smallestChange) || *highest == 0.0;
}

double getRelativeScatter(std::span<const double> values)
{
    const double median = GetMedian(values);
    return median > 0.0 ? GetScatter(values) / median : 0.0;
}

/// The tempo to the powers 1, 1/2 and 0.
class CTempo
{
public:
    explicit CTempo(std::span<const double> tempo) : m_full(tempo), m_half(tempo.begin(), tempo.end())
    {
        for (double& factor : m_half)
        {
            factor = std::sqrt(factor);
            m_isSteady = m_isSteady && std::abs(factor - 1.0) < c_SteadyHalf;
        }
    }

    /// Divides the values by the tempo. Uses a smaller power only if the values then scatter clearly less: by two
    /// standard errors of a scatter.
    void Adjust(SRow& row) const
    {
        const double clearly = 1.0 - 2.0 / std::sqrt(static_cast<double>(row.values.size()));
        std::vector<double> full = Divide(row, m_full);
        if (!m_isSteady)
        {
            std::vector<double> half = Divide(row, m_half);
            const double fullScatter = getRelativeScatter(full);
            const double halfScatter = getRelativeScatter(half);
            const double rawScatter = getRelativeScatter(row.values);
            if (std::min(halfScatter, rawScatter) < clearly * fullScatter)
            {
                full = halfScatter < rawScatter ? std::move(half) : row.values;
            }
        }
        row.values = std::move(full);
    }

private:
    /// A tempo that varies less than this causes no step.
    static constexpr double c_SteadyHalf = 0.005;

    std::span<const double> m_full;
    std::vector<double> m_half;
    bool m_isSteady = true;
};

using FillRow = std::function<bool(std::size_t testCase, SRow& row)>;

CSeriesBlock makeBlock(const CTable& table, std::size_t first, const FillRow& fill)
{
    CSeriesBlock block;
    SRow row;
    const std::size_t end = std::min(first + c_BlockSize, table.GetCaseCount());
    for (std::size_t testCase = first; testCase < end; ++testCase)
    {
        if (fill(testCase, row))
        {
            block.Add(static_cast<std::uint32_t>(testCase), table.GetSeed(testCase), row.values, row.runs);
        }
    }
    return block;
}

/// The part of the differences between the scatters that chance explains, 0 to 1. The relative standard error of the
/// scatter of normal values is the root of 1.4 / count.
double getSimilarity(std::vector<double>& scatters, std::vector<double>& counts)
{
    constexpr double c_VarianceByCount = 1.4;
    const double count = TakeMedian(counts);
    for (double& scatter : scatters)
    {
        scatter = GetLog2(std::max(scatter, 1e-9)) * c_LogOf2;
    }
    const double deviation = GetScatter(scatters);
    const double expected = c_VarianceByCount / count;
    return count > 0.0 ? expected / std::max(deviation * deviation, expected) : 0.0;
}

void findCommonNoise(SMeasure& measure)
{
    std::vector<double> scatters;
    std::vector<double> counts;
    for (const SSeries& series : measure.GetSample())
    {
        scatters.push_back(getRelativeScatter(series.values));
        counts.push_back(static_cast<double>(series.values.size()));
    }
    measure.scatter = GetMedian(scatters);
    measure.similarity = getSimilarity(scatters, counts);
}

SMeasure makeMeasure(const CTable& table, const FillRow& fill)
{
    SMeasure measure;
    measure.blocks.resize((table.GetCaseCount() + c_BlockSize - 1) / c_BlockSize);
    LbParallel::For(0, static_cast<std::int64_t>(measure.blocks.size()), [&](std::int64_t index) {
        const auto block = static_cast<std::size_t>(index);
        measure.blocks[block] = makeBlock(table, block * c_BlockSize, fill);
    });
    for (const CSeriesBlock& block : measure.blocks)
    {
        measure.count += block.GetCount();
    }
    findCommonNoise(measure);
    return measure;
}

} // namespace

void CSeriesBlock::Add(std::uint32_t caseIndex, std::uint64_t seed, std::span<const double> values,
                       std::span<const std::uint16_t> runs)
{
    const std::size_t start = m_values.size();
    m_entries.push_back({caseIndex, seed, start, values.size()});
    m_values.insert(m_values.end(), values.begin(), values.end());
    m_runs.insert(m_runs.end(), runs.begin(), runs.end());
    m_ranks.resize(m_values.size());
    FillRanks(values, seed, std::span(m_ranks).subspan(start));
}

SSeries CSeriesBlock::Get(std::size_t index) const
{
    const SEntry& entry = m_entries[index];
    const auto getPart = [&](const auto& all) { return std::span(all).subspan(entry.start, entry.length); };
    return {entry.caseIndex, getPart(m_values), getPart(m_runs), getPart(m_ranks), entry.seed};
}

std::vector<SSeries> SMeasure::GetSample() const
{
    const std::size_t step = count / c_SampleSize + 1;
    std::vector<SSeries> sample;
    for (const CSeriesBlock& block : blocks)
    {
        for (std::size_t index = 0; index < block.GetCount(); ++index)
        {
            if (const SSeries series = block.Get(index); IsInSample(series.caseIndex, step))
            {
                sample.push_back(series);
            }
        }
    }
    return sample;
}

SMeasure GetTimes(const CTable& table, std::span<const double> tempo, double smallestChange)
{
    const CTempo adjustment(tempo);
    return makeMeasure(table, [&](std::size_t testCase, SRow& row) {
        ReadRow(table.GetOutcomes(testCase), table.GetSeconds(testCase), row);
        if (row.values.empty() || GetMedian(row.values) < c_ShortestTime)
        {
            return false;
        }
        adjustment.Adjust(row);
        return !isConstant(row.values, smallestChange);
    });
}

SMeasure GetMemory(const CTable& table, double smallestChange)
{
    if (!table.HasMemory())
    {
        return {};
    }
    return makeMeasure(table, [&](std::size_t testCase, SRow& row) {
        ReadRow(table.GetOutcomes(testCase), table.GetMemory(testCase), row);
        return !isConstant(row.values, smallestChange);
    });
}

} // namespace Runner::History
