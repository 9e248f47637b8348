#include "testing/lutestsuite/run/reports.h"

#include <new>
#include <string>

#include "base/lbdatetime.h"
#include "base/lbexception.h"
#include "base/lbformat.h"
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
    std::wstring xml; ///< empty for none
    std::wstring html;
};

/// Path of an automatic report without its ending.
std::wstring makeAutomaticName()
{
    const std::wstring folder = LuTestSuiteUtils::AddBackslash(LuTestSuiteUtils::GetLocalTestSuiteDir() + L"Reports");
    LuTestSuiteUtils::AssertDirectory(folder);
    return LbFormat(L"%sLuTestSuiteReport-%s", folder, LbDateTime::FormatNow(L"[Y-m-d]-[H-i-s]"));
}

/// Automatic names replace those that the user gave.
STargets getTargets(const LuTestSuiteSetup& setup)
{
    STargets targets;
    targets.xml = setup.autoXml ? L"" : setup.xmlReport;
    targets.html = setup.autoHtml ? L"" : setup.htmlReport;
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
        // The system knows no folder for the user's data: the reports that have a name of their own stand.
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

void WriteReports(const LuTestSuiteSetup& setup, const std::vector<LuTestSuite::SUnitTest>& unitTests,
                  const SRunResult& result)
{
    if (setup.xmlReport.empty() && setup.htmlReport.empty() && !setup.autoXml && !setup.autoHtml)
    {
        return;
    }
    try
    {
        const STargets targets = getTargets(setup);
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
        // The run has its verdict already.
        LuTestSuite::WriteWarning(L"Fehler: Der Speicher reicht für die Reports nicht aus.\n");
    }
}

} // namespace LuTestSuiteRun
