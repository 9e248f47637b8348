// Tests of other frameworks as cases of the host for build servers.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "tests/lutestsuiterunner/cli/runnerprocess.h"
#include "tests/support/hostprocess.h"
#include "tests/support/scopedfolder.h"

namespace
{

TEST(RunnerFolders, CreatesMissingFoldersForClassesWithoutFiles)
{
    const ScopedFolder folder;
    folder.MakeFolder(L"unten/Buffer");
    const std::vector<std::wstring> library = {
        L"--", L"-d", folder.GetPath(), L"--dll", L"googletesttests", L"--dll", L"datasetmodels"};
    std::vector<std::wstring> arguments = {L"folders"};
    arguments.insert(arguments.end(), library.begin(), library.end());

    const SHostRun run = RunRunner(arguments);

    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    EXPECT_TRUE(LbFileSystem::IsDirectory(folder.GetPathOf(L"Small.Numbers")));
    EXPECT_TRUE(LbFileSystem::IsDirectory(folder.GetPathOf(L"Arithmetic")));
    EXPECT_FALSE(LbFileSystem::IsDirectory(folder.GetPathOf(L"Buffer")));
    EXPECT_FALSE(LbFileSystem::IsDirectory(folder.GetPathOf(L"CDataSetModel")));
    EXPECT_EQ(RunRunner(arguments).output, "");
}

TEST(RunnerFolders, RefusesAMissingModule)
{
    const ScopedFolder folder;

    const SHostRun run = RunRunner({L"folders", L"--", L"-d", folder.GetPath(), L"--dll", L"gibtesnicht"});

    EXPECT_EQ(FromPlatformLines(run.errors), "Fehler: " + DescribeMissingModule(L"gibtesnicht") + "\n");
    EXPECT_EQ(run.exitStatus, 2);
}

TEST(RunnerForeignTests, CountAsPassedAndAsSkippedIfTheySkip)
{
    const ScopedFolder folder;
    for (const wchar_t* const name : {L"Arithmetic", L"Refused", L"SkippedSuite"})
    {
        folder.MakeFolder(std::wstring(L"data/") + name);
    }
    const std::wstring out = folder.GetPathOf(L"out/");

    const SHostRun run = RunRunner({L"run", L"--out", out, L"--", L"-d", folder.GetPathOf(L"data"), L"--dll",
                                    L"googletesttests", L"-i", L":(Adds|Skips|NeedsAServer|Passes)$"});

    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    EXPECT_NE(run.output.find("Fälle: 4, bestanden: 4 (davon 2 übersprungen), "), std::string::npos) << run.output;
    const std::string report = LbFileSystem::ReadFile8Bit(out + L"junit.xml");
    EXPECT_NE(report.find("<skipped message=\"no coprocessor\"/>"), std::string::npos) << report;
    EXPECT_NE(report.find("<skipped message=\"no server\"/>"), std::string::npos) << report;
    // GoogleTest 1.12 runs the test of the skipped suite, so the test is not reported as skipped.
    EXPECT_EQ(report.find("<skipped message=\"no licence\"/>"), std::string::npos) << report;
    EXPECT_NE(LbFileSystem::ReadFile8Bit(out + L"summary.json").find("\"skipped\": 2"), std::string::npos);
}

TEST(RunnerForeignTests, ReturnStatus77InEachModeIfTheySkip)
{
    const ScopedFolder folder;
    folder.MakeFolder(L"Arithmetic");

    for (const wchar_t* const mode : {L"-p", L"-x"})
    {
        const SHostRun run = RunRunner(
            {L"case", L"Arithmetic:Skips", L"--", mode, L"-d", folder.GetPath(), L"--dll", L"googletesttests"});

        EXPECT_EQ(run.exitStatus, 77) << run.errors;
        EXPECT_NE(run.output.find("Arithmetic:Skips: übersprungen ("), std::string::npos) << run.output;
        EXPECT_NE(run.output.find("INFO:  Übersprungen: no coprocessor"), std::string::npos) << run.output;
    }
}

/// A module with many suites. Only one of them has a folder.
class RunnerSuitesWithoutFolder : public testing::Test
{
protected:
    RunnerSuitesWithoutFolder() { m_folder.MakeFolder(L"data/unten/Arithmetic"); }

    SHostRun Run(std::vector<std::wstring> arguments, const std::wstring& module = L"googletesttests") const
    {
        arguments.insert(arguments.end(), {L"--", L"-d", m_folder.GetPathOf(L"data"), L"--dll", module, L"-c", L"1"});
        return RunRunner(arguments);
    }

    static constexpr const char* c_Line = "Im Datenverzeichnis fehlen Ordner für All.DISABLED_Words, Buffer, Crashes "
                                          "und 19 weitere: 'LuTestSuiteRunner folders' legt sie an\n";

    ScopedFolder m_folder;
};

TEST_F(RunnerSuitesWithoutFolder, AreNamedInWarningsOfListAndRun)
{
    const std::wstring out = m_folder.GetPathOf(L"out");
    const std::vector<std::vector<std::wstring>> commands = {
        {L"list"}, {L"list", L"--ctest", m_folder.GetPathOf(L"cases.cmake")}, {L"run", L"--out", out}};
    for (const std::vector<std::wstring>& command : commands)
    {
        const SHostRun run = Run(command);

        EXPECT_EQ(FromPlatformLines(run.errors), std::string("Warnung: ") + c_Line);
        EXPECT_EQ(run.exitStatus, 0) << run.output;
    }
}

TEST_F(RunnerSuitesWithoutFolder, AreNotReportedIfTheSelectionLeavesThemOut)
{
    const SHostRun run = RunRunner(
        {L"list", L"--", L"-d", m_folder.GetPathOf(L"data"), L"--dll", L"googletesttests", L"-i", L"/Arithmetic:"});

    EXPECT_EQ(run.errors, "");
}

TEST_F(RunnerSuitesWithoutFolder, MakeARunRedIfAllModulesAreRequired)
{
    const SHostRun run = Run({L"run", L"--require-all-modules", L"--out", m_folder.GetPathOf(L"out")});

    EXPECT_NE(FromPlatformLines(run.output).find(std::string("Fehler: ") + c_Line), std::string::npos) << run.output;
    EXPECT_EQ(run.errors.find("Warnung: "), std::string::npos) << run.errors;
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_F(RunnerSuitesWithoutFolder, AreNotReportedAfterTheirFoldersWereCreated)
{
    RunRunner({L"folders", L"--", L"-d", m_folder.GetPathOf(L"data"), L"--dll", L"googletesttests"});

    EXPECT_EQ(Run({L"list"}).errors, "");
}

TEST_F(RunnerSuitesWithoutFolder, AreNotReportedForOrdinaryUnitTests)
{
    EXPECT_EQ(Run({L"list"}, L"resultmodels").errors, "");
}

TEST_F(RunnerSuitesWithoutFolder, AreNamedInTheSingularIfThereIsOnlyOne)
{
    const SHostRun run = Run({L"list"}, L"googletestprefixedtests");

    EXPECT_EQ(FromPlatformLines(run.errors), "Warnung: Im Datenverzeichnis fehlt ein Ordner für Second.Arithmetic: "
                                             "'LuTestSuiteRunner folders' legt ihn an\n");
}

} // namespace
