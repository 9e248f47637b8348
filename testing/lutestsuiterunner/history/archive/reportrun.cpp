/// Reads the runs of an archive from XML reports.

#include "testing/lutestsuite/lutestsuitereport.h"
#include "testing/lutestsuiterunner/history/archive/recordedrun.h"

namespace Runner::History
{

std::wstring GetBuildName(const LuTestSuiteUtils::SSvnInfo* svn, const LuTestSuiteUtils::SPscmInfo* pscm)
{
    constexpr std::wstring_view c_Digits = L"0123456789";
    if (svn != nullptr && !svn->Revision.empty())
    {
        // "4123:4168" is a working copy of several revisions, "4123M" one with local changes.
        const bool isOneRevision = svn->Revision.find_first_not_of(c_Digits) == std::wstring::npos;
        return isOneRevision ? svn->URL + L"@" + svn->Revision : std::wstring();
    }
    if (pscm != nullptr && !pscm->Changeset.empty())
    {
        return pscm->Repository + L"/" + pscm->Branch + L"@" + pscm->Changeset;
    }
    return {};
}

namespace
{

std::wstring getMessage(const LuTestSuiteReport::SReportCase& testCase)
{
    for (const LuTestSuiteReport::SReportDump& dump : testCase.Dumps)
    {
        if (dump.IsError)
        {
            return LuTestSuiteUtils::LuMarkupWriter::Unescape(dump.Text);
        }
    }
    return {};
}

SRecordedCase getCase(LuTestSuiteReport::SReportCase& testCase)
{
    SRecordedCase recorded;
    recorded.className = std::move(testCase.ClassName);
    recorded.caseName = std::move(testCase.CaseName);
    recorded.measured.result = testCase.Result;
    recorded.measured.seconds = testCase.Time;
    recorded.measured.memory = testCase.Memory;
    if (!recorded.measured.HasPassed())
    {
        recorded.message = getMessage(testCase);
    }
    return recorded;
}

} // namespace

bool ReadReport(const std::wstring& path, SRecordedRun& run)
{
    LuTestSuiteReport::SReportData data;
    if (!LuTestSuiteReport::LoadReportDataFromXMLFile(path, data))
    {
        return false;
    }
    run.label.configuration = data.BuildConfiguration;
    run.label.build = GetBuildName(data.SvnInfo.get(), data.PscmInfo.get());
    run.label.machine = data.MachineName;
    run.label.begin = data.DateBegin;
    run.cases.clear();
    run.cases.reserve(data.Cases.size());
    for (LuTestSuiteReport::SReportCase& testCase : data.Cases)
    {
        run.cases.push_back(getCase(testCase));
    }
    return true;
}

} // namespace Runner::History
