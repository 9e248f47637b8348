#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "tests/lutestsuiterunner/cli/runnertest.h"

namespace
{

using RunnerResume = RunnerTest;

TEST_F(RunnerResume, GoesOnBehindACaseThatCrashesTheHost)
{
    m_folder.MakeFolder(L"data/CCrashModel");
    const std::vector<std::wstring> selection = {L"-i", L":vorher$", L"-i", L":Zugriffsverletzung$",
                                                 L"-i", L":nachher$"};
    const SHostRun broken = Run({L"run"}, selection);
    EXPECT_NE(broken.exitStatus, 0);
    EXPECT_NE(broken.exitStatus, 1);

    const SHostRun run = Resume();

    EXPECT_EQ(run.exitStatus, 1) << run.errors;
    ExpectLine(run.output, "Fehlgeschlagen:\n    CCrashModel:Zugriffsverletzung\n");
    ExpectLine(run.output, "Fälle: 3, bestanden: 2, unzuverlässig: 0, fehlgeschlagen: 1");
    EXPECT_NE(LbFileSystem::ReadFile8Bit(GetOut() + L"junit.xml").find("Absturz des Prozesses"), std::string::npos);
}

TEST_F(RunnerResume, RunsACaseThatEndsTheHostSilentlyInItsOwnProcess)
{
    m_folder.MakeFolder(L"data/CFlakyModel");
    const std::vector<std::wstring> selection = {L"-i", L"beendet den Prozess"};
    Run({L"run"}, selection);

    const SHostRun run = Resume();

    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    ExpectLine(run.output, "Fälle: 1, bestanden: 1");
    EXPECT_EQ(CountRecords("start", 2), 1U);
}

TEST_F(RunnerResume, BlamesACaseThatCallsExit)
{
    m_folder.MakeFolder(L"data/CCrashModel");
    EXPECT_EQ(Run({L"run"}, {L"-i", L":vorher$", L"-i", L":exit$", L"-i", L":nachher$"}).exitStatus, 2);

    const SHostRun run = Resume();

    EXPECT_EQ(run.exitStatus, 1);
    ExpectLine(run.output, "Fehlgeschlagen:\n    CCrashModel:exit\n");
    ExpectLine(run.output, "bestanden: 2,");
}

TEST_F(RunnerResume, RunsWhatAnAbortedRunHasLeft)
{
    m_folder.MakeFolder(L"data/CResultModel");
    Run({L"run", L"--fail-fast"});

    const SHostRun run = Resume();

    EXPECT_EQ(run.exitStatus, 1);
    ExpectLine(run.output, "Fälle: 7, bestanden: 2, unzuverlässig: 0, fehlgeschlagen: 5");
}

TEST_F(RunnerResume, KeepsTheLimitOfFailuresUntilItIsReached)
{
    m_folder.MakeFolder(L"data/CCrashModel");
    Run({L"run", L"--fail-fast=2"}, {L"-i", L":abort$", L"-i", L":exit$", L"-i", L":nachher$"});
    Resume();

    const SHostRun run = Resume();

    ExpectLine(run.output, "nach 2 fehlgeschlagenen Fällen (--fail-fast)");
    ExpectLine(run.output, "fehlgeschlagen: 2, in Quarantäne: 0, nicht ausgeführt: 1");
    ExpectLine(Resume().output, "bestanden: 1, unzuverlässig: 0, fehlgeschlagen: 2,");
}

TEST_F(RunnerResume, LeavesACompleteRunAsItIs)
{
    m_folder.MakeFolder(L"data/CPassedModel");
    Run({L"run"});

    const SHostRun run = Resume();

    EXPECT_EQ(run.exitStatus, 0);
    ExpectLine(run.output, "Fälle: 2, bestanden: 2");
}

TEST_F(RunnerResume, ConfirmsFailuresIfTold)
{
    m_folder.MakeFolder(L"data/CSharedStateModel");
    EXPECT_EQ(Run({L"run"}).exitStatus, 1);

    const SHostRun run = Resume({L"--confirm"});

    EXPECT_EQ(run.exitStatus, 1);
    ExpectLine(run.output, "NUR IM GEMEINSAMEN PROZESS CSharedStateModel:braucht einen frischen Prozess");
}

TEST_F(RunnerResume, RefusesAFolderWithoutARun)
{
    const SHostRun run = Resume();

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "enthält keinen Lauf");
}

} // namespace
