/// The command "folders": creates folders in the data directory for classes that need no files.

#include <algorithm>
#include <memory>
#include <unordered_set>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lbrtti.h"
#include "base/luunittest.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuitehost/hostmain.h"
#include "testing/lutestsuiterunner/commands/commands.h"
#include "testing/lutestsuiterunner/console/messages.h"
#include "testing/lutestsuiterunner/console/terminal.h"
#include "testing/lutestsuiterunner/execution/guards.h"
#include "testing/lutestsuiterunner/execution/selection.h"

namespace Runner
{

namespace
{

/// True if the class has sub-tests in a folder without files.
bool hasNamedSubtests(const LbRTTI& type, const std::wstring& folder)
{
    const std::unique_ptr<IObject> object = type.GetCreate()();
    auto* const unitTest = dynamic_cast<LuUnitTest*>(object.get());
    if (unitTest == nullptr)
    {
        return false;
    }
    unitTest->SetDataDirectory(folder);
    unitTest->InitSubtests();
    return unitTest->GetSubtestCount() > 0;
}

/// The result of hasNamedSubtests. If the class throws, prints a warning and returns false: a run would print a
/// warning, too.
bool needsFolder(const LbRTTI& type, const std::wstring& folder)
try
{
    return hasNamedSubtests(type, folder);
}
catch (...)
{
    CTerminal::Get().WriteError(LbFormat(L"Warnung: %s: %s\n", type.GetName(), LbDescribeCurrentException()));
    return false;
}

} // namespace

int Execute(const SFoldersOptions& options)
{
    MoveLibraryLinesToErrors();
    const LuTestSuiteSetup setup = ReadLibraryOptions(options.library);
    LuTestSuiteEnvironment environment;
    LoadModules(setup, environment);
    RequireModules(setup);
    const std::wstring data = LbPath::WithSeparator(LbOs::GetFullPath(setup.dataDir));
    std::unordered_set<std::wstring> known;
    for (const LuTestSuite::SUnitTest& unitTest : LuTestSuiteUtils::ScanDirectoryForUnitTests(data, false))
    {
        known.insert(unitTest.className);
    }
    for (const LbRTTI* const type : LbRTTI::GetDerived(LuUnitTest::RTTI))
    {
        const std::wstring folder = data + type->GetName() + LbPath::c_Separator;
        if (known.contains(type->GetName()) || LbFileSystem::Exists(folder) || !needsFolder(*type, folder))
        {
            continue;
        }
        if (!LbFileSystem::AssertDirectory(folder))
        {
            throw LbFormat(L"Verzeichnis %s konnte nicht angelegt werden", folder);
        }
        CTerminal::Get().WriteOutput(LbFormat(L"Angelegt: %s\n", folder));
    }
    return LuTestSuiteHost::c_Succeeded;
}

} // namespace Runner
