#include "testing/lutestsuiterunner/reports/summary.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/model/names.h"
#include "testing/lutestsuiterunner/model/skips.h"
#include "testing/lutestsuiterunner/model/textescape.h"
#include "testing/lutestsuiterunner/model/textlines.h"
#include "testing/lutestsuiterunner/reports/casenotes.h"
#include "testing/lutestsuiterunner/reports/processlists.h"
#include "testing/lutestsuiterunner/reports/redreasons.h"
#include "testing/lutestsuiterunner/reports/wholefile.h"

namespace Runner
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr double c_SecondsPerNanosecond = 1e-9;
constexpr std::size_t c_SlowestShown = 10;

Json toJson(const std::wstring& text)
{
    return ToEscapedUtf8(text);
}

const char* getStateName(const CRunState& state)
{
    return state.IsCanceled() ? "canceled" : state.IsEnded() ? "ended" : "incomplete";
}

Json describeCounts(const CRunState& state)
{
    const SVerdictCounts counts = state.CountVerdicts();
    return {{"planned", counts.planned},         {"missing", counts.missing},
            {"passed", counts.passed},           {"flaky", counts.flaky},
            {"failed", counts.failed},           {"failedShared", counts.failedShared},
            {"quarantined", counts.quarantined}, {"quarantinedFailed", counts.quarantinedFailed},
            {"skipped", CountSkipped(state)}};
}

Json describeName(const SPlan& plan, std::uint32_t caseIndex)
{
    const SPlannedCase& planned = plan.cases[caseIndex];
    const LuTestSuite::SUnitTest& unitTest = plan.unitTests[planned.unitTest];
    const LuTestSuite::STestCase& testCase = unitTest.cases[planned.testCase];
    Json json = {{"folder", toJson(GetRelativeFolder(plan, unitTest.dataDirectory))},
                 {"class", toJson(unitTest.className)},
                 {"name", toJson(testCase.name)}};
    if (plan.params.repetitions > 1)
    {
        json["repetition"] = planned.repetition + 1;
    }
    if (!testCase.dataSetFile.empty())
    {
        json["file"] = toJson(testCase.dataSetFile);
    }
    return json;
}

/// The number of cases that ended in the same process before the attempt, and the file that names them; without a file,
/// the notes name all of them.
Json describePredecessors(const CRunState& state, const SAttempt& attempt)
{
    const std::size_t count = state.GetPredecessors(attempt).size();
    Json json = {{"count", count}};
    if (count > c_MostEarlierCases)
    {
        json["file"] = toJson(GetProcessListName(attempt.process));
    }
    return json;
}

/// Describes a case that did not simply pass.
Json describeCase(const CRunState& state, std::uint32_t caseIndex)
{
    Json json = describeName(state.GetPlan(), caseIndex);
    json["verdict"] = GetName(state.GetVerdict(caseIndex));
    json["quarantined"] = state.GetPlan().cases[caseIndex].isQuarantined;
    json["attempts"] = state.GetAttempts(caseIndex).size();
    if (const SAttempt* const reported = state.GetReported(caseIndex))
    {
        json["result"] = GetName(reported->result.info.result);
        json["end"] = GetName(reported->result.end);
        json["seconds"] = static_cast<double>(reported->result.info.time) * c_SecondsPerNanosecond;
        json["messages"] = toJson(reported->result.info.messages);
        json["stacks"] = toJson(reported->result.stacks);
        if (!reported->result.core.empty())
        {
            json["core"] = toJson(reported->result.core);
        }
    }
    if (state.GetVerdict(caseIndex) == EVerdict::FailedShared)
    {
        json["predecessors"] = describePredecessors(state, *state.GetReported(caseIndex));
    }
    json["notes"] = Json::array();
    for (const std::wstring& note : GetCaseNotes(state, caseIndex))
    {
        json["notes"].push_back(toJson(note));
    }
    return json;
}

Json describeNotable(const CRunState& state)
{
    Json list = Json::array();
    for (std::uint32_t index = 0; index < state.GetPlan().cases.size(); ++index)
    {
        const EVerdict verdict = state.GetVerdict(index);
        if (verdict != EVerdict::Missing && verdict != EVerdict::Passed)
        {
            list.push_back(describeCase(state, index));
        }
    }
    return list;
}

Json describeNames(const SPlan& plan, const std::vector<std::uint32_t>& cases)
{
    Json list = Json::array();
    for (const std::uint32_t index : cases)
    {
        list.push_back(describeName(plan, index));
    }
    return list;
}

