/// Executes one archive run: starts the child process and archives its reports.

#include <algorithm>
#include <string_view>

#include "base/lbcommandline.h"
#include "base/lbdatetime.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lbuniqueid.h"
#include "base/xmlnode.h"
#include "testing/lutestsuite/archive/archive.h"
#include "testing/lutestsuite/lutestsuiteout.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/output/warning.h"
#include "testing/lutestsuite/report/companions.h"

namespace
{

using LuTestSuite::SArchiveRun;
using LuTestSuite::STemporaryReports;

constexpr std::wstring_view c_PageSuffix = L"-Report.html";

[[noreturn]] void throwMissing(const std::wstring& directory)
{
    throw LbFormat(L"Verzeichnis %s existiert nicht", directory);
}

void complete(std::wstring& directory)
{
    // An empty path with a separator would be the root directory.
    if (directory.empty())
    {
        throwMissing(directory);
    }
    directory = LuTestSuiteUtils::AddBackslash(directory);
}

void completeDirectories(SArchiveRun& run)
{
    for (std::wstring* directory : {&run.binaryDir, &run.dataDir})
    {
        complete(*directory);
        if (!LbFileSystem::IsDirectory(*directory))
        {
            throwMissing(*directory);
        }
    }
    complete(run.outDir);
    if (!LuTestSuiteUtils::AssertDirectory(run.outDir))
    {
        throwMissing(run.outDir);
    }
    // Relative paths refer to the current working directory, but the child runs in another folder.
    for (std::wstring* directory : {&run.binaryDir, &run.dataDir, &run.outDir})
    {
        *directory = LbOs::GetFullPath(*directory);
    }
}

std::wstring getExecutable(const SArchiveRun& run)
{
    const wchar_t* const name = run.config == L"Debug" ? L"LuTestSuiteCLID" : L"LuTestSuiteCLI";
    std::wstring executable = run.binaryDir + name + LbOs::c_ExecutableSuffix;
    if (!LbFileSystem::IsFile(executable))
    {
        throw LbFormat(L"Fehler: Executable %s nicht gefunden.\n", executable);
    }
    return executable;
}

STemporaryReports makeTemporaryReports()
{
    const std::wstring folder = LuTestSuiteUtils::AddBackslash(LuTestSuiteUtils::GetLocalTestSuiteDir() + L"Temp");
    LuTestSuiteUtils::AssertDirectory(folder);
    const std::wstring stem = folder + L"Temp-" + LbUniqueId::Generate();
    return {stem + L"-Report.xml", stem + std::wstring(c_PageSuffix)};
}

std::wstring getSuffix(const SArchiveRun& run)
{
    return LbFormat(L".%s.%s", run.platform == L"Win32" ? L"x86" : L"x64",
                    run.config == L"Debug" ? L"debug" : L"release");
}

/// Archives the complete report or nothing; true if it is archived. A report that cannot be archived stays in the
/// temporary folder. If the child wrote no report, nothing is archived.
bool moveReport(const std::wstring& report, const std::wstring& target)
{
    if (!LbFileSystem::IsFile(report))
    {
        return false;
    }
    try
    {
        LbFileSystem::WriteWhole(target, [&report](const std::wstring& place) {
            if (!LbFileSystem::CopyContent(report, place))
            {
                throw LbException(LbFormat(L"Datei %s konnte nicht kopiert werden", report));
            }
        });
        LbOs::RemoveFile(report);
        return true;
    }
    catch (const LbException&)
    {
        LuTestSuite::WriteWarning(L"Fehler: Report %s konnte nicht archiviert werden.\n", report);
        return false;
    }
}

/// True if a page that could not be archived, or the page of another run, is still in the folder.
bool hasPages(const std::wstring& folder)
{
    return std::ranges::any_of(LbFileSystem::GetFileNames(folder),
                               [](const std::wstring& name) { return name.ends_with(c_PageSuffix); });
}

/// Writes new copies of the style sheet and the script for the archived page. Does not move the child's copies, because
/// other runs may delete them at any time. Deletes them unless another page in the temporary folder may need them.
void moveCompanions(const std::wstring& page, const std::wstring& archivedPage)
{
    try
    {
        LuTestSuite::WriteCompanions(archivedPage, true, true);
    }
    catch (const LbException& exception)
    {
        LuTestSuite::WriteWarning(L"Fehler: %s\n", exception.GetMessageText());
        return;
    }
    const std::wstring folder = LuTestSuiteUtils::GetPrunedPath(page);
    if (hasPages(folder))
    {
        return;
    }
    for (const wchar_t* const name : {LuTestSuite::c_StylesheetName, LuTestSuite::c_ScriptName})
    {
        LbOs::RemoveFile(folder + name);
    }
}

void moveReports(const SArchiveRun& run, const STemporaryReports& reports, const std::wstring& timestamp)
{
    const std::wstring archive = LuTestSuiteUtils::AddBackslash(run.outDir + L"Archive");
    // A failure is not reported here: without the folder, each report that cannot be archived prints an error.
    LuTestSuiteUtils::AssertDirectory(archive);
    const std::wstring stem = LbFormat(L"%sReport%s.%s", archive, getSuffix(run), timestamp);
    moveReport(reports.xml, stem + L".xml");
    if (moveReport(reports.html, stem + L".html"))
    {
        moveCompanions(reports.html, stem + L".html");
    }
}

/// Warns if the run executed no case. Does not warn without a readable report: the number of cases is then unknown.
void warnOfNoCases(const std::wstring& report)
{
    XMLDocument document;
    if (document.Load(report, "testsuite") == XMLDocument::EResult::Ok &&
        document.GetRoot().GetChild("Statistics").GetChild("CasesTotal").GetText() == L"0")
    {
        LuTestSuite::WriteWarning(L"Warnung: Der archivierte Lauf hat keinen Testfall ausgeführt.\n");
    }
}

/// Keeps the separator after a drive: "C:" without separator means the drive's working directory.
std::wstring withoutSeparators(std::wstring directory)
{
    while (directory.size() > 1 && LbPath::IsSeparator(directory.back()) && directory[directory.size() - 2] != L':')
    {
        directory.pop_back();
    }
    return directory;
}

} // namespace

