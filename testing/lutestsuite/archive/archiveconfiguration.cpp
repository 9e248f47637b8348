/// Reads the configuration of archive runs.

#include <utility>

#include "base/lbcommandline.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/os/files.h"
#include "base/xmlnode.h"
#include "testing/lutestsuite/archive/archive.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

using LuTestSuite::SArchiveRun;

constexpr std::uint32_t c_DefaultTimeOutSec = 300;

struct SField
{
    const char* element;
    std::wstring SArchiveRun::*field;
};

constexpr SField c_Fields[] = {
    {"BinaryDir", &SArchiveRun::binaryDir}, {"Config", &SArchiveRun::config}, {"Platform", &SArchiveRun::platform},
    {"DataDir", &SArchiveRun::dataDir},     {"OutDir", &SArchiveRun::outDir},
};

LuTestSuiteRun::SParams getDefaults(const LuTestSuiteSetup& setup)
{
    LuTestSuiteRun::SParams params;
    params.trackHeap = true;
    params.external = true;
    params.isolated = setup.params.isolated;
    params.assertDialog = false;
    params.verbose = setup.params.verbose;
    params.parallel = setup.params.parallel;
    params.workerThreads = setup.params.parallel ? setup.params.workerThreads : 0;
    params.repetitions = setup.params.repetitions;
    params.timeOutSec = c_DefaultTimeOutSec;
    params.testCaseMax = setup.params.testCaseMax;
    return params;
}

void checkOneOf(const std::wstring& value, const wchar_t* first, const wchar_t* second, const wchar_t* message)
{
    if (value != first && value != second)
    {
        throw std::wstring(message);
    }
}

std::wstring getCallArguments(const LuTestSuiteSetup& setup)
{
    std::wstring arguments;
    for (const auto& [option, values] :
         {std::pair(L"--dll", &setup.dlls), std::pair(L"-i", &setup.includes), std::pair(L"-e", &setup.excludes)})
    {
        for (const std::wstring& value : *values)
        {
            arguments += LbFormat(L" %s %s", option, LbCommandLine::Quote(value));
        }
    }
    if (!setup.includeConfig.empty())
    {
        // Makes the path absolute, because the child runs in another folder.
        const std::wstring path = LbOs::GetFullPath(setup.includeConfig);
        arguments += LbFormat(L" --include-config %s", LbCommandLine::Quote(path));
    }
    arguments += setup.noRegex ? L" --no-regex" : L"";
    return arguments;
}

SArchiveRun readRun(const XMLNode& node, const LuTestSuiteSetup& setup)
{
    SArchiveRun run;
    run.name = node.GetAttribute("name");
    for (const SField& field : c_Fields)
    {
        run.*field.field = node.GetChild(field.element).GetText();
    }
    checkOneOf(run.config, L"Debug", L"Release", L"Ungültige Konfiguration");
    checkOneOf(run.platform, L"Win32", L"x64", L"Ungültige Platform");
    run.callArguments = getCallArguments(setup);
    run.params = getDefaults(setup);
    LuTestSuiteUtils::GetRunParam(node, run.params);
    return run;
}

} // namespace

std::vector<LuTestSuite::SArchiveRun> LuTestSuite::ReadArchiveRuns(const std::wstring& path,
                                                                   const LuTestSuiteSetup& setup)
{
    if (!LbFileSystem::Exists(path))
    {
        throw LbFormat(L"Datei %s nicht gefunden", path);
    }
    XMLDocument document;
    const XMLDocument::EResult result = document.Load(path, "ArchiveRun");
    if (result == XMLDocument::EResult::Unreadable)
    {
        throw LbFormat(L"Datei %s konnte nicht gelesen werden", path);
    }
    if (result != XMLDocument::EResult::Ok)
    {
        throw std::wstring(L"XML-Syntax Fehler");
    }
    std::vector<SArchiveRun> runs;
    for (const XMLNode& node : document.GetRoot().GetChildren("Run"))
    {
        runs.push_back(readRun(node, setup));
    }
    return runs;
}
