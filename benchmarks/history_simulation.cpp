/// Measures what the history finds in invented archives, and its false alarms where nothing has changed.
///
///     history_simulation [SEED] [CASES] [PART]
///
/// Prints all tables, or only PART, which is alarms, flakes, slower or several. Ends with status 1 if a limit is
/// missed.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "testing/lutestsuiterunner/history/analysis/findings.h"
#include "tests/support/syntheticruns.h"

namespace
{

using namespace Runner::History;
using SyntheticRuns::ENoise;
using SyntheticRuns::SSettings;

constexpr std::size_t c_Runs = 100;
bool s_IsMissed = false;

/// The noise of the times, the clock that measures them, and their drift.
struct SShape
{
    const char* name;
    ENoise noise;
    double tick = 0.0;  ///< of the clock, in seconds; 0 for exact times
    double drift = 0.0; ///< of all cases together, relative, from the first to the last run
};

constexpr double c_Millisecond = 0.001;
/// The tick of an old clock: many cases have equal times.
constexpr double c_CoarseTick = 0.0156;

constexpr SShape c_Shapes[] = {
    {"normal", ENoise::Normal},
    {"log-normal", ENoise::LogNormal},
    {"heavy-tailed", ENoise::HeavyTailed},
    {"spiky", ENoise::Spiky},
    {"two speeds", ENoise::TwoSpeeds},
    {"sluggish", ENoise::Sluggish},
    {"mixed", ENoise::Mixed},
    {"milliseconds", ENoise::Normal, c_Millisecond},
    {"equal times", ENoise::Normal, c_CoarseTick},
    {"slow drift", ENoise::Normal, 0.0, 0.1},
};

SSettings getSettings(const SShape& shape, std::size_t cases, std::size_t runs, std::uint64_t seed)
{
    SSettings settings;
    settings.cases = cases;
    settings.runs = runs;
    settings.seed = seed;
    settings.noise = shape.noise;
    settings.tick = shape.tick;
    settings.factor = [shape, runs](std::size_t, std::size_t run) {
        return 1.0 + shape.drift * static_cast<double>(run) / static_cast<double>(runs);
    };
    return settings;
}

SAnalysis analyze(const SyntheticRuns::SArchive& archive)
{
    return Analyze(L"", archive.GetTable(), {}, AnalyzeSteps(archive.GetTable(), {}));
}

const char* judge(bool isMet)
{
    s_IsMissed = s_IsMissed || !isMet;
    return isMet ? "" : "   MISSED";
}

void showFalseAlarms(std::uint64_t seed, std::size_t cases, std::size_t runs)
{
    std::printf("Without a change: steps reported in an archive of %zu cases and %zu runs (limit: 1)\n", cases, runs);
    for (const SShape& shape : c_Shapes)
    {
        const SyntheticRuns::SArchive archive = MakeArchive(getSettings(shape, cases, runs, ++seed));
        const SAnalysis analysis = analyze(archive);
        const SShuffleCheck& check = analysis.steps.check;
        // If all cases drift, a step that all cases have in common is not a false alarm.
        const std::size_t whole = shape.drift > 0.0 ? 0 : analysis.steps.whole.size();
        const std::size_t alarms = analysis.cases.size() + whole;
        std::printf("  %-14s %zu%-9s   in %zu random orders: %zu\n", shape.name, alarms, judge(alarms <= 1),
                    check.archives, check.archivesWithAlarm);
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

/// One case in ten becomes slower at the run `change`; the archive ends eight runs later.
void showSlower(std::uint64_t seed, std::size_t cases, const SShape& shape, std::size_t change)
{
    SSettings settings = getSettings(shape, cases, change + 8, seed);
    settings.factor = [change, common = settings.factor](std::size_t testCase, std::size_t run) {
        return common(testCase, run) * (testCase % 10 == 0 && run >= change ? 1.1 : 1.0);
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
    // The limits apply only to changes that follow at least 20 runs: with 15 runs before the change, the threshold is
    // higher than some changes.
    const bool isPromised = shape.noise == ENoise::Normal && shape.tick == 0.0 && change >= 20;
    std::printf("  %6zu %10.3f%-9s %8.4f%-9s %6.1f %8zu\n", change, share, isPromised ? judge(share >= 0.95) : "",
                coverage, isPromised ? judge(coverage >= 0.98) : "",
                static_cast<double>(width) / static_cast<double>(std::max<std::size_t>(found, 1)), falseAlarms);
}

/// The factor of a case's time from the run `begin` to the next level.
struct SLevel
{
    std::size_t begin;
    double factor;
};

struct SHistory
{
    const char* name;
    std::size_t runs;
    std::vector<SLevel> levels;
};

const SHistory c_Histories[] = {
    {"10 % slower, later 10 % slower again", 100, {{40, 1.1}, {70, 1.21}}},
    {"30 % slower, later 30 % slower again", 100, {{40, 1.3}, {70, 1.69}}},
    {"10 % slower, later twice as slow", 100, {{50, 1.1}, {80, 2.2}}},
    {"twice as slow, later 10 % slower", 100, {{50, 2.0}, {80, 2.2}}},
    {"30 % slower for 30 runs in the middle", 90, {{30, 1.3}, {60, 1.0}}},
    {"30 % slower for 10 runs, 22 runs later 10 % slower", 100, {{60, 1.3}, {70, 1.0}, {92, 1.1}}},
    {"half as fast for 20 runs, 40 runs later 10 % slower", 100, {{32, 2.0}, {52, 1.0}, {92, 1.1}}},
};

double getFactor(const SHistory& history, std::size_t run)
{
    double factor = 1.0;
    for (const SLevel& level : history.levels)
    {
        factor = run >= level.begin ? level.factor : factor;
    }
    return factor;
}

/// One case in fifty has several changes. The coverage counts only cases with as many steps found as they have changes.
void showHistory(std::uint64_t seed, std::size_t cases, const SHistory& history)
{
    SSettings settings;
    settings.cases = cases;
    settings.runs = history.runs;
    settings.seed = seed;
    settings.factor = [&history](std::size_t testCase, std::size_t run) {
        return testCase % 50 == 0 ? getFactor(history, run) : 1.0;
    };
    const SyntheticRuns::SArchive archive = MakeArchive(settings);
    const SAnalysis analysis = analyze(archive);
    std::size_t complete = 0;
    std::size_t newest = 0;
    std::size_t covered = 0;
    std::size_t width = 0;
    std::size_t falseAlarms = 0;
    for (const SCaseFindings& findings : analysis.cases)
    {
        if (findings.caseIndex % 50 != 0)
        {
            ++falseAlarms;
            continue;
        }
        newest += findings.times.back().last >= history.levels.back().begin ? 1 : 0;
        if (findings.times.size() != history.levels.size())
        {
            continue;
        }
        ++complete;
        for (std::size_t number = 0; number < history.levels.size(); ++number)
        {
            const SStep& step = findings.times[number];
            covered += step.first <= history.levels[number].begin && history.levels[number].begin <= step.last ? 1 : 0;
            width += step.last - step.first + 1;
        }
    }
    const auto changed = static_cast<double>((cases + 49) / 50);
    const auto judged = static_cast<double>(std::max<std::size_t>(complete * history.levels.size(), 1));
    const double newestShare = static_cast<double>(newest) / changed;
    const double coverage = static_cast<double>(covered) / judged;
    std::printf("  %-52s %8.3f%-9s %8.3f %8.4f%-9s %6.1f %6zu\n", history.name, newestShare, judge(newestShare >= 0.95),
                static_cast<double>(complete) / changed, coverage, judge(coverage >= 0.98),
                static_cast<double>(width) / judged, falseAlarms);
}

void showSeveral(std::uint64_t seed, std::size_t cases)
{
    std::printf("Several changes, 3 %% normal noise: the newest one found, all found, covered (limits: 0.95, 0.98)\n");
    for (const SHistory& history : c_Histories)
    {
        showHistory(++seed, cases, history);
    }
}

} // namespace

int main(int count, const char* const* arguments)
{
    const std::uint64_t seed = count > 1 ? std::strtoull(arguments[1], nullptr, 10) * 1000 : 1000;
    const std::size_t cases = count > 2 ? std::strtoull(arguments[2], nullptr, 10) : 10000;
    const auto isWanted = [&](std::string_view part) { return count < 4 || arguments[3] == part; };
    if (isWanted("alarms"))
    {
        showFalseAlarms(seed, cases, c_Runs);
        showFalseAlarms(seed + 200, cases, 20);
        showFalseAlarms(seed + 300, cases, 30);
    }
    if (isWanted("flakes"))
    {
        showFlakes(seed + 400, cases);
    }
    for (std::size_t shape = 0; isWanted("slower") && shape < std::size(c_Shapes); ++shape)
    {
        std::printf("10 %% more time at 3 %% noise, %s, eight runs later (limits: 0.95, 0.98)\n", c_Shapes[shape].name);
        std::printf("  %6s %10s%-9s %8s%-9s %6s %8s\n", "before", "found", "", "covered", "", "width", "false");
        for (const std::size_t change : {15, 20, 30, 50, 92})
        {
            showSlower(seed + 500 + change, cases, c_Shapes[shape], change);
        }
    }
    if (isWanted("several"))
    {
        showSeveral(seed + 700, cases);
    }
    return s_IsMissed ? 1 : 0;
}