std::wstring LuTestSuite::GetArchiveRunArguments(const SArchiveRun& run, const STemporaryReports& reports)
{
    const LuTestSuiteRun::SParams& params = run.params;
    std::wstring arguments;
    for (const auto& [option, path] : {std::pair(L"-d", withoutSeparators(run.dataDir)),
                                       std::pair(L"--xml", reports.xml), std::pair(L"--html", reports.html)})
    {
        arguments += LbFormat(L" %s %s", option, LbCommandLine::Quote(path));
    }
    arguments += params.external ? L" -x" : L"";
    arguments += params.isolated ? L" -s" : L"";
    arguments += params.parallel ? LbFormat(L" -w %u", params.workerThreads) : std::wstring();
    arguments += params.trackHeap ? L" --track-heap" : L"";
    arguments += params.assertDialog ? L"" : L" --no-assert-dialog";
    arguments += params.verbose ? L" -v" : L"";
    arguments += params.repetitions > 1 ? LbFormat(L" -r %u", params.repetitions) : std::wstring();
    arguments += LbFormat(L" -t %u -c %u", params.timeOutSec, params.testCaseMax);
    arguments += run.callArguments;
    return arguments;
}

void LuTestSuite::ExecuteArchiveRun(SArchiveRun run, std::uint32_t timeOutSec)
{
    completeDirectories(run);
    const std::wstring executable = getExecutable(run);
    const STemporaryReports reports = makeTemporaryReports();
    const std::wstring timestamp = LbDateTime::FormatNow(L"[Y-m-d]-[H-i-s]");
    const std::wstring arguments = GetArchiveRunArguments(run, reports);
    LuTestSuiteOut::Write(L"Ausführung...\n");
    LuTestSuiteOut::Write(L"%s %s\n", executable, arguments);
    LuTestSuiteUtils::ExecuteWithTimeout(executable, arguments, run.binaryDir, timeOutSec);
    warnOfNoCases(reports.xml);
    moveReports(run, reports, timestamp);
    LbOs::RemoveFile(run.outDir + L"index");
    LuTestSuiteReport::GenerateReportDirectoryOverview(run.outDir, L"index", L"Archive", L"Report");
}
