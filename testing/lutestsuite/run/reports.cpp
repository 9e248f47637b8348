#include "testing/lutestsuite/run/reports.h"

#include <new>
#include <string>

#include "base/lbdatetime.h"
#include "base/lbexception.h"
#include "base/lbformat.h"
#include "base/os/files.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "testing/lutestsuite/output/openpage.h"
#include "testing/lutestsuite/output/warning.h"
#include "testing/lutestsuite/report/runpage.h"

namespace LuTestSuiteRun
{

namespace
{

struct STargets
{
    std::wstring xml; ///< empty: no report
    std::wstring html;
};

/// Creates the folder of automatic reports and returns the path of a new report without its extension.
std::wstring makeAutomaticName()
{
    const std::wstring folder = LuTestSuiteUtils::AddBackslash(LuTestSuiteUtils::GetLocalTestSuiteDir() + L"Reports");
    LuTestSuiteUtils::AssertDirectory(folder);
    return LbFormat(L"%sLuTestSuiteReport-%s", folder, LbDateTime::FormatNow(L"[Y-m-d]-[H-i-s]"));
}

/// Returns the path; for a relative path, first restores the working directory. If that fails, prints an error and
/// returns an empty text, because the path would then refer to the executable's folder.
std::wstring getTarget(const std::wstring& path, LuTestSuiteEnvironment& environment)
{
    if (path.empty() || LbOs::IsAbsolutePath(path) || environment.RestoreWorkingDirectory())
    {
        return path;
    }
    LuTestSuite::WriteWarning(
        L"Fehler: Report %s konnte nicht erzeugt werden: Sein Arbeitsverzeichnis gibt es nicht mehr.\n", path);
    return {};
}

/// The user's paths; empty where an automatic name replaces the user's path.
STargets getNamedTargets(const LuTestSuiteSetup& setup)
{
    return {setup.autoXml ? std::wstring() : setup.xmlReport, setup.autoHtml ? std::wstring() : setup.htmlReport};
}

STargets getTargets(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment)
{
    STargets targets = getNamedTargets(setup);
    for (std::wstring* const path : {&targets.xml, &targets.html})
    {
        *path = getTarget(*path, environment);
    }
    if (!setup.autoXml && !setup.autoHtml)
    {
        return targets;
    }
    try
    {
        const std::wstring name = makeAutomaticName();
        targets.xml = setup.autoXml ? name + L".xml" : targets.xml;
        targets.html = setup.autoHtml ? name + L".html" : targets.html;
    }
    catch (const LbException& exception)
    {
        // Without a per-user folder, reports with explicit names are still written.
        LuTestSuite::WriteWarning(L"Fehler: Der Ordner für Reports fehlt: %s\n", exception.GetMessageText());
    }
    return targets;
}

void writeHtml(const LuTestSuiteSetup& setup, const std::wstring& path, const LuTestSuiteReport::SReportData& data)
{
    const bool isFinished =
        LuTestSuite::WriteRunPage(path, data, setup.writeCss, setup.writeJs, setup.smallReport, setup.tolerateWarnings);
    if (isFinished && setup.openReports)
    {
        LuTestSuite::OpenPage(path);
    }
}

} // namespace

void RequireReportPlaces(const LuTestSuiteSetup& setup)
{
    const STargets targets = getNamedTargets(setup);
    LbOs::GetFullPath(targets.xml);
    LbOs::GetFullPath(targets.html);
}

void WriteReports(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment,
                  const std::vector<LuTestSuite::SUnitTest>& unitTests, const SRunResult& result)
{
    if (setup.xmlReport.empty() && setup.htmlReport.empty() && !setup.autoXml && !setup.autoHtml)
    {
        return;
    }
    try
    {
        const STargets targets = getTargets(setup, environment);
        LuTestSuiteReport::SReportData data;
        LuTestSuiteReport::GenerateReportData(data, setup, unitTests, result.cases, result.stats);
        LuTestSuiteReport::GenerateXMLReport(targets.xml, data);
        if (!targets.html.empty())
        {
            writeHtml(setup, targets.html, data);
        }
    }
    catch (const std::bad_alloc&)
    {
        // Does not throw, because the run itself has succeeded and its result must be returned.
        LuTestSuite::WriteWarning(L"Fehler: Der Speicher reicht für die Reports nicht aus.\n");
    }
}

} // namespace LuTestSuiteRun
