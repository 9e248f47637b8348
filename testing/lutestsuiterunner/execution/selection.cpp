#include "testing/lutestsuiterunner/execution/selection.h"

#include <functional>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "base/lbformat.h"
#include "base/lbrtti.h"
#include "base/luunittest.h"
#include "base/os/files.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuiterunner/execution/heldlines.h"
#include "testing/lutestsuiterunner/model/textlines.h"

namespace Runner
{

namespace
{

using UnitTests = std::vector<LuTestSuite::SUnitTest>;

/// An option that selects something that this host does not do.
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

constexpr SOtherMode c_Reports[] = {
    {L"--xml", [](const LuTestSuiteSetup& setup) { return !setup.xmlReport.empty(); }},
    {L"--html", [](const LuTestSuiteSetup& setup) { return !setup.htmlReport.empty(); }},
    {L"--autohtml", [](const LuTestSuiteSetup& setup) { return setup.autoHtml; }},
    {L"--open", [](const LuTestSuiteSetup& setup) { return setup.openReports; }},
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

void refuseReports(const LuTestSuiteSetup& setup)
{
    for (const SOtherMode& report : c_Reports)
    {
        if (report.isSelected(setup))
        {
            throw LbFormat(L"Die Option '%s' gibt es hier nicht: die Reports entstehen im Ordner des Laufs",
                           report.option);
        }
    }
}

/// The name of the record from which testing/lutestsuite/foreigntests.h derives the classes of suites.
constexpr const wchar_t* c_SuiteRecord = L"LuForeignTests::CUnitTest";

std::vector<std::wstring> findSuitesWithoutFolder(const UnitTests& unitTests)
{
    std::unordered_set<std::wstring> known;
    for (const LuTestSuite::SUnitTest& unitTest : unitTests)
    {
        known.insert(unitTest.className);
    }
    std::vector<std::wstring> missing;
    for (const LbRTTI* const type : LbRTTI::GetDerived(LuUnitTest::RTTI))
    {
        if (type->GetBase()->GetName() == c_SuiteRecord && !known.contains(type->GetName()))
        {
            missing.push_back(type->GetName());
        }
    }
    return missing;
}

/// What the library has printed about wrong options, as one line.
std::wstring describeWrongOptions(const std::wstring& printed)
{
    std::wstring reason;
    const wchar_t* separator = L"";
    const wchar_t* nextSeparator = L": ";
    for (std::wstring line : SplitLines(printed))
    {
        for (const std::wstring_view mark : {L"Warnung: ", L"Fehler: "})
        {
            line.erase(0, line.starts_with(mark) ? mark.size() : 0);
        }
        line.erase(0, line.find_first_not_of(L' '));
        reason += separator + line;
        separator = std::exchange(nextSeparator, L", ");
    }
    return reason.empty() ? std::wstring(L"Die Optionen hinter '--' sind falsch")
                          : LbFormat(L"Falsche Optionen hinter '--': %s", reason);
}

bool isDisabled(const LuTestSuite::STestCase& testCase)
{
    const auto parameter = testCase.parameters.find(L"Enable");
    return parameter != testCase.parameters.end() && parameter->second.ToBool() == false;
}

void removeCases(UnitTests& unitTests, const std::function<bool(const LuTestSuite::STestCase&)>& isRemoved)
{
    for (LuTestSuite::SUnitTest& unitTest : unitTests)
    {
        std::erase_if(unitTest.cases, isRemoved);
    }
    std::erase_if(unitTests, [](const LuTestSuite::SUnitTest& unitTest) { return unitTest.cases.empty(); });
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
    CHeldLines lines;
    if (!LuTestSuiteUtils::ProcessCommandLine(setup, static_cast<int>(vector.size()), vector.data()))
    {
        throw describeWrongOptions(lines.Take());
    }
    refuseOtherModes(setup);
    refuseReports(setup);
    if (setup.dataDir.empty())
    {
        // The help of LuTestSuiteCLI
        lines.Take();
        throw std::wstring(L"Hinter '--' fehlt das Datenverzeichnis (-d); 'LuTestSuiteCLI -h' nennt alle Optionen");
    }
    return setup;
}

void LoadModules(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment)
{
    environment.LoadTestDLLs();
    for (const std::wstring& name : setup.dlls)
    {
        environment.LoadDLL(name, false);
    }
}

SSelection SelectCases(const LuTestSuiteSetup& setup)
{
    UnitTests all = LuTestSuiteUtils::ScanDirectoryForUnitTests(LbOs::GetFullPath(setup.dataDir), false);
    // A selection leaves out suites on purpose.
    const bool isWhole = setup.includes.empty() && setup.excludes.empty();
    std::vector<std::wstring> withoutFolder = isWhole ? findSuitesWithoutFolder(all) : std::vector<std::wstring>();
    SSelection selection = {all, std::move(all), std::move(withoutFolder)};
    removeCases(selection.enabled, isDisabled);
    removeCases(selection.disabled, std::not_fn(isDisabled));
    const std::wstring config = LbOs::GetFullPath(setup.includeConfig);
    LuTestSuiteUtils::FilterTestCases(selection.enabled, config, setup.includes, setup.excludes,
                                      setup.params.testCaseMax, setup.noRegex);
    LuTestSuiteUtils::FilterTestCases(selection.disabled, config, setup.includes, setup.excludes,
                                      LuTestSuiteRun::c_NoLimit, setup.noRegex);
    return selection;
}

} // namespace Runner
