#include "testing/lutestsuiterunner/history/analysis/tempo.h"

#include <algorithm>
#include <numeric>

#include "testing/lutestsuiterunner/history/analysis/randomnumbers.h"
#include "testing/lutestsuiterunner/history/analysis/robust.h"
#include "testing/lutestsuiterunner/history/analysis/row.h"
#include "testing/lutestsuiterunner/history/analysis/steps.h"

namespace Runner::History
{

namespace
{

/// Times of a sample of cases that passed in at least half of the runs.
std::vector<SRow> getTempoSample(const CTable& table)
{
    constexpr std::size_t c_Largest = 4000;
    const std::size_t step = table.GetCaseCount() / c_Largest + 1;
    std::vector<SRow> sample;
    SRow row;
    for (std::size_t testCase = 0; testCase < table.GetCaseCount(); ++testCase)
    {
        if (!IsInSample(testCase, step))
        {
            continue;
        }
        ReadRow(table.GetOutcomes(testCase), table.GetSeconds(testCase), row);
        if (2 * row.runs.size() >= table.GetRunCount() && GetMedian(row.values) >= c_ShortestTime)
        {
            sample.push_back(row);
        }
    }
    return sample;
}

/// For each run, the median over the cases of the ratio between the case's time in this run and its median time.
std::vector<double> getFactors(const std::vector<SRow>& sample, std::span<const double> tempo)
{
    std::vector<std::vector<double>> ratios(tempo.size());
    for (const SRow& row : sample)
    {
        const double median = GetMedian(Divide(row, tempo));
        for (std::size_t index = 0; index < row.runs.size(); ++index)
        {
            ratios[row.runs[index]].push_back(row.values[index] / median);
        }
    }
    std::vector<double> factors;
    for (std::vector<double>& ratiosOfRun : ratios)
    {
        const double factor = TakeMedian(ratiosOfRun);
        factors.push_back(factor > 0.0 ? factor : 1.0);
    }
    return factors;
}

/// Leaves out the rows that, at this tempo, have a step so large that chance seldom causes it. Keeps all rows if fewer
/// than a fifth would remain, because the cases then have nothing in common.
std::vector<SRow> takeSteady(const std::vector<SRow>& sample, std::span<const double> tempo, double smallestChange)
{
    CStepFinder finder(smallestChange, {});
    std::vector<SRow> steady;
    std::vector<std::uint16_t> order;
    for (const SRow& row : sample)
    {
        const std::vector<double> values = Divide(row, tempo);
        order.resize(values.size());
        std::iota(order.begin(), order.end(), std::uint16_t{0});
        const std::vector<std::uint16_t> ranks = GetRanks(values, 0);
        if (finder.FindStrongest({values, ranks, order}).bits == 0.0)
        {
            steady.push_back(row);
        }
    }
    return 5 * steady.size() < sample.size() ? sample : steady;
}

} // namespace

std::vector<double> GetTempo(const CTable& table, double smallestChange)
{
    constexpr std::size_t c_FewestCases = 8;
    std::vector<double> tempo(table.GetRunCount(), 1.0);
    const std::vector<SRow> sample = getTempoSample(table);
    if (sample.size() < c_FewestCases)
    {
        return tempo;
    }
    // The medians of the first round still contain the tempo of the runs.
    tempo = getFactors(sample, tempo);
    tempo = getFactors(sample, tempo);
    // If a third of the cases became slower, they would be a part of the tempo, and the other cases would seem faster.
    // Each round leaves out the cases that it finds, so that the next round finds more.
    constexpr int c_Rounds = 3;
    for (int round = 0; round < c_Rounds; ++round)
    {
        tempo = getFactors(takeSteady(sample, tempo, smallestChange), tempo);
    }
    return tempo;
}

} // namespace Runner::History
