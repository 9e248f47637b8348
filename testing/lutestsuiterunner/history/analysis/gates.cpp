#include "testing/lutestsuiterunner/history/analysis/gates.h"

#include <algorithm>

#include "base/lbencoding.h"
#include "base/lbformat.h"

namespace Runner::History
{

namespace
{

/// The kind of findings about the suite as a whole. It is not one of the kinds of findings about cases.
constexpr std::string_view c_WholeSlower = "whole-slower";

std::wstring getKindNames()
{
    std::wstring names;
    for (const SFindingKind& kind : GetFindingKinds())
    {
        names += LbEncoding::FromUtf8(kind.name) + L", ";
    }
    return names + LbEncoding::FromUtf8(c_WholeSlower);
}

bool isKind(const std::string& name)
{
    return name == c_WholeSlower ||
           std::ranges::any_of(GetFindingKinds(), [&](const SFindingKind& kind) { return name == kind.name; });
}

SGate::EComparison readComparison(const std::wstring& sign, const std::wstring& rule)
{
    if (sign == L"=")
    {
        return SGate::EComparison::Equal;
    }
    if (sign == L"<")
    {
        return SGate::EComparison::Less;
    }
    if (sign == L"<=")
    {
        return SGate::EComparison::LessOrEqual;
    }
    throw LbFormat(L"Die Bedingung '%s' hat nicht die Form NAME=ZAHL, NAME<ZAHL oder NAME<=ZAHL", rule);
}

std::wstring describe(const SAnalysis& analysis, const SFinding& finding, bool withConfiguration)
{
    const SCaseName& name = analysis.table.GetName(finding.findings->caseIndex);
    std::wstring line = name.className + L":" + name.caseName;
    line += LbFormat(L" (seit %s", analysis.table.GetRun(finding.beginning.index).label.name);
    if (withConfiguration)
    {
        line += L", " + GetConfigurationName(analysis);
    }
    return line + L")";
}

void addWhole(const SAnalysis& analysis, std::size_t earliest, SGateResult& result)
{
    if (!analysis.steps.whole.empty() && analysis.steps.whole.back().IsUp() &&
        analysis.steps.whole.back().last >= earliest)
    {
        const std::wstring& run = analysis.table.GetRun(analysis.steps.whole.back().index).label.name;
        result.cases.push_back(LbFormat(L"alle Fälle, %s (seit %s)", GetConfigurationName(analysis), run));
    }
}

} // namespace

bool SGate::Holds(std::size_t count) const
{
    switch (comparison)
    {
    case EComparison::Equal:
        return count == limit;
    case EComparison::Less:
        return count < limit;
    default:
        return count <= limit;
    }
}

SGate ReadGate(const std::wstring& rule)
{
    constexpr std::size_t c_MostDigits = 9;
    const std::size_t sign = std::min(rule.find_first_of(L"=<"), rule.size());
    const std::size_t number = std::min(rule.find_first_not_of(L"=<", sign), rule.size());
    SGate gate;
    gate.rule = rule;
    gate.kind = LbEncoding::ToUtf8(rule.substr(0, sign));
    gate.comparison = readComparison(rule.substr(sign, number - sign), rule);
    const std::wstring digits = rule.substr(number);
    if (digits.empty() || digits.size() > c_MostDigits || digits.find_first_not_of(L"0123456789") != std::wstring::npos)
    {
        throw LbFormat(L"Die Bedingung '%s' endet nicht mit einer Zahl", rule);
    }
    gate.limit = std::stoul(digits);
    if (!isKind(gate.kind))
    {
        throw LbFormat(L"Die Bedingung '%s' nennt nichts Bekanntes; bekannt sind %s", rule, getKindNames());
    }
    return gate;
}

SGateResult CheckGate(const SGate& gate, const std::vector<SAnalysis>& analyses, std::size_t newest)
{
    SGateResult result;
    result.gate = gate;
    for (const SAnalysis& analysis : analyses)
    {
        if (gate.kind == c_WholeSlower)
        {
            const std::size_t runCount = analysis.table.GetRunCount();
            addWhole(analysis, newest == 0 || newest > runCount ? 0 : runCount - newest, result);
        }
        for (const SFindingKind& kind : GetFindingKinds())
        {
            if (gate.kind != kind.name)
            {
                continue;
            }
            for (const SFinding& finding : GetFindings(analysis, kind, newest))
            {
                result.cases.push_back(describe(analysis, finding, analyses.size() > 1));
            }
        }
    }
    result.count = result.cases.size();
    result.holds = gate.Holds(result.count);
    return result;
}

SGateResults CheckGates(const std::vector<SGate>& gates, const std::vector<SAnalysis>& analyses, std::size_t newest,
                        std::vector<std::wstring> unreadable)
{
    SGateResults all;
    for (const SGate& gate : gates)
    {
        all.results.push_back(CheckGate(gate, analyses, newest));
        all.results.back().holds = all.results.back().holds && unreadable.empty();
    }
    all.unreadable = std::move(unreadable);
    return all;
}

} // namespace Runner::History
