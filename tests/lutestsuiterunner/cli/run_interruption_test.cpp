// Runs that Ctrl-C or the system cancels.

#include <string>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "tests/lutestsuiterunner/cli/runnertest.h"

namespace
{

/// Skipped on Windows, where a process cannot send itself the events of the console.
class RunnerInterruption : public RunnerTest
{
protected:
    void SetUp() override
    {
        if (LbPath::c_Separator == L'\\')
        {
            GTEST_SKIP() << "raise() does not reach the console's handler";
        }
        m_folder.MakeFolder(L"data/CInterruptingModel");
    }
};

TEST_F(RunnerInterruption, EndsTheRunWithReportsAndTheStatusOfTheSignal)
{
    const SHostRun run = Run({L"run"}, {L"-i", L":Strg-C$", L"-i", L":danach$"});

    EXPECT_EQ(run.exitStatus, 130) << run.errors;
    ExpectLine(run.output, "Der Lauf wurde abgebrochen: durch den Benutzer (Strg-C)");
    ExpectLine(run.output, "bestanden: 1, unzuverlässig: 0, fehlgeschlagen: 0, in Quarantäne: 0, nicht ausgeführt: 1");
    EXPECT_TRUE(LbFileSystem::IsFile(GetOut() + L"junit.xml"));
    EXPECT_EQ(RunRunner({L"resume", GetOut()}).exitStatus, 0);
}

TEST_F(RunnerInterruption, EndsTheRunAfterATerminationSignal)
{
    EXPECT_EQ(Run({L"run"}, {L"-i", L":Ende verlangt$", L"-i", L":danach$"}).exitStatus, 143);
}

TEST_F(RunnerInterruption, EndsTheRunWithReportsEvenIfACaseDoesNotReturn)
{
    const SHostRun run = Run({L"run"}, {L"-i", L":Strg-C ohne Ende$", L"-i", L":danach$"});

    EXPECT_EQ(run.exitStatus, 130) << run.errors;
    ExpectLine(run.errors, "Abbruch angefordert; noch einmal Strg-C beendet sofort\n");
    ExpectLine(run.errors, "Warnung: Der Lauf endet, obwohl ein Testfall im Prozess des Laufs noch läuft\n");
    ExpectLine(run.output, "Der Lauf wurde abgebrochen: durch den Benutzer (Strg-C)");
    const std::string junit = LbFileSystem::ReadFile8Bit(GetOut() + L"junit.xml");
    EXPECT_NE(junit.find("Lief noch"), std::string::npos) << junit;
    EXPECT_TRUE(LbFileSystem::IsFile(GetOut() + L"report.xml"));
}

TEST_F(RunnerInterruption, GivesNoVerdictToACaseWhoseProcessEndsWithTheHost)
{
    const SHostRun run = Run({L"run"}, {L"-x", L"-i", L":Ende für alle$"});

    EXPECT_EQ(run.exitStatus, 143) << run.errors;
    ExpectLine(run.output, "fehlgeschlagen: 0, in Quarantäne: 0, nicht ausgeführt: 1");
    ExpectLine(run.output, "Lief beim Abbruch: CInterruptingModel:Ende für alle (");
    EXPECT_EQ(run.output.find("Nicht ausgeführt:"), std::string::npos) << run.output;
}

TEST_F(RunnerInterruption, KeepsThePassedRunsOfTheQuarantine)
{
    const std::wstring file = m_folder.WriteFile(L"quarantaene.txt", "CInterruptingModel:danach\n");
    const std::wstring second = m_folder.GetPathOf(L"zweiter");
    ASSERT_EQ(Run({L"run", L"--quarantine", file}, {L"-i", L":danach$"}).exitStatus, 0);

    Run({L"run", L"--quarantine", file, L"--previous", GetOut(), L"--out", second},
        {L"-i", L":Strg-C$", L"-i", L":danach$"});

    const std::string numbers = LbFileSystem::ReadFile8Bit(second + L"/quarantine.json");
    EXPECT_NE(numbers.find("\"passedRuns\": 1,"), std::string::npos) << numbers;
}

TEST_F(RunnerInterruption, EndsTheRunWithoutReportsAtTheSecondRequest)
{
    const SHostRun run = Run({L"run"}, {L"-i", L":zweimal Strg-C$", L"-i", L":danach$"});

    EXPECT_EQ(run.exitStatus, 130);
    EXPECT_EQ(run.output.find("Reports: "), std::string::npos);
    EXPECT_FALSE(LbFileSystem::Exists(GetOut() + L"junit.xml"));
}

} // namespace
