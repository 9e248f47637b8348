#include "testing/lutestsuiterunner/execution/selection.h"

#include "base/lbformat.h"
#include "base/os/files.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace Runner
{

namespace
{

/// A mode of LuTestSuiteCLI that is not a run.
struct SOtherMode
{
    const wchar_t* option;
    bool (*isSelected)(const LuTestSuiteSetup& setup);
};

constexpr SOtherMode c_OtherModes[] = {
    {L"--diff-in", [](const LuTestSuiteSetup& setup) { return !setup.diffInputs.empty(); }},
    {L"--query-mode", [](const LuTestSuiteSetup& setup) { return setup.queryMode; }},
    {L"--archive-run", [](const LuTestSuiteSetup& setup) { return !setup.archiveRun.empty(); }},
    {L"--list-duplicates", [](const LuTestSuiteSetup& setup) { return setup.duplicateMode == eDM_List; }},
    {L"--delete-duplicates", [](const LuTestSuiteSetup& setup) { return setup.duplicateMode == eDM_Delete; }},
    {L"--list-disabled", [](const LuTestSuiteSetup& setup) { return setup.listDisabled; }},
};

void refuseOtherModes(const LuTestSuiteSetup& setup)
{
    for (const SOtherMode& mode : c_OtherModes)
    {
        if (mode.isSelected(setup))
        {
            throw LbFormat(L"Die Option '%s' wählt eine Betriebsart, die nur LuTestSuiteCLI hat", mode.option);
        }
    }
}

} // namespace

LuTestSuiteSetup ReadLibraryOptions(const LibraryOptions& options)
{
    if (options.empty())
    {
        throw std::wstring(L"Hinter '--' fehlen die Optionen der Auswahl, zumindest '-d DATENVERZEICHNIS'");
    }
    std::vector<const wchar_t*> vector = {L"LuTestSuiteRunner"};
    for (const std::wstring& option : options)
    {
        vector.push_back(option.c_str());
    }
    LuTestSuiteSetup setup;
    if (!LuTestSuiteUtils::ProcessCommandLine(setup, static_cast<int>(vector.size()), vector.data()))
    {
        throw std::wstring(L"Die Optionen hinter '--' sind falsch");
    }
    refuseOtherModes(setup);
    if (setup.dataDir.empty())
    {
        throw std::wstring(L"Hinter '--' fehlt das Datenverzeichnis (-d)");
    }
    return setup;
}

std::vector<LuTestSuite::SUnitTest> SelectUnitTests(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment,
                                                    bool removeDisabled)
{
    environment.LoadTestDLLs();
    for (const std::wstring& name : setup.dlls)
    {
        environment.LoadDLL(name, false);
    }
    std::vector<LuTestSuite::SUnitTest> unitTests =
        LuTestSuiteUtils::ScanDirectoryForUnitTests(LbOs::GetFullPath(setup.dataDir), removeDisabled);
    LuTestSuiteUtils::FilterTestCases(unitTests, LbOs::GetFullPath(setup.includeConfig), setup.includes, setup.excludes,
                                      setup.params.testCaseMax, setup.noRegex);
    return unitTests;
}

bool IsDisabled(const LuTestSuite::STestCase& testCase)
{
    const auto parameter = testCase.parameters.find(L"Enable");
    return parameter != testCase.parameters.end() && parameter->second.ToBool() == false;
}

} // namespace Runner
