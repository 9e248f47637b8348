/// The mode that compares two XML reports.

#include <algorithm>

#include "base/lbfilesystem.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/output/openpage.h"
#include "testing/lutestsuite/output/warning.h"
#include "testing/lutestsuite/report/diffpage.h"

namespace
{

bool haveFiles(const std::vector<std::wstring>& paths)
{
    for (const std::wstring& path : paths)
    {
        if (!LbFileSystem::Exists(path))
        {
            LuTestSuite::WriteWarning(L"Fehler Diff: Datei %s existiert nicht.\n", path);
            return false;
        }
    }
    return true;
}

bool wouldReplaceInput(const std::wstring& output, const std::vector<std::wstring>& inputs)
{
    return std::ranges::any_of(inputs,
                               [&output](const std::wstring& input) { return LbOs::AreSameFile(input, output); });
}

bool load(const std::wstring& path, LuTestSuiteReport::SReportData& data)
{
    const bool isLoaded = LuTestSuiteReport::LoadReportDataFromXMLFile(path, data);
    if (!isLoaded)
    {
        LuTestSuite::WriteWarning(L"Fehler Diff: Daten der Datei %s konnten nicht geladen werden.\n", path);
    }
    return isLoaded;
}

std::wstring getStem(const std::wstring& path)
{
    const std::wstring name = LuTestSuiteUtils::GetFileNameOnly(path);
    return name.substr(0, name.rfind(L'.'));
}

/// The automatic name puts the page beside the reference report.
std::wstring getAutomaticPath(const std::wstring& pathA, const std::wstring& pathB)
{
    return LbFormat(L"%sDiff-[%s][%s].html", LuTestSuiteUtils::GetPrunedPath(pathA), getStem(pathA), getStem(pathB));
}

} // namespace

void LuTestSuiteUtils::GenerateReportDiff(const LuTestSuiteSetup& setup)
{
    if (setup.diffInputs.size() != 2)
    {
        LuTestSuite::WriteWarning(L"Fehler Diff: Es müssen zwei Dateien angegeben werden.\n");
        return;
    }
    const std::wstring& pathA = setup.diffInputs[0];
    const std::wstring& pathB = setup.diffInputs[1];
    if (!haveFiles(setup.diffInputs))
    {
        return;
    }
    const std::wstring output = setup.diffOutput.empty() ? getAutomaticPath(pathA, pathB) : setup.diffOutput;
    if (wouldReplaceInput(output, setup.diffInputs))
    {
        LuTestSuite::WriteWarning(L"Fehler Diff: Die Ausgabe würde die Datei %s überschreiben.\n", output);
        return;
    }
    LuTestSuiteReport::SReportData a;
    LuTestSuiteReport::SReportData b;
    if (!load(pathA, a) || !load(pathB, b))
    {
        return;
    }
    const bool isFinished = LuTestSuite::WriteDiffWithCompanions(
        output, {pathA, a}, {pathB, b}, setup.writeCss, setup.writeJs, setup.smallReport, setup.tolerateWarnings);
    if (isFinished && setup.openReports)
    {
        LuTestSuite::OpenPage(output);
    }
}
