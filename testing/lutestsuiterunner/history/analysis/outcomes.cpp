#include "testing/lutestsuiterunner/history/analysis/outcomes.h"

#include <algorithm>
#include <map>
#include <vector>

namespace Runner::History
{

namespace
{

/// A case is flaky if its outcome changes for at most this number of runs. A change for more runs counts as a defect
/// that was fixed.
constexpr std::size_t c_LongestDeparture = 2;

struct SVerdict
{
    std::size_t run;
    bool hasFailed;
};

/// A range [first, end) of equal verdicts.
struct SStreak
{
    std::size_t first;
    std::size_t end;
    bool hasFailed;

    std::size_t GetLength() const { return end - first; }
};

std::vector<SVerdict> getVerdicts(std::span<const EOutcome> outcomes)
{
    std::vector<SVerdict> verdicts;
    for (std::size_t run = 0; run < outcomes.size(); ++run)
    {
        if (outcomes[run] == EOutcome::Passed || outcomes[run] == EOutcome::Failed)
        {
            verdicts.push_back({run, outcomes[run] == EOutcome::Failed});
        }
    }
    return verdicts;
}

std::vector<SStreak> getStreaks(std::span<const SVerdict> verdicts)
{
    std::vector<SStreak> streaks;
    for (std::size_t index = 0; index < verdicts.size(); ++index)
    {
        if (streaks.empty() || streaks.back().hasFailed != verdicts[index].hasFailed)
        {
            streaks.push_back({index, index, verdicts[index].hasFailed});
        }
        streaks.back().end = index + 1;
    }
    return streaks;
}

/// True for a few runs with an outcome that differs from the outcome before and after them.
bool isDeparture(const std::vector<SStreak>& streaks, std::size_t number)
{
    return number > 0 && number + 1 < streaks.size() && streaks[number].GetLength() <= c_LongestDeparture;
}

SBeginning getBeginning(const std::vector<SVerdict>& verdicts, const SStreak& streak)
{
    const std::size_t index = verdicts[streak.first].run;
    const std::size_t first = streak.first == 0 ? index : verdicts[streak.first - 1].run + 1;
    return {index, first, index};
}

/// What the runs of one build prove about a case: its outcome changed without a change of the code.
struct SBuildProof
{
    bool hasBoth = false;     ///< it passed and failed
    bool hasReturned = false; ///< its outcome changed and changed back, or it passed and failed within one run
};

SBuildProof findProof(const CTable& table, std::size_t testCase, std::span<const SVerdict> verdicts)
{
    std::map<std::wstring_view, std::vector<SVerdict>> builds;
    SBuildProof proof;
    for (const SVerdict& verdict : verdicts)
    {
        proof.hasReturned = proof.hasReturned || table.HasBoth(testCase, verdict.run);
        if (const std::wstring& build = table.GetRun(verdict.run).label.build; !build.empty())
        {
            builds[build].push_back(verdict);
        }
    }
    for (const auto& [build, verdictsOfBuild] : builds)
    {
        const std::size_t count = getStreaks(verdictsOfBuild).size();
        proof.hasBoth = proof.hasBoth || count > 1;
        proof.hasReturned = proof.hasReturned || count > 2;
    }
    return proof;
}

std::optional<SFlakiness> findFlakiness(const CTable& table, std::size_t testCase,
                                        const std::vector<SVerdict>& verdicts, const std::vector<SStreak>& streaks)
{
    SFlakiness flaky;
    std::size_t firstDeparture = std::min<std::size_t>(1, streaks.size() - 1);
    for (std::size_t number = streaks.size(); number-- > 0;)
    {
        if (isDeparture(streaks, number))
        {
            ++flaky.returns;
            firstDeparture = number;
        }
    }
    const SBuildProof proof = findProof(table, testCase, verdicts);
    if (flaky.returns == 0 && !proof.hasReturned)
    {
        return std::nullopt;
    }
    flaky.isProven = proof.hasBoth || proof.hasReturned;
    flaky.runs = static_cast<std::uint32_t>(verdicts.size());
    flaky.failures = static_cast<std::uint32_t>(std::ranges::count_if(verdicts, &SVerdict::hasFailed));
    flaky.beginning = getBeginning(verdicts, streaks[firstDeparture]);
    return flaky;
}

/// True if the case was known to be flaky before the streak: an outcome has changed and come back at least twice, or
/// runs of one build had both outcomes. A single short failure may be a defect that was fixed soon.
bool isKnownFlaky(const CTable& table, std::size_t testCase, std::span<const SVerdict> before,
                  const std::vector<SStreak>& streaks, std::size_t number)
{
    constexpr std::size_t c_FewestReturns = 2;
    std::size_t failures = 0;
    std::size_t passes = 0;
    for (std::size_t earlier = 0; earlier < number; ++earlier)
    {
        if (isDeparture(streaks, earlier))
        {
            ++(streaks[earlier].hasFailed ? failures : passes);
        }
    }
    if (std::max(failures, passes) >= c_FewestReturns)
    {
        return true;
    }
    const SBuildProof proof = findProof(table, testCase, before);
    return proof.hasBoth || proof.hasReturned;
}

/// True unless the case was known to be flaky before the streak and chance explains the length of the streak.
bool isLasting(const CTable& table, std::size_t testCase, const std::vector<SVerdict>& verdicts,
               const std::vector<SStreak>& streaks, std::size_t number)
{
    constexpr double c_SmallestProbability = 0.01;
    const SStreak& streak = streaks[number];
    const std::span<const SVerdict> before = std::span(verdicts).first(streak.first);
    if (!isKnownFlaky(table, testCase, before, streaks, number))
    {
        return true;
    }
    const auto alike = std::ranges::count(before, streak.hasFailed, &SVerdict::hasFailed);
    const double rate = static_cast<double>(alike + 1) / static_cast<double>(streak.first + 2);
    double probability = 1.0;
    for (std::size_t run = 0; run < streak.GetLength(); ++run)
    {
        probability *= rate;
    }
    return probability <= c_SmallestProbability;
}

void findChange(const CTable& table, std::size_t testCase, const std::vector<SVerdict>& verdicts,
                const std::vector<SStreak>& streaks, SOutcomeFindings& findings)
{
    const std::size_t last = streaks.size() - 1;
    if (last == 0)
    {
        // A case that has failed since the first run of the archive is not a new failure.
        if (const std::size_t index = verdicts.front().run; streaks[last].hasFailed && index > 0)
        {
            findings.newFailure = SBeginning{index, findings.added ? findings.added->index : 0, index};
        }
        return;
    }
    if (streaks[last].hasFailed)
    {
        if (isLasting(table, testCase, verdicts, streaks, last))
        {
            findings.newFailure = getBeginning(verdicts, streaks[last]);
        }
    }
    else if (!isDeparture(streaks, last - 1) && isLasting(table, testCase, verdicts, streaks, last - 1))
    {
        findings.fixed = getBeginning(verdicts, streaks[last]);
    }
}

void findPresence(std::span<const EOutcome> outcomes, SOutcomeFindings& findings)
{
    const auto isPresent = [](EOutcome outcome) { return outcome != EOutcome::Absent; };
    const auto first = std::ranges::find_if(outcomes, isPresent);
    if (first == outcomes.end())
    {
        return;
    }
    if (!isPresent(outcomes.back()))
    {
        const auto last = std::find_if(outcomes.rbegin(), outcomes.rend(), isPresent);
        const auto index = static_cast<std::size_t>(last.base() - outcomes.begin());
        findings.missing = SBeginning{index, index, index};
    }
    else if (first != outcomes.begin())
    {
        const auto index = static_cast<std::size_t>(first - outcomes.begin());
        findings.added = SBeginning{index, index, index};
    }
}

/// Looks only at the newest run; earlier interrupted runs do not matter.
void findNotRun(std::span<const EOutcome> outcomes, SOutcomeFindings& findings)
{
    if (outcomes.back() == EOutcome::Undecided)
    {
        const std::size_t index = outcomes.size() - 1;
        findings.notRun = SBeginning{index, index, index};
    }
}

} // namespace

SOutcomeFindings FindOutcomes(const CTable& table, std::size_t testCase)
{
    SOutcomeFindings findings;
    const std::span<const EOutcome> outcomes = table.GetOutcomes(testCase);
    findNotRun(outcomes, findings);
    const bool isSteady = std::ranges::adjacent_find(outcomes, std::ranges::not_equal_to()) == outcomes.end();
    if (isSteady && !table.HasBoth(testCase))
    {
        return findings;
    }
    findPresence(outcomes, findings);
    const std::vector<SVerdict> verdicts = getVerdicts(outcomes);
    if (!verdicts.empty())
    {
        const std::vector<SStreak> streaks = getStreaks(verdicts);
        findings.flaky = findFlakiness(table, testCase, verdicts, streaks);
        if (!findings.missing)
        {
            findChange(table, testCase, verdicts, streaks, findings);
        }
    }
    return findings;
}

} // namespace Runner::History
