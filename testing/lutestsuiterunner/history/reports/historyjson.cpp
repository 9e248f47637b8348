#include "testing/lutestsuiterunner/history/reports/historyjson.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/lbencoding.h"

namespace Runner::History
{

namespace
{

using Json = nlohmann::ordered_json;
using LbEncoding::ToUtf8;

constexpr int c_Format = 1;

/// Runs are numbered from 1, the oldest first.
Json getRunReference(const SAnalysis& analysis, std::size_t run)
{
    return {{"number", run + 1}, {"name", ToUtf8(analysis.table.GetRun(run).label.name)}};
}

Json getSteps(const SAnalysis& analysis, const std::vector<SStep>& steps)
{
    Json list = Json::array();
    for (const SStep& step : steps)
    {
        list.push_back({{"run", getRunReference(analysis, step.index)},
                        {"interval", {step.first + 1, step.last + 1}},
                        {"before", step.before},
                        {"after", step.after},
                        {"bits", step.bits},
                        {"deviations", step.deviations}});
    }
    return list;
}

std::string getOutcomes(std::span<const EOutcome> outcomes)
{
    constexpr char c_Signs[] = {'-', 'P', 'F', 'C'};
    std::string text;
    for (const EOutcome outcome : outcomes)
    {
        text += c_Signs[static_cast<std::size_t>(outcome)];
    }
    return text;
}

Json getFinding(const SAnalysis& analysis, const SFinding& finding)
{
    const SCaseFindings& findings = *finding.findings;
    const SCaseName& name = analysis.table.GetName(findings.caseIndex);
    Json json = {{"class", ToUtf8(name.className)},
                 {"case", ToUtf8(name.caseName)},
                 {"since", getRunReference(analysis, finding.beginning.index)},
                 {"interval", {finding.beginning.first + 1, finding.beginning.last + 1}},
                 {"outcomes", getOutcomes(analysis.table.GetOutcomes(findings.caseIndex))}};
    if (findings.outcomes.flaky)
    {
        const SFlakiness& flaky = *findings.outcomes.flaky;
        json["flaky"] = {{"returns", flaky.returns},
                         {"failures", flaky.failures},
                         {"runs", flaky.runs},
                         {"sameBuild", flaky.isProven}};
    }
    if (!findings.times.empty())
    {
        json["seconds"] = getSteps(analysis, findings.times);
    }
    if (!findings.memory.empty())
    {
        json["memory"] = getSteps(analysis, findings.memory);
    }
    if (findings.allocations)
    {
        json["allocations"] = {{"run", getRunReference(analysis, findings.allocations->index)},
                               {"before", findings.allocations->before},
                               {"after", findings.allocations->after}};
    }
    return json;
}

Json getRuns(const SAnalysis& analysis)
{
    Json runs = Json::array();
    for (std::size_t index = 0; index < analysis.table.GetRunCount(); ++index)
    {
        const SRun& run = analysis.table.GetRun(index);
        double seconds = 0.0;
        std::size_t failed = 0;
        for (const SCell& cell : run.cells)
        {
            seconds += cell.measured.seconds;
            failed += cell.measured.HasVerdict() && !cell.measured.HasPassed() ? 1 : 0;
        }
        runs.push_back({{"number", index + 1},
                        {"name", ToUtf8(run.label.name)},
                        {"begin", ToUtf8(run.label.begin)},
                        {"build", ToUtf8(run.label.build)},
                        {"machine", ToUtf8(run.label.machine)},
                        {"cases", run.cells.size()},
                        {"failed", failed},
                        {"seconds", seconds},
                        {"tempo", analysis.steps.tempo[index]}});
    }
    return runs;
}

/// The value of each run: null if the case was not measured in it.
template<typename T>
Json getValues(std::span<const EOutcome> outcomes, std::span<const T> values, T unknown)
{
    Json list = Json::array();
    for (std::size_t run = 0; run < values.size(); ++run)
    {
        const bool isMeasured = outcomes[run] == EOutcome::Passed || outcomes[run] == EOutcome::Failed;
        list.push_back(isMeasured && values[run] != unknown ? Json(values[run]) : Json());
    }
    return list;
}

Json getSeries(const SAnalysis& analysis, std::uint32_t caseIndex)
{
    constexpr float c_NoTime = -1.0F;
    const CTable& table = analysis.table;
    const SCaseName& name = table.GetName(caseIndex);
    const std::span<const EOutcome> outcomes = table.GetOutcomes(caseIndex);
    return {{"class", ToUtf8(name.className)},
            {"case", ToUtf8(name.caseName)},
            {"outcomes", getOutcomes(outcomes)},
            {"seconds", getValues(outcomes, table.GetSeconds(caseIndex), c_NoTime)},
            {"memory", getValues(outcomes, table.GetMemory(caseIndex), std::uint64_t{0})},
            {"allocations", getValues(outcomes, table.GetAllocations(caseIndex), c_UnknownCount)}};
}

Json getAnalysis(const SAnalysis& analysis, std::size_t newest, const std::vector<std::uint32_t>& shown)
{
    Json json = {{"configuration", ToUtf8(analysis.configuration)}};
    json["method"] = {{"alarmRate", analysis.rules.alarmRate},  {"smallestChange", analysis.rules.smallestChange},
                      {"series", analysis.steps.seriesCount},   {"tests", analysis.steps.testCount},
                      {"bits", analysis.steps.thresholds.bits}, {"deviations", analysis.steps.thresholds.deviations},
                      {"shuffles", analysis.steps.shuffleCount}};
    json["reshuffled"] = {{"archives", analysis.steps.check.archives},
                          {"seed", analysis.rules.checkSeed},
                          {"alarms", analysis.steps.check.alarms},
                          {"archivesWithAlarm", analysis.steps.check.archivesWithAlarm}};
    json["whole"] = getSteps(analysis, analysis.steps.whole);
    Json counts = Json::object();
    Json lists = Json::object();
    for (const SFindingKind& kind : GetFindingKinds())
    {
        Json list = Json::array();
        for (const SFinding& finding : GetFindings(analysis, kind, newest))
        {
            list.push_back(getFinding(analysis, finding));
        }
        counts[kind.name] = list.size();
        lists[kind.name] = std::move(list);
    }
    json["counts"] = std::move(counts);
    json["findings"] = std::move(lists);
    for (const std::uint32_t caseIndex : shown)
    {
        json["cases"].push_back(getSeries(analysis, caseIndex));
    }
    json["runs"] = getRuns(analysis);
    return json;
}

Json getGate(const SGateResult& result)
{
    Json cases = Json::array();
    for (const std::wstring& line : result.cases)
    {
        cases.push_back(ToUtf8(line));
    }
    return {{"rule", ToUtf8(result.gate.rule)}, {"count", result.count}, {"holds", result.holds}, {"cases", cases}};
}

} // namespace

std::string MakeJson(const std::vector<SAnalysis>& analyses, const SGateResults& gates, std::size_t newest,
                     const std::vector<std::uint32_t>& shown)
{
    Json json = {{"format", c_Format}};
    json["configurations"] = Json::array();
    for (const SAnalysis& analysis : analyses)
    {
        json["configurations"].push_back(getAnalysis(analysis, newest, shown));
    }
    json["gates"] = Json::array();
    for (const SGateResult& gate : gates.results)
    {
        json["gates"].push_back(getGate(gate));
    }
    json["unreadable"] = Json::array();
    for (const std::wstring& name : gates.unreadable)
    {
        json["unreadable"].push_back(ToUtf8(name));
    }
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace Runner::History
