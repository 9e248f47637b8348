/// The options of the command line.

#include <algorithm>
#include <thread>

#include "base/lbfilesystem.h"
#include "testing/lutestsuite/lutestsuiteout.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/output/warning.h"
#include "testing/lutestsuite/settings/optionparser.h"
#include "testing/lutestsuite/settings/valuereaders.h"

namespace
{

using LuTestSuite::ReadInt;
using LuTestSuite::ReadUInt64;
using LuTestSuite::WriteWarning;

/// The objects that the options change.
struct STarget
{
    LuTestSuiteSetup& setup;
    bool helpRequested = false;
    std::vector<std::wstring> strayArguments;
};

using Setup = LuTestSuiteSetup;
using Text = const std::wstring&;

/// A row of the option table. Each row except c_HelpRow sets exactly one of the two actions.
struct SOption
{
    const wchar_t* names;
    void (*applyFlag)(Setup&);
    void (*applyValue)(Setup&, Text);
};

constexpr SOption Flag(const wchar_t* names, void (*apply)(Setup&))
{
    return {names, apply, nullptr};
}

constexpr SOption Value(const wchar_t* names, void (*apply)(Setup&, Text))
{
    return {names, nullptr, apply};
}

/// The row of the help option, which is not stored in the setup.
constexpr SOption c_HelpRow = {L"-h --help", nullptr, nullptr};

void applyParallel(Setup& setup)
{
    setup.params.parallel = true;
    if (setup.params.workerThreads == 0)
    {
        setup.params.workerThreads = LuTestSuiteUtils::GetDefaultThreadCount();
    }
}

std::uint32_t readCount(Text value)
{
    return static_cast<std::uint32_t>(ReadInt(value));
}

/// In order of registration: an argument selects the first row that matches. "--xml" is intentionally listed twice; the
/// second row has no effect.
constexpr SOption c_Options[] = {
    Value(L"-d --data-dir", [](Setup& setup, Text value) { setup.dataDir = value; }),
    Value(L"-i --include", [](Setup& setup, Text value) { setup.includes.push_back(value); }),
    Value(L"-e --exclude", [](Setup& setup, Text value) { setup.excludes.push_back(value); }),
    Value(L"--include-config", [](Setup& setup, Text value) { setup.includeConfig = value; }),
    Flag(L"--track-heap", [](Setup& setup) { setup.params.trackHeap = true; }),
    Flag(L"--dump-heap", [](Setup& setup) { setup.params.dumpHeap = true; }),
    Value(L"--break-alloc-id", [](Setup& setup, Text value) { setup.params.breakAllocId = ReadUInt64(value); }),
    Value(L"--break-alloc-size", [](Setup& setup, Text value) { setup.params.breakAllocSize = ReadUInt64(value); }),
    Flag(L"-x --external", [](Setup& setup) { setup.params.external = true; }),
    Flag(L"-s --isolated", [](Setup& setup) { setup.params.isolated = setup.params.external = true; }),
    Flag(L"--no-assert-dialog", [](Setup& setup) { setup.params.assertDialog = false; }),
    Flag(L"-v --verbose", [](Setup& setup) { setup.params.verbose = true; }),
    Flag(L"--de-verbose-output", [](Setup& setup) { setup.params.deVerboseOutput = true; }),
    Flag(L"--de-debugging-serialization", [](Setup& setup) { setup.params.deDebuggingSerialization = true; }),
    Flag(L"--de-predefined-breakpoints", [](Setup& setup) { setup.params.dePredefinedBreakPoints = true; }),
    Value(L"-t --time-out-sec", [](Setup& setup, Text value) { setup.params.timeOutSec = readCount(value); }),
    Value(L"-r --repetitions",
          [](Setup& setup, Text value) {
              setup.params.repetitions = readCount(value);
              setup.params.repetitionsGiven = true;
          }),
    Flag(L"-p --parallel", applyParallel),
    Value(L"-w --worker-threads",
          [](Setup& setup, Text value) {
              setup.params.workerThreads = readCount(value);
              setup.params.parallel = true;
          }),
    Value(L"-c --test-case-max", [](Setup& setup, Text value) { setup.params.testCaseMax = readCount(value); }),
    Value(L"--message-report-max", [](Setup& setup, Text value) { setup.messageReportMax = ReadInt(value); }),
    Flag(L"-q --query-mode", [](Setup& setup) { setup.queryMode = true; }),
    Value(L"--archive-run", [](Setup& setup, Text value) { setup.archiveRun = value; }),
    Flag(L"--list-duplicates", [](Setup& setup) { setup.duplicateMode = eDM_List; }),
    Flag(L"--delete-duplicates", [](Setup& setup) { setup.duplicateMode = eDM_Delete; }),
    Flag(L"--list-disabled", [](Setup& setup) { setup.listDisabled = true; }),
    Value(L"--xml", [](Setup& setup, Text value) { setup.xmlReport = value; }),
    Value(L"--diff-in", [](Setup& setup, Text value) { setup.diffInputs.push_back(value); }),
    Value(L"--diff-out", [](Setup& setup, Text value) { setup.diffOutput = value; }),
    Value(L"--html", [](Setup& setup, Text value) { setup.htmlReport = value; }),
    Flag(L"-a --autohtml", [](Setup& setup) { setup.autoHtml = setup.openReports = true; }),
    Flag(L"-o --open", [](Setup& setup) { setup.openReports = true; }),
    Flag(L"--small-report", [](Setup& setup) { setup.smallReport = true; }),
    Flag(L"--no-css", [](Setup& setup) { setup.writeCss = false; }),
    Flag(L"--no-js", [](Setup& setup) { setup.writeJs = false; }),
    c_HelpRow,
    Value(L"--dll", [](Setup& setup, Text value) { setup.dlls.push_back(value); }),
    // A parent run passes these names to its child processes.
    Value(L"--memory-id", [](Setup& setup, Text value) { setup.memoryId = value; }),
    Value(L"--request-event-id", [](Setup& setup, Text value) { setup.requestEventId = value; }),
    Value(L"--response-event-id", [](Setup& setup, Text value) { setup.responseEventId = value; }),
    Flag(L"--no-regex", [](Setup& setup) { setup.noRegex = true; }),
    Value(L"--xml", [](Setup& setup, Text value) { setup.xmlReport = value; }),
    Flag(L"--tolerate-warnings", [](Setup& setup) { setup.tolerateWarnings = true; }),
};

void registerOptions(auto& parser, STarget& target)
{
    for (const SOption& option : c_Options)
    {
        if (option.applyFlag != nullptr)
        {
            parser.template RegisterOption<Setup>(option.names, target.setup, option.applyFlag);
        }
        else if (option.applyValue != nullptr)
        {
            parser.template RegisterOptionWithValue<Setup>(option.names, target.setup, option.applyValue);
        }
        else
        {
            parser.template RegisterOption<bool>(option.names, target.helpRequested,
                                                 [](bool& requested) { requested = true; });
        }
    }
}

/// A request for help suppresses all modes that other options request.
void clearModes(Setup& setup)
{
    setup.dataDir.clear();
    setup.diffInputs.clear();
    setup.queryMode = false;
    setup.archiveRun.clear();
    setup.duplicateMode = eDM_None;
    setup.listDisabled = false;
}

bool checkStrayArguments(const std::vector<std::wstring>& strayArguments)
{
    if (strayArguments.empty())
    {
        return true;
    }
    WriteWarning(L"Fehler: Unbekannte Argumente\n");
    for (const std::wstring& argument : strayArguments)
    {
        WriteWarning(L"  %s\n", argument);
    }
    return false;
}

bool checkDataDirectory(Setup& setup)
{
    if (!setup.dataDir.empty())
    {
        LuTestSuiteUtils::PreprocessDataDir(setup.dataDir);
        if (!LbFileSystem::IsDirectory(setup.dataDir))
        {
            WriteWarning(L"Fehler: Datenverzeichnis '%s' konnte nicht gefunden werden\n", setup.dataDir);
            return false;
        }
    }
    else if (setup.archiveRun.empty() && !setup.queryMode && setup.diffInputs.empty())
    {
        LuTestSuiteOut::Write(L"%s", LuTestSuiteUtils::GetCommandLineHelp());
    }
    return true;
}

} // namespace

bool LuTestSuiteUtils::ProcessCommandLine(LuTestSuiteSetup& setup, int argumentCount, const wchar_t* const* arguments)
{
    STarget target{setup, false, {}};
    LuOptionParser parser(argumentCount, arguments);
    parser.SetPrefixes(L"-");
    parser.SetStrayArguments(&target.strayArguments);
    registerOptions(parser, target);
    try
    {
        parser.Parse();
    }
    catch (const std::wstring& message)
    {
        WriteWarning(L"%s", message);
        return false;
    }
    if (target.helpRequested)
    {
        LuTestSuiteOut::Write(L"%s", GetCommandLineHelp());
        clearModes(setup);
        return true;
    }
    return checkStrayArguments(target.strayArguments) && checkDataDirectory(setup);
}

std::uint32_t LuTestSuiteUtils::GetDefaultThreadCount()
{
    return std::max(1U, std::thread::hardware_concurrency());
}
