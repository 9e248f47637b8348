#include "benchmarks/support/limits.h"

#include <algorithm>
#include <cstdio>

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

} // namespace

void ReportMedian(benchmark::State& state, const std::string& name, std::vector<double> values)
{
    state.counters[name] = getMedian(std::move(values));
}

void HoldMedian(benchmark::State& state, const std::string& name, std::vector<double> values, double limit)
{
    const double median = getMedian(std::move(values));
    state.counters[name] = median;
    state.counters["limit"] = limit;
    if (median > limit)
    {
        s_isMissed = true;
        char text[200] = {};
        std::snprintf(text, sizeof(text), "%s is %.3g, the limit %.3g", name.c_str(), median, limit);
        state.SkipWithError(text);
    }
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
