#include "testing/lutestsuiterunner/reports/redreasons.h"

#include "base/lbformat.h"

namespace Runner
{

std::vector<std::uint32_t> FindRedFlakyCases(const CRunState& state)
{
    const SPlan& plan = state.GetPlan();
    if (plan.rules.isFlakyAllowed)
    {
        return {};
    }
    return state.FindCases([&](std::uint32_t index) {
        return !plan.cases[index].isQuarantined && state.GetVerdict(index) == EVerdict::Flaky;
    });
}

std::wstring DescribeRedFlakyCases(std::size_t count)
{
    return count == 1 ? std::wstring(L"Ein Testfall ist unzuverlässig; ohne '--allow-flaky' ist der Lauf rot")
                      : LbFormat(L"%u Testfälle sind unzuverlässig; ohne '--allow-flaky' ist der Lauf rot", count);
}

std::vector<std::wstring> FindRedReasons(const CRunState& state)
{
    std::vector<std::wstring> reasons;
    if (state.IsCanceled())
    {
        reasons.push_back(L"Der Lauf wurde abgebrochen: " + state.GetCancelReason());
    }
    else if (!state.IsEnded())
    {
        reasons.emplace_back(L"Der Lauf ist nicht beendet");
    }
    reasons.insert(reasons.end(), state.GetProblems().begin(), state.GetProblems().end());
    if (const std::uint32_t missing = state.CountVerdicts().missing; missing > 0 && reasons.empty())
    {
        reasons.push_back(missing == 1 ? std::wstring(L"Ein Testfall hat kein Ergebnis")
                                       : LbFormat(L"%u Testfälle haben kein Ergebnis", missing));
    }
    if (const std::size_t flaky = FindRedFlakyCases(state).size(); flaky > 0)
    {
        reasons.push_back(DescribeRedFlakyCases(flaky));
    }
    return reasons;
}

} // namespace Runner
