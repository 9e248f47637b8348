#include "testing/lutestsuite/report/matching.h"

#include <algorithm>
#include <limits>
#include <tuple>

namespace LuTestSuite
{

namespace
{

using SData = LuTestSuiteReport::SReportData;
using SClass = LuTestSuiteReport::SReportClass;
using SCase = LuTestSuiteReport::SReportCase;

const std::wstring& getKey(const SClass& testClass)
{
    return testClass.Name;
}

std::wstring getKey(const SCase& testCase)
{
    return testCase.ClassName + L':' + testCase.CaseName;
}

template<typename Entry>
struct SKeyed
{
    decltype(getKey(std::declval<const Entry&>())) key;
    std::uint32_t index;
    bool isB;
};

template<typename Entry>
void addKeys(std::vector<SKeyed<Entry>>& keyed, const std::vector<Entry>& entries, bool isB)
{
    for (std::uint32_t index = 0; index < entries.size(); ++index)
    {
        keyed.push_back({getKey(entries[index]), index, isB});
    }
}

/// All values on which the state of a match depends, so entries of equal rank are interchangeable.
auto getRank(const SClass& testClass)
{
    const std::int64_t unsuccessful = std::int64_t{testClass.CasesTotal} - testClass.Successful;
    return std::tuple(unsuccessful, testClass.Warnings, testClass.CasesTotal);
}

auto getRank(const SCase& testCase)
{
    return std::tuple(LuTestSuiteReport::getReportResult(testCase.Result), testCase.Result, testCase.Warning);
}

/// The worst entry represents all entries of its key, so that a later success does not hide a failure; among equal
/// entries the last one is kept.
template<typename Entry>
void keepWorst(const std::vector<Entry>& entries, std::uint32_t candidate, std::uint32_t& kept)
{
    const Entry* const former = FindSide(entries, kept);
    if (former == nullptr || getRank(entries[candidate]) >= getRank(*former))
    {
        kept = candidate;
    }
}

/// The positions on both sides by key; each key occurs once.
template<typename Match, typename Entry>
std::vector<Match> matchKeys(const std::vector<Entry>& a, const std::vector<Entry>& b)
{
    std::vector<SKeyed<Entry>> keyed;
    keyed.reserve(a.size() + b.size());
    addKeys(keyed, a, false);
    addKeys(keyed, b, true);

    std::vector<std::uint32_t> order(keyed.size());
    for (std::uint32_t index = 0; index < order.size(); ++index)
    {
        order[index] = index;
    }
    std::ranges::stable_sort(order, {},
                             [&keyed](std::uint32_t index) -> const std::wstring& { return keyed[index].key; });

    std::vector<Match> matches;
    const std::wstring* lastKey = nullptr;
    for (const std::uint32_t index : order)
    {
        const SKeyed<Entry>& entry = keyed[index];
        if (lastKey == nullptr || *lastKey != entry.key)
        {
            matches.emplace_back();
            lastKey = &entry.key;
        }
        Match& match = matches.back();
        keepWorst(entry.isB ? b : a, entry.index, entry.isB ? match.indexB : match.indexA);
    }
    return matches;
}

/// Growth counts as worse.
EDiffState compareGrowth(std::int64_t growth)
{
    if (growth == 0)
    {
        return EDiffState::Plain;
    }
    return growth < 0 ? EDiffState::Better : EDiffState::Worse;
}

EDiffState compareClasses(const SClass& a, const SClass& b, bool tolerateWarnings)
{
    const auto getUnsuccessful = [](const SClass& testClass) {
        return std::int64_t{testClass.CasesTotal} - testClass.Successful;
    };
    const EDiffState unsuccessful = compareGrowth(getUnsuccessful(b) - getUnsuccessful(a));
    const EDiffState warnings =
        tolerateWarnings ? EDiffState::Plain : compareGrowth(std::int64_t{b.Warnings} - a.Warnings);
    if (unsuccessful != EDiffState::Plain || warnings != EDiffState::Plain)
    {
        return unsuccessful != EDiffState::Plain ? unsuccessful : warnings;
    }
    return a.CasesTotal != b.CasesTotal ? EDiffState::Different : EDiffState::Plain;
}

EDiffState getStateAlone(const SClass& testClass, bool tolerateWarnings)
{
    const bool isBad = testClass.CasesTotal != testClass.Successful || (testClass.Warnings > 0 && !tolerateWarnings);
    return isBad ? EDiffState::Worse : EDiffState::Plain;
}

bool isOk(const SCase& testCase)
{
    return testCase.Result == LuTestSuiteRun::ECaseRunResult::Ok;
}

EDiffState compareCases(const SCase& a, const SCase& b, bool tolerateWarnings)
{
    if (isOk(a) != isOk(b))
    {
        return isOk(b) ? EDiffState::Better : EDiffState::Worse;
    }
    if (a.Result != b.Result)
    {
        return EDiffState::Different;
    }
    if (a.Warning && !b.Warning)
    {
        return EDiffState::Better;
    }
    return !tolerateWarnings && b.Warning && !a.Warning ? EDiffState::Worse : EDiffState::Plain;
}

EDiffState getStateAlone(const SCase& testCase, bool warningCounts)
{
    return !isOk(testCase) || (warningCounts && testCase.Warning) ? EDiffState::Worse : EDiffState::Plain;
}

/// Clamped to finite values, for reports with implausible numbers.
float getRatio(double a, double b)
{
    constexpr double c_Largest = std::numeric_limits<float>::max();
    return a == 0.0 ? 0.0F : static_cast<float>(std::clamp(b / a, -c_Largest, c_Largest));
}

void compare(SCaseMatch& match, const SCase* a, const SCase* b, bool tolerateWarnings)
{
    if (a != nullptr && b != nullptr)
    {
        match.timeRatio = getRatio(a->Time, b->Time);
        match.memoryRatio = getRatio(static_cast<double>(a->Memory), static_cast<double>(b->Memory));
        match.state = compareCases(*a, *b, tolerateWarnings);
        return;
    }
    // For a case that only one run has: in run A, a warning counts if warnings are not tolerated; in run B, it counts
    // if they are tolerated. Readers of comparisons rely on both rules.
    match.state = a != nullptr ? getStateAlone(*a, !tolerateWarnings) : getStateAlone(*b, tolerateWarnings);
}

} // namespace

std::vector<SClassMatch> MatchClasses(const SData& a, const SData& b, bool tolerateWarnings)
{
    std::vector<SClassMatch> matches = matchKeys<SClassMatch>(a.Classes, b.Classes);
    for (SClassMatch& match : matches)
    {
        const SClass* const classA = FindSide(a.Classes, match.indexA);
        const SClass* const classB = FindSide(b.Classes, match.indexB);
        match.state = classA != nullptr && classB != nullptr
                          ? compareClasses(*classA, *classB, tolerateWarnings)
                          : getStateAlone(classA != nullptr ? *classA : *classB, tolerateWarnings);
    }
    return matches;
}

std::vector<SCaseMatch> MatchCases(const SData& a, const SData& b, bool tolerateWarnings)
{
    std::vector<SCaseMatch> matches = matchKeys<SCaseMatch>(a.Cases, b.Cases);
    for (SCaseMatch& match : matches)
    {
        compare(match, FindSide(a.Cases, match.indexA), FindSide(b.Cases, match.indexB), tolerateWarnings);
    }
    return matches;
}

} // namespace LuTestSuite
