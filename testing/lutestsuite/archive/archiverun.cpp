/// The mode that executes a configured run and archives its reports.

#include <algorithm>

#include "testing/lutestsuite/archive/archive.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/output/warning.h"

void LuTestSuiteUtils::RunArchiveMode(const LuTestSuiteSetup& setup)
{
    const std::size_t colon = setup.archiveRun.rfind(L':');
    const bool hasPath = colon != std::wstring::npos;
    const std::wstring path = hasPath ? setup.archiveRun.substr(0, colon) : std::wstring();
    const std::wstring name = hasPath ? setup.archiveRun.substr(colon + 1) : setup.archiveRun;
    const std::vector<LuTestSuite::SArchiveRun> runs = LuTestSuite::ReadArchiveRuns(path, setup);
    const auto run = std::ranges::find(runs, name, &LuTestSuite::SArchiveRun::name);
    if (run == runs.end())
    {
        LuTestSuite::WriteWarning(L"Fehler: Run Eintrag '%s' nicht gefunden\n", name);
        return;
    }
    LuTestSuite::ExecuteArchiveRun(*run);
}
