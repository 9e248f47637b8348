/// The mode that lists cases disabled by their descriptions.

#include "testing/lutestsuite/environment/crashnotes.h"
#include "testing/lutestsuite/lutestsuiteout.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/selection/selection.h"
#include "testing/lutestsuite/settings/parameters.h"

namespace
{

std::vector<std::wstring> getDisabledCases(const LuTestSuite::SUnitTest& test)
{
    std::vector<std::wstring> names;
    for (const LuTestSuite::STestCase& testCase : test.cases)
    {
        if (LuTestSuite::IsDisabled(testCase))
        {
            names.push_back(testCase.name);
        }
    }
    return names;
}

void writeDisabledCases(const LuTestSuite::SUnitTest& test, const std::vector<std::wstring>& names)
{
    LuTestSuiteOut::Write(L"%s (%s):\n", test.dataDirectory,
                          test.moduleName.empty() ? std::wstring(L"Unbekannt") : test.moduleName);
    for (std::size_t index = 0; index < names.size(); ++index)
    {
        LuTestSuiteOut::Write(L"    (%d/%d) %s\n", index + 1, names.size(), names[index]);
    }
    LuTestSuiteOut::Write(L"\n");
}

} // namespace

void LuTestSuiteUtils::ListDisabledTestCases(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment)
{
    const LuTestSuite::CCrashNotes notes;
    LuTestSuite::LoadTestModules(setup, environment);
    UnitTests tests = LuTestSuite::FindUnitTests(setup, false);
    LuTestSuite::SelectTestCases(setup, tests);
    std::size_t affectedClasses = 0;
    std::size_t disabledCases = 0;
    std::size_t allCases = 0;
    for (const LuTestSuite::SUnitTest& test : tests)
    {
        const std::vector<std::wstring> names = getDisabledCases(test);
        allCases += test.cases.size();
        disabledCases += names.size();
        if (!names.empty())
        {
            ++affectedClasses;
            writeDisabledCases(test, names);
        }
    }
    LuTestSuiteOut::Write(L"Durchsuchtes Datenverzeichnis: %s\n", setup.dataDir);
    LuTestSuiteOut::Write(L"Klassen mit deaktivierten Fällen: %d von %d\n", affectedClasses, tests.size());
    LuTestSuiteOut::Write(L"Deaktivierte Fälle: %d von %d\n", disabledCases, allCases);
}
