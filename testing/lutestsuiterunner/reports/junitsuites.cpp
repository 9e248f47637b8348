#include "testing/lutestsuiterunner/reports/junitsuites.h"

namespace Runner
{

CJunitSuites::CJunitSuites(const SPlan& plan) : m_names(plan)
{
    for (std::uint32_t index = 0; index < plan.cases.size(); ++index)
    {
        const LuTestSuite::SUnitTest& unitTest = plan.unitTests[plan.cases[index].unitTest];
        if (plan.cases[index].isInShard)
        {
            get(unitTest.className, unitTest.dataDirectory).cases.push_back(index);
        }
    }
    // Only shard 1 lists disabled cases, so that the reports of all shards together contain each of them once.
    for (const SDisabledCase& disabled : plan.disabled)
    {
        if (plan.shard.number == 1)
        {
            get(disabled.className, disabled.dataDirectory).disabled.push_back(&disabled);
        }
    }
}

SJunitSuite& CJunitSuites::get(const std::wstring& className, const std::wstring& dataDirectory)
{
    const auto [entry, isNew] = m_indices.try_emplace({className, dataDirectory}, m_suites.size());
    if (isNew)
    {
        m_suites.push_back({m_names.Get(className, dataDirectory), {}, {}});
    }
    return m_suites[entry->second];
}

} // namespace Runner
