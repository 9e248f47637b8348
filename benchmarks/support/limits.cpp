#include "benchmarks/support/limits.h"

#include <algorithm>
#include <utility>

namespace
{

bool s_isMissed = false;

double getMedian(std::vector<double> values)
{
    if (values.empty())
    {
        return 0;
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

void hold(benchmark::State& state, const std::string& name, double value, double limit)
{
    state.counters[name] = value;
    state.counters["limit"] = limit;
    if (value > limit)
    {
        s_isMissed = true;
        state.SetLabel("LIMIT MISSED: " + name);
    }
}

} // namespace

double GetLeast(const std::vector<double>& values)
{
    return values.empty() ? 0 : std::ranges::min(values);
}

void ReportMedian(benchmark::State& state, const std::string& name, std::vector<double> values)
{
    state.counters[name] = getMedian(std::move(values));
}

void HoldMedian(benchmark::State& state, const std::string& name, std::vector<double> values, double limit)
{
    hold(state, name, getMedian(std::move(values)), limit);
}

void HoldLeast(benchmark::State& state, const std::string& name, const std::vector<double>& values, double limit)
{
    hold(state, name, GetLeast(values), limit);
}

int main(int count, char** arguments)
{
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments))
    {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    return s_isMissed ? 1 : 0;
}
