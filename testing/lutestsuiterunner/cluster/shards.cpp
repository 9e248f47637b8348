#include "testing/lutestsuiterunner/cluster/shards.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <numeric>
#include <utility>

#include <nlohmann/json.hpp>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/execution/order.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/folder.h"
#include "testing/lutestsuiterunner/reports/wholefile.h"

namespace Runner
{

namespace
{

using Json = nlohmann::ordered_json;

using Cases = std::vector<std::uint32_t>;

/// The sizes of the data files by case index; 0 for a case without one.
std::vector<std::int64_t> getDataSizes(const SPlan& plan)
{
    // Each query may go to a file server. With more cases than this, the shards are balanced well enough without sizes.
    constexpr std::size_t c_MostQuestions = 100'000;
    std::vector<std::int64_t> sizes(plan.cases.size(), 0);
    for (std::uint32_t index = 0; index < plan.cases.size() && plan.cases.size() <= c_MostQuestions; ++index)
    {
        const SPlannedCase& planned = plan.cases[index];
        if (planned.repetition > 0)
        {
            sizes[index] = sizes[index - planned.repetition];
            continue;
        }
        const LuTestSuite::STestCase& testCase = plan.unitTests[planned.unitTest].cases[planned.testCase];
        const auto status = testCase.dataSetFile.empty() ? std::nullopt : LbOs::GetFileStatus(testCase.dataSetFile);
        sizes[index] = status ? status->size : 0;
    }
    return sizes;
}

/// Sorts the cases of each class by the size of their data, so that cases that probably take equally long are
/// neighbours.
Cases sortBySize(const SPlan& plan)
{
    const std::vector<std::int64_t> sizes = getDataSizes(plan);
    Cases cases(plan.cases.size());
    std::iota(cases.begin(), cases.end(), 0U);
    std::ranges::stable_sort(cases, [&](std::uint32_t a, std::uint32_t b) {
        return std::pair(plan.cases[a].unitTest, -sizes[a]) < std::pair(plan.cases[b].unitTest, -sizes[b]);
    });
    return cases;
}

/// Returns the shard of each place. Reverses the direction after each round, so that no shard gets the first case of
/// every round.
std::vector<std::uint32_t> dealInTurns(std::size_t count, std::uint32_t shards)
{
    std::vector<std::uint32_t> owners;
    for (std::size_t place = 0; place < count; ++place)
    {
        const auto turn = static_cast<std::uint32_t>(place % shards);
        owners.push_back(place / shards % 2 == 0 ? turn : shards - 1 - turn);
    }
    return owners;
}

Cases sortByTime(const SPlan& plan)
{
    Cases cases(plan.cases.size());
    std::iota(cases.begin(), cases.end(), 0U);
    std::ranges::stable_sort(cases, std::greater(),
                             [&plan](std::uint32_t index) { return plan.cases[index].expected; });
    return cases;
}

std::vector<std::uint32_t> dealByTime(const SPlan& plan, const Cases& cases, std::uint32_t shards)
{
    std::vector<std::uint64_t> times(cases.size());
    std::ranges::transform(cases, times.begin(), [&plan](std::uint32_t index) {
        return std::max<std::uint64_t>(1, plan.cases[index].expected);
    });
    return DealByTime(times, shards);
}

/// The unit test without its cases.
LuTestSuite::SUnitTest withoutCases(const LuTestSuite::SUnitTest& unitTest)
{
    return {unitTest.className, unitTest.dataDirectory, {}, unitTest.contacts, unitTest.moduleName};
}

/// A plan with only those fields of `whole` that do not depend on its cases.
SPlan makeHead(const SPlan& whole)
{
    SPlan plan;
    plan.runId = whole.runId;
    plan.workingDirectory = whole.workingDirectory;
    plan.dataDirectory = whole.dataDirectory;
    plan.params = whole.params;
    plan.rules = whole.rules;
    plan.origin = whole.origin;
    return plan;
}

/// Copies the unit tests and cases of these case runs into `plan`. For each of these cases, returns the index of its
/// first run in the whole plan.
std::vector<std::uint32_t> copyCases(const SPlan& whole, const std::vector<std::uint32_t>& cases, SPlan& plan)
{
    std::vector<std::uint32_t> firstRuns;
    const SPlannedCase* last = nullptr;
    for (const std::uint32_t index : cases)
    {
        const SPlannedCase& planned = whole.cases[index];
        const bool isSameUnitTest = last != nullptr && last->unitTest == planned.unitTest;
        if (!isSameUnitTest)
        {
            plan.unitTests.push_back(withoutCases(whole.unitTests[planned.unitTest]));
        }
        if (!isSameUnitTest || last->testCase != planned.testCase)
        {
            plan.unitTests.back().cases.push_back(whole.unitTests[planned.unitTest].cases[planned.testCase]);
            firstRuns.push_back(index - planned.repetition);
        }
        last = &planned;
    }
    return firstRuns;
}

Json describe(const SShardEntry& entry)
{
    return {{"digest", entry.digest}, {"cases", entry.cases}, {"places", entry.places}};
}

void writeList(const std::wstring& folder, const std::string& planDigest, const Json& shards,
               const std::vector<std::wstring>& problems)
{
    Json texts = Json::array();
    std::ranges::transform(problems, std::back_inserter(texts), LbEncoding::ToUtf8);
    const std::string bytes =
        Json{{"format", 1}, {"plan", planDigest}, {"shards", shards}, {"problems", texts}}.dump(1) + "\n";
    WriteWholeFile(folder + c_ShardsName,
                   [&bytes](LuStreamWriteBinaryFile& file) { file.Write(bytes.data(), bytes.size()); });
}

/// Calls `read` with the content of the list. Throws LbException with a German message.
template<typename Read>
auto readList(const std::wstring& folder, const Read& read)
{
    const std::wstring path = folder + c_ShardsName;
    if (!LbFileSystem::IsFile(path))
    {
        throw LbException(LbFormat(L"Der Ordner %s enthält keinen verteilten Lauf", folder));
    }
    try
    {
        return read(Json::parse(LbFileSystem::ReadFile8Bit(path)));
    }
    catch (const Json::exception&)
    {
        throw LbException(LbFormat(L"Die Liste der Teile %s ist nicht lesbar", path));
    }
}

} // namespace

std::vector<std::vector<std::uint32_t>> DealOut(const SPlan& plan, std::uint32_t shards)
{
    const bool isTimed =
        std::ranges::any_of(plan.cases, [](const SPlannedCase& planned) { return planned.expected != 0; });
    const Cases cases = isTimed ? sortByTime(plan) : sortBySize(plan);
    const std::vector<std::uint32_t> owners =
        isTimed ? dealByTime(plan, cases, shards) : dealInTurns(cases.size(), shards);
    std::vector<std::vector<std::uint32_t>> lists(shards);
    for (std::size_t place = 0; place < cases.size(); ++place)
    {
        lists[owners[place]].push_back(cases[place]);
    }
    for (std::vector<std::uint32_t>& list : lists)
    {
        std::ranges::sort(list);
    }
    return lists;
}

SPlan MakeShardPlan(const SPlan& whole, const std::vector<std::uint32_t>& cases, const SShard& shard,
                    std::vector<std::wstring> arguments)
{
    SPlan plan = makeHead(whole);
    plan.arguments = std::move(arguments);
    plan.shard = shard;
    plan.part = SShardPlace{whole.digest, {}};
    const std::vector<std::uint32_t> firstRuns = copyCases(whole, cases, plan);
    plan.cases = PlanCases(plan.unitTests, plan.params.repetitions);
    auto next = cases.begin();
    for (std::uint32_t index = 0; index < plan.cases.size(); ++index)
    {
        SPlannedCase& planned = plan.cases[index];
        const std::uint32_t inWhole = firstRuns[index / plan.params.repetitions] + planned.repetition;
        planned.isInShard = next != cases.end() && *next == inWhole;
        next += planned.isInShard ? 1 : 0;
        planned.isQuarantined = whole.cases[inWhole].isQuarantined;
        planned.expected = whole.cases[inWhole].expected;
        plan.part->indices.push_back(inWhole);
    }
    return plan;
}

void WriteShards(const std::wstring& folder, SPlan& plan, std::uint32_t shards,
                 const std::vector<std::wstring>& taskOptions, const std::vector<std::wstring>& problems)
{
    plan.partCount = shards;
    plan.digest = BeginPlan(folder, plan);
    Json list = Json::array();
    const std::vector<std::vector<std::uint32_t>> cases = DealOut(plan, shards);
    for (std::uint32_t number = 1; number <= shards; ++number)
    {
        std::vector<std::wstring> arguments = {L"run", L"--planned", LbFormat(L"--shard=%u/%u", number, shards)};
        arguments.insert(arguments.end(), taskOptions.begin(), taskOptions.end());
        const std::vector<std::uint32_t>& own = cases[number - 1];
        const SPlan part = MakeShardPlan(plan, own, {number, shards}, std::move(arguments));
        const std::string digest = BeginPlan(folder + GetShardFolderName(number), part);
        list.push_back(
            describe({digest, static_cast<std::uint32_t>(own.size()), static_cast<std::uint32_t>(part.cases.size())}));
    }
    LbOs::MakeDirectory(folder + c_TasksFolderName);
    writeList(folder, plan.digest, list, problems);
}

void ForgetShards(const std::wstring& folder)
{
    LbOs::RemoveFile(folder + c_ShardsName);
}

std::vector<SShardEntry> ReadShards(const std::wstring& folder)
{
    return readList(folder, [](const Json& list) {
        std::vector<SShardEntry> entries;
        for (const Json& shard : list.at("shards"))
        {
            entries.push_back({shard.at("digest"), shard.at("cases"), shard.at("places")});
        }
        return entries;
    });
}

std::vector<std::wstring> ReadPlannedProblems(const std::wstring& folder)
{
    return readList(folder, [](const Json& list) {
        std::vector<std::wstring> problems;
        for (const Json& problem : list.value("problems", Json::array()))
        {
            problems.push_back(LbEncoding::FromUtf8(problem.get<std::string>()));
        }
        return problems;
    });
}

} // namespace Runner
