/// The cost that selections and description files add to discovery, for 1,000, 10,000 and 100,000 cases of one class.

#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/luunittest.h"
#include "benchmarks/support/limits.h"
#include "benchmarks/support/samplereports.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

constexpr std::int64_t c_MostCases = 100'000;
constexpr std::size_t c_Elements = 2500;
constexpr std::size_t c_StarElements = 20;
constexpr int c_Rounds = 5;

constexpr double c_OneExpressionLimitSeconds = 0.1;
constexpr double c_ExcludesLimitSeconds = 1.5;
constexpr double c_ElementsLimitSeconds = 0.3;

std::wstring getCaseName(std::size_t index)
{
    return LbFormat(L"data set %06u.txt", index);
}

std::int64_t& getCaseCount()
{
    static std::int64_t s_Count = 0;
    return s_Count;
}

class CManyNames : public LuUnitTest
{
    LB_RTTI(CManyNames)

    void InitSubtests() override
    {
        for (std::size_t index = 0; index < static_cast<std::size_t>(getCaseCount()); ++index)
        {
            AddSubtest(getCaseName(index), [] {});
        }
    }
};

} // namespace

LB_RTTI_CLASS(CManyNames, LuUnitTest)

namespace
{

// Selections ----------------------------------------------------------------------------------------------------------

using MakePattern = std::wstring (*)(std::size_t index);

std::wstring makeLiteral(std::size_t index)
{
    return LbFormat(L"set %06u", index * 37);
}

std::wstring makeAnchored(std::size_t index)
{
    return LbFormat(L"^/srv/.*:data set %06u\\.txt$", index * 37);
}

std::wstring makeClasses(std::size_t index)
{
    return LbFormat(L":\\w+\\s[[:alpha:]]+ \\d{3}%03u\\.[a-z]+$", index);
}

/// Alternatives of 300 names.
std::wstring makeChoice(std::size_t index)
{
    std::wstring choice = L":(data set 0";
    for (std::size_t number = 1; number < 300; ++number)
    {
        choice += LbFormat(L"|data set %06u", number * 37 + index);
    }
    return choice + L")\\.txt$";
}

/// Only the standard library's engine can match a look-ahead. That engine runs only on names that contain
/// "set <number>".
std::wstring makeLookAhead(std::size_t index)
{
    return LbFormat(L"(?!.*bak)set %06u", index * 37);
}

/// Begins with a look-ahead. There is no text that each match must contain.
std::wstring makeGuarded(std::size_t index)
{
    return LbFormat(L"^(?!.*(set|%06u))", index);
}

std::vector<LuTestSuite::SUnitTest> makeTests(std::int64_t count)
{
    LuTestSuite::SUnitTest test;
    test.className = L"CManyNames";
    test.dataDirectory = LbPath::ToNative(L"/srv/product/tests/data/group 7/CManyNames/");
    for (std::int64_t index = 0; index < count; ++index)
    {
        test.cases.push_back({{}, getCaseName(static_cast<std::size_t>(index)), {}});
    }
    return {test};
}

void exclude(benchmark::State& state, MakePattern makePattern)
{
    const std::vector<LuTestSuite::SUnitTest> tests = makeTests(state.range(0));
    const auto patternCount = static_cast<std::size_t>(state.range(1));
    std::vector<std::wstring> patterns;
    while (patterns.size() < patternCount)
    {
        patterns.push_back(makePattern(patterns.size()));
    }
    std::vector<double> seconds;
    for ([[maybe_unused]] const auto iteration : state)
    {
        std::vector<LuTestSuite::SUnitTest> rest = tests;
        seconds.push_back(MeasureSeconds([&] {
            LuTestSuiteUtils::FilterTestCases(rest, L"", {}, patterns, std::numeric_limits<std::uint32_t>::max(),
                                              false);
        }));
        state.SetIterationTime(seconds.back());
        state.counters["left"] = static_cast<double>(rest.at(0).cases.size());
    }
    HoldLeast(state, "seconds", seconds, patternCount == 1 ? c_OneExpressionLimitSeconds : c_ExcludesLimitSeconds);
}

void addSizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->ArgsProduct({{1000, 10'000, c_MostCases}, {1, 10, 200}})
        ->ArgNames({"cases", "patterns"})
        ->Iterations(c_Rounds)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(exclude, literal, makeLiteral)->Apply(addSizes);
BENCHMARK_CAPTURE(exclude, anchored, makeAnchored)->Apply(addSizes);
BENCHMARK_CAPTURE(exclude, classes, makeClasses)->Apply(addSizes);
BENCHMARK_CAPTURE(exclude, choice, makeChoice)->Apply(addSizes);
BENCHMARK_CAPTURE(exclude, lookAhead, makeLookAhead)->Apply(addSizes);
BENCHMARK_CAPTURE(exclude, guarded, makeGuarded)->Apply(addSizes);

// Description files ---------------------------------------------------------------------------------------------------

std::wstring makePlain(std::size_t index)
{
    return getCaseName(index * 37);
}

std::wstring makeWildcard(std::size_t index)
{
    return LbFormat(L"data set %04u*?.t*", index);
}

std::wstring makeStarred(std::size_t index)
{
    return LbFormat(L"*set %06u*", index * 37);
}

/// The longest text between wildcard characters is the common beginning of all names. The number tells the elements
/// apart.
std::wstring makeCommonBeginning(std::size_t index)
{
    return LbFormat(L"data set *%04u?.txt", index);
}

/// Each name contains the "x" of these wildcards but does not end with it, so every element is tried on every name.
std::wstring makeOneStar(std::size_t)
{
    return L"*x";
}

std::wstring makeNineStars(std::size_t)
{
    return L"*********x";
}

/// Each name contains the texts between the stars in this order.
std::wstring makeNineSeparateStars(std::size_t)
{
    return L"*d*a*t*a*s*e*t*t*x";
}

std::wstring makeMixed(std::size_t index)
{
    const std::wstring braces = LbFormat(L"data set %05u.{1,2}xt", index);
    return index % 100 == 0 ? braces : index % 2 == 0 ? makePlain(index) : makeWildcard(index);
}

std::string makeDescription(MakePattern makeName, std::size_t count)
{
    std::string text = "<ExtraInfo>";
    for (std::size_t index = 0; index < count; ++index)
    {
        const std::wstring name = makeName(index);
        text += "<TestCase name='" + std::string(name.begin(), name.end()) + "'><TimeOutSec>5</TimeOutSec></TestCase>";
    }
    return text + "</ExtraInfo>";
}

double measureScan(const std::wstring& folder)
{
    return MeasureSeconds([&] {
        benchmark::DoNotOptimize(LuTestSuiteUtils::ScanDirectoryForUnitTests(folder, false).at(0).cases.size());
    });
}

/// Measures the time that the description adds to the discovery of the same cases.
void describe(benchmark::State& state, MakePattern makeName, std::size_t elementCount, double limit)
{
    getCaseCount() = state.range(0);
    const Benchmarks::CFolder plain;
    const Benchmarks::CFolder described;
    LbFileSystem::AssertDirectory(plain.GetPathOf(L"CManyNames"));
    LbFileSystem::AssertDirectory(described.GetPathOf(L"CManyNames"));
    std::ofstream(std::filesystem::path(described.GetPathOf(L"CManyNames/#ExtraInfo.xml")))
        << makeDescription(makeName, elementCount);
    std::vector<double> without;
    std::vector<double> with;
    for ([[maybe_unused]] const auto iteration : state)
    {
        without.push_back(measureScan(plain.GetPath()));
        with.push_back(measureScan(described.GetPath()));
        state.SetIterationTime(with.back());
    }
    HoldLeast(state, "seconds", {GetLeast(with) - GetLeast(without)}, limit);
}

void addCases(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(1000)
        ->Arg(10'000)
        ->Arg(c_MostCases)
        ->ArgName("cases")
        ->Iterations(c_Rounds)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(describe, plain, makePlain, c_Elements, c_ElementsLimitSeconds)->Apply(addCases);
BENCHMARK_CAPTURE(describe, wildcards, makeWildcard, c_Elements, 1.0)->Apply(addCases);
BENCHMARK_CAPTURE(describe, starred, makeStarred, c_Elements, c_ElementsLimitSeconds)->Apply(addCases);
BENCHMARK_CAPTURE(describe, commonBeginning, makeCommonBeginning, c_Elements, c_ElementsLimitSeconds)->Apply(addCases);
BENCHMARK_CAPTURE(describe, oneStar, makeOneStar, c_StarElements, 1.0)->Apply(addCases);
BENCHMARK_CAPTURE(describe, nineStars, makeNineStars, c_StarElements, 1.0)->Apply(addCases);
BENCHMARK_CAPTURE(describe, nineSeparateStars, makeNineSeparateStars, c_StarElements, 1.0)->Apply(addCases);
BENCHMARK_CAPTURE(describe, mixed, makeMixed, c_Elements, 1.0)->Apply(addCases);

} // namespace
