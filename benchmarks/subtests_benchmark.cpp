/// The cost of finding one sub-test among many in an object created for one case, by number of sub-tests.
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "base/givenstream.h"
#include "base/lbformat.h"
#include "base/luunittest.h"

namespace
{

std::vector<std::wstring> s_names;

/// One named sub-test per name.
class CNamed : public LuUnitTest
{
    LB_RTTI(CNamed)

    void InitSubtests() override
    {
        for (const std::wstring& name : s_names)
        {
            AddSubtest(name, [] { return eR_Passed; });
        }
    }
};
LB_RTTI_CLASS(CNamed, LuUnitTest)

/// A stream like a runner's. Without one, the object would keep all sub-tests.
class CGivenNowhere : public LbGivenStream
{
    void Write(std::wstring_view /*text*/) override {}
};

void makeNames(std::int64_t count)
{
    s_names.clear();
    for (std::int64_t number = 0; number < count; ++number)
    {
        s_names.push_back(LbFormat(L"a sub-test with a name %d", number));
    }
}

void BM_FindLastOfNamedSubtests(benchmark::State& state)
{
    makeNames(state.range(0));
    CGivenNowhere messages;
    for (auto _ : state)
    {
        CNamed object;
        LuUnitTest& unitTest = object;
        unitTest.SetMessageStream(&messages);
        unitTest.SelectSubtest(s_names.back());
        unitTest.InitSubtests();
        if (!unitTest.HasSelectedSubtest())
        {
            state.SkipWithError("not found");
        }
    }
    state.counters["time_per_subtest"] =
        benchmark::Counter(static_cast<double>(s_names.size()),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_FindLastOfNamedSubtests)->RangeMultiplier(10)->Range(1000, 100000);

void BM_KeepAllNamedSubtests(benchmark::State& state)
{
    makeNames(state.range(0));
    for (auto _ : state)
    {
        CNamed object;
        LuUnitTest& unitTest = object;
        unitTest.InitSubtests();
        benchmark::DoNotOptimize(unitTest.FindSubtest(s_names.back()));
    }
    state.counters["time_per_subtest"] =
        benchmark::Counter(static_cast<double>(s_names.size()),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_KeepAllNamedSubtests)->RangeMultiplier(10)->Range(1000, 100000);

} // namespace
