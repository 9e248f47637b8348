/// The command "list": the selection, with what is known of each case.

#include <nlohmann/json.hpp>

#include "base/lbencoding.h"
#include "base/lbformat.h"
#include "base/os/console.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuitehost/hostmain.h"
#include "testing/lutestsuiterunner/commands/commands.h"
#include "testing/lutestsuiterunner/console/messages.h"
#include "testing/lutestsuiterunner/execution/selection.h"

namespace Runner
{

namespace
{

using Json = nlohmann::ordered_json;
using LbEncoding::ToUtf8;
using UnitTests = std::vector<LuTestSuite::SUnitTest>;

/// The parameters of a case in a fixed order.
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
            parameters[ToUtf8(name)] = flag ? Json(*flag) : Json();
        }
    }
    for (const wchar_t* name : c_Numbers)
    {
        if (const auto place = testCase.parameters.find(name); place != testCase.parameters.end())
        {
            parameters[ToUtf8(name)] = place->second.ToUInt32().value_or(0);
        }
    }
    return parameters;
}

Json describe(const LuTestSuite::STestCase& testCase)
{
    Json record = {{"name", ToUtf8(testCase.name)}, {"disabled", IsDisabled(testCase)}};
    if (!testCase.dataSetFile.empty())
    {
        record["file"] = ToUtf8(testCase.dataSetFile);
    }
    if (!testCase.parameters.empty())
    {
        record["parameters"] = getParameters(testCase);
    }
    return record;
}

Json describe(const LuTestSuite::SUnitTest& unitTest)
{
    Json cases = Json::array();
    for (const LuTestSuite::STestCase& testCase : unitTest.cases)
    {
        cases.push_back(describe(testCase));
    }
    return {{"class", ToUtf8(unitTest.className)},
            {"folder", ToUtf8(unitTest.dataDirectory)},
            {"module", ToUtf8(unitTest.moduleName)},
            {"cases", std::move(cases)}};
}

std::string toJson(const UnitTests& unitTests)
{
    Json list = Json::array();
    for (const LuTestSuite::SUnitTest& unitTest : unitTests)
    {
        list.push_back(describe(unitTest));
    }
    return Json{{"unitTests", std::move(list)}}.dump(2) + "\n";
}

std::string toText(const LuTestSuite::STestCase& testCase)
{
    std::string line = "    " + ToUtf8(testCase.name);
    if (IsDisabled(testCase))
    {
        line += " (deaktiviert)";
    }
    const Json parameters = getParameters(testCase);
    for (const auto& [name, value] : parameters.items())
    {
        line += name == "Enable" ? "" : " " + name + "=" + value.dump();
    }
    return line + "\n";
}

std::string toText(const UnitTests& unitTests)
{
    std::string text;
    std::size_t cases = 0;
    std::size_t disabled = 0;
    for (const LuTestSuite::SUnitTest& unitTest : unitTests)
    {
        text += ToUtf8(LbFormat(L"%s (%s) %s\n", unitTest.className,
                                unitTest.moduleName.empty() ? std::wstring(L"Unbekannt") : unitTest.moduleName,
                                unitTest.dataDirectory));
        for (const LuTestSuite::STestCase& testCase : unitTest.cases)
        {
            text += toText(testCase);
            disabled += IsDisabled(testCase) ? 1 : 0;
        }
        cases += unitTest.cases.size();
    }
    return text +
           ToUtf8(LbFormat(L"Klassen: %d, Fälle: %d, davon deaktiviert: %d\n", unitTests.size(), cases, disabled));
}

} // namespace

int Execute(const SListOptions& options)
{
    MoveLibraryLinesToErrors();
    const LuTestSuiteSetup setup = ReadLibraryOptions(options.library);
    LuTestSuiteEnvironment environment;
    const UnitTests unitTests = SelectUnitTests(setup, environment, false);
    LbOs::WriteStandardOutput(options.json ? toJson(unitTests) : toText(unitTests));
    return LuTestSuiteHost::c_Succeeded;
}

} // namespace Runner
