#include "testing/lutestsuiterunner/execution/quarantine.h"

#include <algorithm>
#include <map>
#include <utility>

#include <nlohmann/json.hpp>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lustream.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuiterunner/model/skips.h"
#include "testing/lutestsuiterunner/model/textescape.h"

namespace Runner
{

namespace
{

using UnitTests = std::vector<LuTestSuite::SUnitTest>;

constexpr const wchar_t* c_FileName = L"quarantine.json";

std::wstring trim(std::wstring line)
{
    constexpr const wchar_t* c_Blanks = L" \t\r";
    line.erase(0, std::min(line.find_first_not_of(c_Blanks), line.size()));
    line.erase(line.find_last_not_of(c_Blanks) + 1);
    return line;
}

struct SPatternLine
{
    std::wstring pattern;
    std::uint32_t number; ///< of the line, from 1
};

std::vector<SPatternLine> readPatterns(const std::wstring& path)
{
    std::vector<SPatternLine> patterns;
    std::uint32_t number = 0;
    std::wstring text = LbEncoding::FromUtf8(LbFileSystem::ReadFile8Bit(path)) + L"\n";
    if (text.starts_with(L'\xFEFF'))
    {
        text.erase(0, 1);
    }
    for (std::size_t start = 0, end = 0; (end = text.find(L'\n', start)) != std::wstring::npos; start = end + 1)
    {
        ++number;
        std::wstring line = trim(text.substr(start, end - start));
        if (!line.empty() && !line.starts_with(L'#'))
        {
            patterns.push_back({std::move(line), number});
        }
    }
    return patterns;
}

UnitTests filter(UnitTests unitTests, const std::vector<std::wstring>& patterns, bool isPlain)
{
    LuTestSuiteUtils::FilterTestCases(unitTests, L"", patterns, {}, LuTestSuiteRun::c_NoLimit, isPlain);
    return unitTests;
}

/// Tells for each case of each unit test whether `kept` contains it. Both lists have the same order.
std::vector<std::vector<bool>> findKept(const UnitTests& all, const UnitTests& kept)
{
    std::vector<std::vector<bool>> isKept;
    auto unit = kept.begin();
    for (const LuTestSuite::SUnitTest& unitTest : all)
    {
        std::vector<bool>& row = isKept.emplace_back(unitTest.cases.size(), false);
        if (unit == kept.end() || unit->className != unitTest.className ||
            unit->dataDirectory != unitTest.dataDirectory)
        {
            continue;
        }
        auto next = unit->cases.begin();
        for (std::size_t index = 0; index < row.size() && next != unit->cases.end(); ++index)
        {
            row[index] = next->name == unitTest.cases[index].name;
            next += row[index] ? 1 : 0;
        }
        ++unit;
    }
    return isKept;
}

std::vector<std::uint32_t> findCases(const SPlan& plan, const std::vector<std::wstring>& patterns, bool isPlain)
{
    const auto isKept = findKept(plan.unitTests, filter(plan.unitTests, patterns, isPlain));
    std::vector<std::uint32_t> cases;
    for (std::uint32_t index = 0; index < plan.cases.size(); ++index)
    {
        if (isKept[plan.cases[index].unitTest][plan.cases[index].testCase])
        {
            cases.push_back(index);
        }
    }
    return cases;
}

/// Throws LbException if the file is damaged.
nlohmann::json readRecord(const std::wstring& path)
{
    auto record = nlohmann::json::parse(LbFileSystem::ReadFile8Bit(path), nullptr, false);
    if (!record.is_object() || !record.contains("entries") || !record["entries"].is_array())
    {
        throw LbException(LbFormat(L"Die Datei %s ist beschädigt", path));
    }
    return record;
}

/// The numbers of passed runs by pattern; the run `runId` itself does not count.
std::map<std::wstring, std::uint32_t> readPassedRuns(const std::wstring& folder, const std::string& runId)
{
    std::map<std::wstring, std::uint32_t> passedRuns;
    if (folder.empty() || !LbFileSystem::IsFile(folder + c_FileName))
    {
        return passedRuns;
    }
    const nlohmann::json record = readRecord(folder + c_FileName);
    const char* const number = record.value("run", std::string()) == runId ? "earlierRuns" : "passedRuns";
    for (const auto& entry : record["entries"])
    {
        if (entry.is_object())
        {
            passedRuns[FromEscapedUtf8(entry.value("pattern", std::string()))] = entry.value(number, 0U);
        }
    }
    return passedRuns;
}

/// Empty if no case ran.
std::optional<bool> havePassed(const std::vector<std::uint32_t>& cases, const CRunState& state)
{
    std::optional<bool> havePassed;
    for (const std::uint32_t index : cases)
    {
        const EVerdict verdict = state.GetVerdict(index);
        if (verdict != EVerdict::Missing && !FindSkipReason(state, index))
        {
            havePassed = havePassed.value_or(true) && verdict == EVerdict::Passed;
        }
    }
    return havePassed;
}

} // namespace

Quarantine ReadQuarantine(const std::wstring& path, const LuTestSuiteSetup& setup, SPlan& plan)
{
    Quarantine quarantine;
    for (const auto& [pattern, number] : readPatterns(path))
    {
        SQuarantineEntry& entry = quarantine.emplace_back(SQuarantineEntry{pattern, {}});
        try
        {
            entry.cases = findCases(plan, {pattern}, setup.noRegex);
        }
        catch (const std::wstring& problem)
        {
            throw LbFormat(L"%s, Zeile %u: %s", path, number, problem);
        }
        for (const std::uint32_t index : entry.cases)
        {
            plan.cases[index].isQuarantined = true;
        }
    }
    return quarantine;
}

std::vector<std::wstring> FindIdleEntries(const Quarantine& quarantine)
{
    std::vector<std::wstring> patterns;
    for (const SQuarantineEntry& entry : quarantine)
    {
        if (entry.cases.empty())
        {
            patterns.push_back(entry.pattern);
        }
    }
    return patterns;
}

void CountPassedRuns(Quarantine& quarantine, const CRunState& state, const std::wstring& earlierFolder)
{
    const std::map<std::wstring, std::uint32_t> earlier = readPassedRuns(earlierFolder, state.GetPlan().runId);
    for (SQuarantineEntry& entry : quarantine)
    {
        const auto found = earlier.find(entry.pattern);
        entry.earlierRuns = found == earlier.end() ? 0 : found->second;
        const std::optional<bool> passed = havePassed(entry.cases, state);
        entry.passedRuns = !passed ? entry.earlierRuns : *passed ? entry.earlierRuns + 1 : 0;
    }
}

void WritePassedRuns(const Quarantine& quarantine, const std::string& runId, const std::wstring& folder)
{
    nlohmann::ordered_json entries = nlohmann::ordered_json::array();
    for (const SQuarantineEntry& entry : quarantine)
    {
        entries.push_back({{"pattern", ToEscapedUtf8(entry.pattern)},
                           {"passedRuns", entry.passedRuns},
                           {"earlierRuns", entry.earlierRuns}});
    }
    const std::string text = nlohmann::ordered_json{{"run", runId}, {"entries", std::move(entries)}}.dump(2) + "\n";
    LbFileSystem::WriteWhole(folder + c_FileName, [&text](const std::wstring& place) {
        LuStreamWriteBinaryFile file(place);
        file.Write(text.data(), text.size());
        file.Close();
    });
}

} // namespace Runner
