#include "testing/lutestsuiterunner/history/reports/caseseries.h"

#include <algorithm>

#include "base/lbencoding.h"
#include "base/lbformat.h"
#include "testing/lutestsuiterunner/history/reports/germantext.h"

namespace Runner::History
{

namespace
{

const wchar_t* getOutcomeName(EOutcome outcome)
{
    constexpr const wchar_t* c_Names[] = {L"nicht dabei", L"bestanden", L"fehlgeschlagen", L"ohne Ergebnis"};
    return c_Names[static_cast<std::size_t>(outcome)];
}

std::wstring describeRun(const CTable& table, std::uint32_t caseIndex, std::size_t run)
{
    const EOutcome outcome = table.GetOutcomes(caseIndex)[run];
    const bool isMeasured = outcome == EOutcome::Passed || outcome == EOutcome::Failed;
    const std::uint64_t memory = table.GetMemory(caseIndex)[run];
    const std::string time = isMeasured ? FormatSeconds(table.GetSeconds(caseIndex)[run]) : std::string();
    const std::string size = memory > 0 ? FormatBytes(static_cast<double>(memory)) : std::string();
    const SRunLabel& label = table.GetRun(run).label;
    return LbFormat(L"  %4u  %-19s  %-14s  %9s  %9s  %s\n", run + 1, label.begin, getOutcomeName(outcome),
                    LbEncoding::FromUtf8(time), LbEncoding::FromUtf8(size), label.name);
}

} // namespace

std::optional<std::uint32_t> FindCase(const std::vector<SCaseName>& names, const std::wstring& name)
{
    const auto found = std::ranges::find_if(
        names, [&name](const SCaseName& one) { return one.className + L":" + one.caseName == name; });
    return found == names.end() ? std::nullopt : std::optional(static_cast<std::uint32_t>(found - names.begin()));
}

std::wstring DescribeCase(const SAnalysis& analysis, std::uint32_t caseIndex)
{
    const CTable& table = analysis.table;
    if (std::ranges::count(table.GetOutcomes(caseIndex), EOutcome::Absent) ==
        static_cast<std::ptrdiff_t>(table.GetRunCount()))
    {
        return {};
    }
    const SCaseName& name = table.GetName(caseIndex);
    std::wstring text = LbFormat(L"%s:%s, %s\n", name.className, name.caseName, GetConfigurationName(analysis));
    for (std::size_t run = 0; run < table.GetRunCount(); ++run)
    {
        text += describeRun(table, caseIndex, run);
    }
    return text;
}

} // namespace Runner::History
