#include "testing/lutestsuiterunner/commands/ctestscript.h"

#include "testing/lutestsuite/lutestsuiterunevents.h"
#include "testing/lutestsuiterunner/model/textescape.h"

namespace Runner
{

namespace
{

/// Encloses the text in a bracket argument, in which CMake replaces nothing. The brackets have more equals signs than
/// follow any "]" in the text, so the text cannot end the argument.
std::string quote(const std::wstring& text)
{
    const std::string bytes = ToEscapedUtf8(text);
    std::string mark;
    while (bytes.find("]" + mark) != std::string::npos)
    {
        mark += '=';
    }
    return "[" + mark + "[" + bytes + "]" + mark + "]";
}

void append(std::string& script, const std::wstring& name, const std::wstring& className, const std::wstring& folder,
            std::uint32_t timeOut, const char* state, const std::wstring& file)
{
    const std::uint32_t seconds = timeOut == LuTestSuiteRun::c_NoLimit ? 0 : timeOut;
    script += "lutestsuite_add_case(" + quote(name) + " " + quote(className) + " " + quote(folder) + " " +
              std::to_string(seconds) + " \"" + state + "\"";
    if (!file.empty())
    {
        script += " ";
        script += quote(file);
    }
    script += ")\n";
}

/// True if the description of the case forbids running other cases at the same time.
bool isSerial(const LuTestSuite::ParameterMap& parameters)
{
    LuTestSuiteRun::SParams unless;
    unless.parallel = true;
    return !LuTestSuiteRun::GetCaseParams(unless, parameters).parallel;
}

/// The folder above the folder of the class.
std::wstring getParentFolder(const SPlan& plan, const std::wstring& dataDirectory)
{
    const std::wstring folder = GetRelativeFolder(plan, dataDirectory);
    const std::size_t slash = folder.rfind(L'/');
    return slash == std::wstring::npos ? L"" : folder.substr(0, slash);
}

} // namespace

std::string MakeCTestScript(const SPlan& plan)
{
    std::string script = "# Written by LuTestSuiteRunner.\n";
    for (std::uint32_t index = 0; index < plan.cases.size(); ++index)
    {
        const LuTestSuite::SUnitTest& unitTest = plan.unitTests[plan.cases[index].unitTest];
        const LuTestSuite::STestCase& testCase = unitTest.cases[plan.cases[index].testCase];
        append(script, GetCaseName(plan, index), unitTest.className, getParentFolder(plan, unitTest.dataDirectory),
               GetParams(plan, index).timeOutSec, isSerial(testCase.parameters) ? "SERIAL" : "", testCase.dataSetFile);
    }
    for (const SDisabledCase& disabled : plan.disabled)
    {
        append(script, GetUnitTestName(plan, disabled.dataDirectory, disabled.className) + L":" + disabled.name,
               disabled.className, getParentFolder(plan, disabled.dataDirectory), 0, "DISABLED", L"");
    }
    return script;
}

} // namespace Runner
