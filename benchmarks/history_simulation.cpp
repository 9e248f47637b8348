/// Measures what the history finds in invented archives, and its false alarms where nothing has changed.
///
///     history_simulation [SEED] [CASES]
///
/// Prints a table. Status 1 if a limit is missed.

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "testing/lutestsuiterunner/history/findings.h"
#include "tests/support/syntheticruns.h"

namespace
{

using namespace Runner::History;
using SyntheticRuns::ENoise;
using SyntheticRuns::SSettings;

constexpr std::size_t c_Runs = 100;
bool s_IsMissed = false;

struct SNoiseName
{
    ENoise noise;
    const char* name;
};

constexpr SNoiseName c_Noises[] = {
    {ENoise::Normal, "normal"},        {ENoise::HeavyTailed, "heavy-tailed"}, {ENoise::Spiky, "spiky"},
    {ENoise::TwoSpeeds, "two speeds"}, {ENoise::Sluggish, "sluggish"},        {ENoise::Mixed, "mixed"},
};

SAnalysis analyze(const SyntheticRuns::SArchive& archive)
{
    return Analyze(L"", archive.GetTable(), {}, AnalyzeSteps(archive.GetTable(), {}));
}

const char* judge(bool isMet)
{
    s_IsMissed = s_IsMissed || !isMet;
    return isMet ? "" : "   MISSED";
}

void showFalseAlarms(std::uint64_t seed, std::size_t cases)
{
    std::printf("Without a change: steps reported in an archive of %zu cases and %zu runs (limit: 1)\n", cases, c_Runs);
    for (const SNoiseName& noise : c_Noises)
    {
        SSettings settings;
        settings.cases = cases;
        settings.runs = c_Runs;
        settings.seed = ++seed;
        settings.noise = noise.noise;
        const SyntheticRuns::SArchive archive = MakeArchive(settings);
        const std::size_t alarms = analyze(archive).cases.size();
        std::printf("  %-14s %zu%s\n", noise.name, alarms, judge(alarms <= 1));
    }
}

void showFlakes(std::uint64_t seed, std::size_t cases)
{
    SSettings settings;
    settings.cases = cases;
    settings.runs = 60;
    settings.seed = seed;
    SyntheticRuns::CRandomDeviates deviates(seed + 1);
    settings.fails = [&deviates](std::size_t, std::size_t) { return deviates.Uniform() < 0.05; };
    const SyntheticRuns::SArchive archive = MakeArchive(settings);
    const SAnalysis analysis = analyze(archive);
    const auto found = static_cast<double>(std::ranges::count_if(
        analysis.cases, [](const SCaseFindings& findings) { return findings.outcomes.flaky.has_value(); }));
    const double share = found / static_cast<double>(cases);
    std::printf("Flake rate of 5 %% found within 60 runs (limit: 0.9): %.3f%s\n", share, judge(share >= 0.9));
}

/// One case of ten becomes slower at the run `change`; the archive ends eight runs later.
void showSlower(std::uint64_t seed, std::size_t cases, ENoise others, std::size_t change)
{
    SSettings settings;
    settings.cases = cases;
    settings.runs = change + 8;
    settings.seed = seed;
    settings.noise = others;
    settings.factor = [change](std::size_t testCase, std::size_t run) {
        return testCase % 10 == 0 && run >= change ? 1.1 : 1.0;
    };
    const SyntheticRuns::SArchive archive = MakeArchive(settings);
    std::size_t found = 0;
    std::size_t covered = 0;
    std::size_t width = 0;
    std::size_t falseAlarms = 0;
    const SAnalysis analysis = analyze(archive);
    for (const SCaseFindings& findings : analysis.cases)
    {
        if (findings.caseIndex % 10 != 0)
        {
            ++falseAlarms;
            continue;
        }
        const SStep& step = findings.times.back();
        ++found;
        covered += step.first <= change && change <= step.last ? 1 : 0;
        width += step.last - step.first + 1;
    }
    const double share = static_cast<double>(found) / (static_cast<double>(cases) / 10.0);
    const double coverage = found == 0 ? 1.0 : static_cast<double>(covered) / static_cast<double>(found);
    // With fewer runs before the change there is too little to compare with.
    const bool isPromised = others == ENoise::Normal && change >= 30;
    std::printf("  %6zu %10.3f%-9s %8.4f%-9s %6.1f %8zu\n", change, share, isPromised ? judge(share >= 0.95) : "",
                coverage, isPromised ? judge(coverage >= 0.98) : "",
                static_cast<double>(width) / static_cast<double>(std::max<std::size_t>(found, 1)), falseAlarms);
}

} // namespace

int main(int count, const char* const* arguments)
{
    const std::uint64_t seed = count > 1 ? std::strtoull(arguments[1], nullptr, 10) * 1000 : 1000;
    const std::size_t cases = count > 2 ? std::strtoull(arguments[2], nullptr, 10) : 10000;
    showFalseAlarms(seed, cases);
    showFlakes(seed + 100, cases);
    for (const SNoiseName& noise : {c_Noises[0], c_Noises[1]})
    {
        std::printf("10 %% more time at 3 %% %s noise, eight runs later (limits: 0.95, 0.98)\n", noise.name);
        std::printf("  %6s %10s%-9s %8s%-9s %6s %8s\n", "before", "found", "", "covered", "", "width", "false");
        for (const std::size_t change : {15, 20, 30, 50, 92})
        {
            showSlower(seed + 200 + change, cases, noise.noise, change);
        }
    }
    return s_IsMissed ? 1 : 0;
}
