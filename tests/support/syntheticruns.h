/// Synthetic archives of runs: noise of several kinds, and changes at known runs.
#pragma once

#include <cmath>
#include <cstdint>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

#include "base/lbformat.h"
#include "testing/lutestsuiterunner/history/analysis/randomnumbers.h"
#include "testing/lutestsuiterunner/history/analysis/table.h"
#include "testing/lutestsuiterunner/history/archive/archive.h"

namespace SyntheticRuns
{

using Runner::History::CTable;
using Runner::History::ECaseRunResult;
using Runner::History::SCaseName;
using Runner::History::SRun;

enum class ENoise
{
    Normal,
    LogNormal,   ///< skewed, with a heavy tail above
    HeavyTailed, ///< Student's t with three degrees of freedom
    Spiky,       ///< one run of ten takes longer, by up to twenty deviations
    TwoSpeeds,   ///< each run at random on one of two machines, fifteen deviations apart
    Sluggish,    ///< each run resembles the one before it: autocorrelation 0.5
    Mixed        ///< each case has one of the other kinds except LogNormal, half of the cases Normal
};

class CRandomDeviates
{
public:
    explicit CRandomDeviates(std::uint64_t seed) : m_numbers(seed) {}

    std::size_t Below(std::size_t count) { return m_numbers.Below(count); }

    /// A number in (0, 1).
    double Uniform() { return (static_cast<double>(m_numbers.Next() >> 11) + 0.5) * 0x1p-53; }

    /// Normal distribution, deviation 1 (Box and Muller).
    double Normal()
    {
        const double radius = std::sqrt(-2.0 * std::log(Uniform()));
        return radius * std::cos(2.0 * std::numbers::pi * Uniform());
    }

private:
    Runner::History::CRandomNumbers m_numbers;
};

/// The noise of one case over its runs, in standard deviations of its normal part.
inline std::vector<double> MakeNoise(CRandomDeviates& deviates, ENoise kind, std::size_t count)
{
    constexpr ENoise c_Kinds[] = {ENoise::Normal,      ENoise::Normal, ENoise::Normal,    ENoise::Normal,
                                  ENoise::HeavyTailed, ENoise::Spiky,  ENoise::TwoSpeeds, ENoise::Sluggish};
    kind = kind == ENoise::Mixed ? c_Kinds[deviates.Below(std::size(c_Kinds))] : kind;
    const double rate = 0.05 + 0.4 * deviates.Uniform();
    double state = deviates.Normal();
    std::vector<double> noise(count);
    for (double& value : noise)
    {
        value = deviates.Normal();
        switch (kind)
        {
        case ENoise::LogNormal:
            value = std::exp(value) - 1.0;
            break;
        case ENoise::HeavyTailed:
        {
            const double a = deviates.Normal();
            const double b = deviates.Normal();
            const double c = deviates.Normal();
            value /= std::sqrt((a * a + b * b + c * c) / 3.0);
            break;
        }
        case ENoise::Spiky:
            value += deviates.Uniform() < 0.1 ? 20.0 * deviates.Uniform() : 0.0;
            break;
        case ENoise::TwoSpeeds:
            value += deviates.Uniform() < rate ? 15.0 : 0.0;
            break;
        case ENoise::Sluggish:
            value = state = 0.5 * state + std::sqrt(0.75) * value;
            break;
        default:
            break;
        }
    }
    return noise;
}

struct SArchive
{
    std::vector<SCaseName> names;
    std::vector<SRun> runs;

    CTable GetTable() const
    {
        std::vector<const SRun*> pointers;
        for (const SRun& run : runs)
        {
            pointers.push_back(&run);
        }
        return CTable(names, pointers);
    }
};

struct SSettings
{
    std::size_t cases = 1000;
    std::size_t runs = 100;
    std::uint64_t seed = 1;
    ENoise noise = ENoise::Normal;
    double deviation = 0.03;      ///< of a case's time, relative
    double tempoDeviation = 0.05; ///< of the speed of a whole run, relative
    double tick = 0.0;            ///< times are multiples of this number of seconds; 0 for exact times
    /// The factor of a case's time in a run; empty: always 1.
    std::function<double(std::size_t testCase, std::size_t run)> factor;
    /// True if the case fails in the run; empty: it never fails.
    std::function<bool(std::size_t testCase, std::size_t run)> fails;
};

inline double RoundTo(double tick, double seconds)
{
    return tick > 0.0 ? std::round(seconds / tick) * tick : seconds;
}

inline SArchive MakeArchive(const SSettings& settings)
{
    CRandomDeviates deviates(settings.seed);
    SArchive archive;
    archive.runs.resize(settings.runs);
    std::vector<double> tempo;
    for (std::size_t run = 0; run < settings.runs; ++run)
    {
        archive.runs[run].label.name = LbFormat(L"Lauf %03d", static_cast<int>(run + 1));
        archive.runs[run].label.build = LbFormat(L"%d", static_cast<int>(run + 1));
        tempo.push_back(std::max(0.2, 1.0 + settings.tempoDeviation * deviates.Normal()));
    }
    for (std::size_t testCase = 0; testCase < settings.cases; ++testCase)
    {
        archive.names.push_back({L"CKlasse", LbFormat(L"Fall %06d", static_cast<int>(testCase))});
        const double level = std::exp(-5.0 + 2.0 * deviates.Normal());
        const std::vector<double> noise = MakeNoise(deviates, settings.noise, settings.runs);
        for (std::size_t run = 0; run < settings.runs; ++run)
        {
            const double factor = settings.factor ? settings.factor(testCase, run) : 1.0;
            Runner::History::SCell cell;
            cell.caseIndex = static_cast<std::uint32_t>(testCase);
            const double seconds = level * tempo[run] * factor * std::max(0.05, 1.0 + settings.deviation * noise[run]);
            cell.measured.seconds = static_cast<float>(RoundTo(settings.tick, seconds));
            if (settings.fails && settings.fails(testCase, run))
            {
                cell.measured.result = ECaseRunResult::Different;
            }
            archive.runs[run].cells.push_back(cell);
        }
    }
    return archive;
}

} // namespace SyntheticRuns
