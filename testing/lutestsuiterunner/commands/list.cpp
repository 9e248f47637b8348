/// The command "list": the selected cases and their properties.

#include <algorithm>

#include <nlohmann/json.hpp>

#include "base/lbencoding.h"
#include "base/lbformat.h"
#include "base/os/console.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuitehost/hostmain.h"
#include "testing/lutestsuiterunner/commands/commands.h"
#include "testing/lutestsuiterunner/commands/ctestscript.h"
#include "testing/lutestsuiterunner/commands/newrun.h"
#include "testing/lutestsuiterunner/commands/workflow.h"
#include "testing/lutestsuiterunner/console/messages.h"
#include "testing/lutestsuiterunner/execution/guards.h"
#include "testing/lutestsuiterunner/execution/planning.h"
#include "testing/lutestsuiterunner/execution/selection.h"
#include "testing/lutestsuiterunner/model/textescape.h"
#include "testing/lutestsuiterunner/reports/wholefile.h"

namespace Runner
{

namespace
{

using Json = nlohmann::ordered_json;

/// Escapes characters that JSON cannot represent; names may contain them.
std::string toText(const std::wstring& text)
{
    return ToEscapedUtf8(text);
}

/// The parameters of a case that the list shows, in this order.
constexpr const wchar_t* c_Flags[] = {L"Enable", L"ReportMemLeak", L"Parallel", L"External", L"Isolated"};
constexpr const wchar_t* c_Numbers[] = {L"TimeOutSec", L"MessageReportMax"};

Json getParameters(const LuTestSuite::STestCase& testCase)
{
    Json parameters = Json::object();
    for (const wchar_t* name : c_Flags)
    {
        if (const auto place = testCase.parameters.find(name); place != testCase.parameters.end())
        {
            const std::optional<bool> flag = place->second.ToBool();
            parameters[toText(name)] = flag ? Json(*flag) : Json();
        }
    }
    for (const wchar_t* name : c_Numbers)
    {
        if (const auto place = testCase.parameters.find(name); place != testCase.parameters.end())
        {
            parameters[toText(name)] = place->second.ToUInt32().value_or(0);
        }
    }
    return parameters;
}

Json describe(const LuTestSuite::STestCase& testCase, bool isDisabled)
{
    Json record = {{"name", toText(testCase.name)}, {"disabled", isDisabled}};
    if (!testCase.dataSetFile.empty())
    {
        record["file"] = toText(testCase.dataSetFile);
    }
    if (!testCase.parameters.empty())
    {
        record["parameters"] = getParameters(testCase);
    }
    return record;
}

/// The cases of one unit test; disabled ones come last.
struct SListed
{
    const LuTestSuite::SUnitTest* unitTest;
    std::vector<std::pair<const LuTestSuite::STestCase*, bool>> cases; ///< true for a disabled case
};

void addCases(const LuTestSuite::SUnitTest& unitTest, bool areDisabled, std::vector<SListed>& list)
{
    const auto isSame = [&unitTest](const SListed& listed) {
        return listed.unitTest->className == unitTest.className &&
               listed.unitTest->dataDirectory == unitTest.dataDirectory;
    };
    auto place = areDisabled ? std::ranges::find_if(list, isSame) : list.end();
    if (place == list.end())
    {
        place = list.insert(place, {&unitTest, {}});
    }
    for (const LuTestSuite::STestCase& testCase : unitTest.cases)
    {
        place->cases.emplace_back(&testCase, areDisabled);
    }
}

std::vector<SListed> merge(const SSelection& selection)
{
    std::vector<SListed> list;
    for (const LuTestSuite::SUnitTest& unitTest : selection.enabled)
    {
        addCases(unitTest, false, list);
    }
    for (const LuTestSuite::SUnitTest& unitTest : selection.disabled)
    {
        addCases(unitTest, true, list);
    }
    return list;
}

Json describe(const SListed& listed)
{
    Json cases = Json::array();
    for (const auto& [testCase, isDisabled] : listed.cases)
    {
        cases.push_back(describe(*testCase, isDisabled));
    }
    return {{"class", toText(listed.unitTest->className)},
            {"folder", toText(listed.unitTest->dataDirectory)},
            {"module", toText(listed.unitTest->moduleName)},
            {"cases", std::move(cases)}};
}

std::string toJson(const std::vector<SListed>& list)
{
    Json unitTests = Json::array();
    std::ranges::transform(list, std::back_inserter(unitTests), [](const SListed& listed) { return describe(listed); });
    return Json{{"unitTests", std::move(unitTests)}}.dump(2) + "\n";
}

std::string toLine(const LuTestSuite::STestCase& testCase, bool isDisabled)
{
    std::string line = "    " + toText(testCase.name) + (isDisabled ? " (deaktiviert)" : "");
    const Json parameters = getParameters(testCase);
    for (const auto& [name, value] : parameters.items())
    {
        line += name == "Enable" ? "" : " " + name + "=" + value.dump();
    }
    return line + (testCase.dataSetFile.empty() ? "" : " Datei=" + toText(testCase.dataSetFile)) + "\n";
}

std::string toLines(const std::vector<SListed>& list)
{
    std::string text;
    std::size_t cases = 0;
    std::size_t disabled = 0;
    for (const SListed& listed : list)
    {
        const LuTestSuite::SUnitTest& unitTest = *listed.unitTest;
        const std::wstring module = unitTest.moduleName.empty() ? L"Unbekannt" : unitTest.moduleName;
        text += toText(unitTest.className) + " (" + toText(module) + ") " + toText(unitTest.dataDirectory) + "\n";
        for (const auto& [testCase, isDisabled] : listed.cases)
        {
            text += toLine(*testCase, isDisabled);
            disabled += isDisabled ? 1 : 0;
        }
        cases += listed.cases.size();
    }
    return text + LbEncoding::ToUtf8(
                      LbFormat(L"Klassen: %d, Fälle: %d, davon deaktiviert: %d\n", list.size(), cases, disabled));
}

void writeCTestScript(const std::wstring& path, const LuTestSuiteSetup& setup)
{
    RequireModules(setup);
    RefuseRepetitions(setup); // because each test for CTest would refuse them
    SSelection selection = SelectCases(setup);
    WarnOfSuitesWithoutFolder({}, selection.withoutFolder);
    const std::string script = MakeCTestScript(MakePlan({}, setup, std::move(selection)));
    WriteWholeFile(path, [&script](LuStreamWriteBinaryFile& file) { file.Write(script.data(), script.size()); });
}

} // namespace

int Execute(const SListOptions& options)
{
    MoveLibraryLinesToErrors();
    const LuTestSuiteSetup setup = ReadLibraryOptions(options.library);
    LuTestSuiteEnvironment environment;
    LoadModules(setup, environment);
    if (!options.ctest.empty())
    {
        writeCTestScript(options.ctest, setup);
        return LuTestSuiteHost::c_Succeeded;
    }
    WarnOfMissingModules({}, setup);
    const SSelection selection = SelectCases(setup); // the list points into it
    WarnOfSuitesWithoutFolder({}, selection.withoutFolder);
    const std::vector<SListed> list = merge(selection);
    LbOs::WriteStandardOutput(options.json ? toJson(list) : toLines(list));
    return LuTestSuiteHost::c_Succeeded;
}

} // namespace Runner
