#include "testing/lutestsuiterunner/execution/previous.h"

#include <algorithm>

#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "testing/lutestsuiterunner/history/analysis/robust.h"
#include "testing/lutestsuiterunner/history/archive/archivefolder.h"
#include "testing/lutestsuiterunner/journal/folder.h"
#include "testing/lutestsuiterunner/journal/reader.h"
#include "testing/lutestsuiterunner/journal/runfiles.h"

namespace Runner
{

namespace
{

using History::SRun;

/// Summarizes the newest runs of each case, by the case's name.
std::unordered_map<std::wstring, SPreviousCase> summarize(const std::vector<const SRun*>& runs,
                                                          const std::vector<History::SCaseName>& names)
{
    constexpr double c_NanosecondsPerSecond = 1e9;
    constexpr std::size_t c_MostTimes = 10;
    std::vector<std::vector<double>> times(names.size());
    std::unordered_map<std::wstring, SPreviousCase> cases;
    for (auto run = runs.rbegin(); run != runs.rend(); ++run)
    {
        for (const History::SCell& cell : (*run)->cells)
        {
            const History::SCaseName& name = names[cell.caseIndex];
            // Only the newest run of a case is inserted.
            cases.try_emplace(name.className + L":" + name.caseName, SPreviousCase{0, !cell.measured.HasPassed()});
            if (cell.measured.HasVerdict() && times[cell.caseIndex].size() < c_MostTimes)
            {
                times[cell.caseIndex].push_back(cell.measured.seconds);
            }
        }
    }
    for (std::size_t index = 0; index < names.size(); ++index)
    {
        if (!times[index].empty())
        {
            // Reports round short times to 0, but a time of 0 means an unknown time.
            const double median = History::TakeMedian(times[index]) * c_NanosecondsPerSecond;
            cases[names[index].className + L":" + names[index].caseName].time =
                std::max<std::uint64_t>(1, static_cast<std::uint64_t>(median));
        }
    }
    return cases;
}

} // namespace

CPrevious::CPrevious(const std::wstring& path)
{
    if (ContainsRun(GetRunFolder(path)))
    {
        readRun(GetRunFolder(path));
    }
    else if (LbFileSystem::IsDirectory(path))
    {
        readArchive(path);
    }
    else
    {
        readReport(path);
    }
}

void CPrevious::readRun(const std::wstring& folder)
{
    const std::unique_ptr<CRunState> state = LoadRun(folder);
    const SPlan& plan = state->GetPlan();
    for (std::uint32_t index = 0; index < plan.cases.size(); ++index)
    {
        const SAttempt* const attempt = state->GetReported(index);
        const EVerdict verdict = state->GetVerdict(index);
        // A case that never started belongs to another shard or was not run.
        if (!state->GetAttempts(index).empty())
        {
            m_cases[GetCaseName(plan, index)] = {attempt == nullptr ? 0 : attempt->result.info.time,
                                                 verdict != EVerdict::Passed && verdict != EVerdict::Flaky};
        }
    }
}

void CPrevious::readArchive(const std::wstring& directory)
{
    const History::SArchiveContent content = History::ReadArchive(directory);
    if (content.runs.empty())
    {
        throw LbFormat(L"Der Ordner %s enthält keinen Lauf", GetRunFolder(directory));
    }
    m_hasFolders = false;
    std::vector<const SRun*> all;
    std::map<std::wstring, std::vector<const SRun*>> configurations;
    for (const SRun& run : content.runs)
    {
        all.push_back(&run);
        configurations[run.label.configuration].push_back(&run);
    }
    m_cases = summarize(all, content.names);
    for (const auto& [configuration, runs] : configurations)
    {
        m_configurations[configuration] = summarize(runs, content.names);
    }
}

void CPrevious::readReport(const std::wstring& path)
{
    constexpr double c_NanosecondsPerSecond = 1e9;
    LuTestSuiteReport::SReportData data;
    if (!LuTestSuiteReport::LoadReportDataFromXMLFile(path, data))
    {
        throw LbFormat(L"Der frühere Lauf %s kann nicht gelesen werden", path);
    }
    m_hasFolders = false;
    for (const LuTestSuiteReport::SReportCase& one : data.Cases)
    {
        SPreviousCase& previous = m_cases[one.ClassName + L":" + one.CaseName];
        const bool hasFailed = one.Result != LuTestSuiteRun::ECaseRunResult::Ok;
        // The report rounds short times to 0, but a time of 0 means an interrupted case.
        const std::uint64_t least = hasFailed ? 0 : 1;
        previous.time = std::max({previous.time, static_cast<std::uint64_t>(one.Time * c_NanosecondsPerSecond), least});
        previous.hasFailed = previous.hasFailed || hasFailed;
    }
}

std::optional<SPreviousCase> CPrevious::Find(const SPlan& plan, std::uint32_t caseIndex) const
{
    const SPlannedCase& planned = plan.cases[caseIndex];
    const LuTestSuite::SUnitTest& unitTest = plan.unitTests[planned.unitTest];
    const auto configuration = m_configurations.find(plan.origin.buildConfiguration);
    const Cases& cases = configuration == m_configurations.end() ? m_cases : configuration->second;
    const auto found = cases.find(m_hasFolders ? GetCaseName(plan, caseIndex)
                                               : unitTest.className + L":" + unitTest.cases[planned.testCase].name);
    return found == cases.end() ? std::nullopt : std::optional(found->second);
}

} // namespace Runner