Json describeOpen(const CRunState& state, std::uint32_t caseIndex, bool isInterrupted)
{
    Json json = describeName(state.GetPlan(), caseIndex);
    json["attempt"] = state.GetAttempts(caseIndex).size();
    json["interrupted"] = isInterrupted;
    return json;
}

Json describeOpen(const CRunState& state, const SOpenCases& open)
{
    Json list = Json::array();
    for (const auto& [index, note] : open.interrupted)
    {
        Json json = describeOpen(state, index, /*isInterrupted*/ true);
        if (!note.empty())
        {
            json["hostMessages"] = toJson(note);
        }
        list.push_back(std::move(json));
    }
    for (const std::uint32_t index : open.canceled)
    {
        const std::uint64_t time = state.GetAttempts(index).back().result.info.time;
        Json json = describeOpen(state, index, /*isInterrupted*/ true);
        json["canceled"] = true;
        json["seconds"] = static_cast<double>(time) * c_SecondsPerNanosecond;
        list.push_back(std::move(json));
    }
    for (const std::uint32_t index : open.running)
    {
        list.push_back(describeOpen(state, index, /*isInterrupted*/ false));
    }
    return list;
}

Json describeSlowest(const CRunState& state)
{
    std::vector<std::pair<std::uint64_t, std::uint32_t>> times;
    for (std::uint32_t index = 0; index < state.GetPlan().cases.size(); ++index)
    {
        if (const SAttempt* const reported = state.GetReported(index))
        {
            times.emplace_back(reported->result.info.time, index);
        }
    }
    const std::size_t shown = std::min(times.size(), c_SlowestShown);
    std::ranges::partial_sort(
        times, times.begin() + static_cast<std::ptrdiff_t>(shown),
        [](const auto& a, const auto& b) { return a.first != b.first ? a.first > b.first : a.second < b.second; });
    times.resize(shown);
    Json list = Json::array();
    for (const auto& [time, index] : times)
    {
        Json json = describeName(state.GetPlan(), index);
        json["seconds"] = static_cast<double>(time) * c_SecondsPerNanosecond;
        list.push_back(std::move(json));
    }
    return list;
}

std::vector<std::wstring> readLosses(const std::wstring& folder)
{
    const std::wstring path = GetLossesPath(folder);
    return LbFileSystem::IsFile(path) ? SplitLines(LbEncoding::FromUtf8(LbFileSystem::ReadFile8Bit(path)))
                                      : std::vector<std::wstring>();
}

} // namespace

std::wstring GetLossesPath(const std::wstring& folder)
{
    return LbPath::WithSeparator(folder + c_TasksFolderName) + L"losses.txt";
}

std::string MakeSummary(const CRunState& state, const std::vector<std::wstring>& losses, const SOpenCases& open)
{
    const SPlan& plan = state.GetPlan();
    Json json = {{"format", 1},
                 {"green", state.IsGreen()},
                 {"state", getStateName(state)},
                 {"shard", {{"number", plan.shard.number}, {"count", plan.shard.count}}},
                 {"dataDirectory", toJson(plan.dataDirectory)},
                 {"machine", toJson(plan.origin.machine)},
                 {"start", toJson(state.GetStartTime())},
                 {"end", toJson(state.GetEndTime())},
                 {"seconds", static_cast<double>(state.GetTotalTime()) * c_SecondsPerNanosecond},
                 {"counts", describeCounts(state)}};
    if (state.IsCanceled())
    {
        json["cancelReason"] = toJson(state.GetCancelReason());
    }
    json["problems"] = Json::array();
    for (const std::wstring& reason : FindRedReasons(state))
    {
        json["problems"].push_back(toJson(reason));
    }
    for (const std::wstring& loss : losses)
    {
        json["losses"].push_back(toJson(loss));
    }
    json["disabled"] = plan.disabled.size();
    json["cases"] = describeNotable(state);
    json["missing"] = describeNames(plan, state.GetMissingCases());
    json["open"] = describeOpen(state, open);
    json["slowest"] = describeSlowest(state);
    return json.dump(1) + "\n";
}

void WriteSummary(const std::wstring& folder, const CRunState& state, const SOpenCases& open)
{
    const std::string summary = MakeSummary(state, readLosses(folder), open);
    WriteWholeFile(folder + c_SummaryName,
                   [&summary](LuStreamWriteBinaryFile& file) { file.Write(summary.data(), summary.size()); });
}

} // namespace Runner
