#include "testing/lutestsuiterunner/execution/previous.h"

#include <algorithm>

#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "testing/lutestsuiterunner/journal/folder.h"
#include "testing/lutestsuiterunner/journal/reader.h"

namespace Runner
{

CPrevious::CPrevious(const std::wstring& path)
{
    if (LbFileSystem::IsDirectory(path))
    {
        readRun(GetRunFolder(path));
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
    const auto found = m_cases.find(m_hasFolders ? GetCaseName(plan, caseIndex)
                                                 : unitTest.className + L":" + unitTest.cases[planned.testCase].name);
    return found == m_cases.end() ? std::nullopt : std::optional(found->second);
}

} // namespace Runner
