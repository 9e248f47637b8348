/// The mode that lists the selected cases or, without a data directory, the data directories used earlier.

#include "testing/lutestsuite/environment/crashnotes.h"
#include "testing/lutestsuite/lutestsuiteout.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuitetree.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/selection/selection.h"

namespace
{

using UnitTests = std::vector<LuTestSuite::SUnitTest>;

void writeHistory()
{
    const std::vector<std::wstring> directories = LuTestSuiteUtils::GetDataDirHistory();
    if (directories.empty())
    {
        return;
    }
    LuTestSuiteOut::Write(L"Datenverzeichnisse in LastConfig.xml:\n");
    for (std::size_t index = 0; index < directories.size(); ++index)
    {
        LuTestSuiteOut::Write(L"    %d: %s\n", index, directories[index]);
    }
}

void writeCases(const UnitTests& tests)
{
    for (const LuTestSuite::SUnitTest& test : tests)
    {
        LuTestSuiteOut::Write(L"%s\n", test.dataDirectory);
        for (const LuTestSuite::STestCase& testCase : test.cases)
        {
            LuTestSuiteOut::Write(L"    %s\n", testCase.name);
        }
        LuTestSuiteOut::Write(L"\n");
    }
}

LuTestSuiteTree buildTree(const UnitTests& tests)
{
    LuTestSuiteTree tree;
    tree.Build(tests);
    return tree;
}

} // namespace

void LuTestSuiteUtils::RunQueryMode(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment)
{
    const LuTestSuite::CCrashNotes notes;
    LuTestSuite::LoadTestModules(setup, environment);
    if (setup.dataDir.empty())
    {
        writeHistory();
        return;
    }
    const UnitTests found = LuTestSuite::FindUnitTests(setup, true);
    UnitTests selected = found;
    LuTestSuite::SelectTestCases(setup, selected);
    const LuTestSuiteTree foundTree = buildTree(found);
    const LuTestSuiteTree selectedTree = buildTree(selected);
    writeCases(selected);
    LuTestSuiteOut::Write(L"Datenverzeichnis: %s\n", setup.dataDir);
    LuTestSuiteOut::Write(L"Ausgewählte/Gefundene Klassen: %d/%d\n", selected.size(), found.size());
    LuTestSuiteOut::Write(L"Ausgewählte/Gefundene Fälle: %d/%d\n", selectedTree.GetCaseCount(),
                          foundTree.GetCaseCount());
}
