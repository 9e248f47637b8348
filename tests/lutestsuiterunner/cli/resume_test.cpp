#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/folder.h"
#include "testing/lutestsuiterunner/journal/reader.h"
#include "tests/lutestsuiterunner/cli/runnertest.h"

namespace
{

class RunnerResume : public RunnerTest
{
protected:
    /// The cases that the journal shows as started, in their order.
    std::vector<std::uint32_t> GetStarted(std::uint32_t journal) const
    {
        std::vector<std::uint32_t> cases;
        for (const nlohmann::json& record : ReadRecords(journal))
        {
            if (record.at("t") == "start")
            {
                cases.push_back(record.at("case").get<std::uint32_t>());
            }
        }
        return cases;
    }

    /// Replaces the run by one that has a changed plan and has not executed any case.
    void ChangePlan(const std::function<void(Runner::SPlan&)>& change) const
    {
        Runner::SPlan plan = Runner::LoadRun(GetOut())->GetPlan();
        change(plan);
        Runner::CRunFolder(GetOut()).BeginRun(plan)->Close();
    }

    void RenameInPlan(const std::wstring& name, const std::wstring& newName) const
    {
        ChangePlan([&](Runner::SPlan& plan) {
            std::ranges::find(plan.unitTests, name, &LuTestSuite::SUnitTest::className)->className = newName;
        });
    }
};

TEST_F(RunnerResume, ContinuesAfterACaseThatCrashesTheHost)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers handle crashes themselves";
#endif
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

TEST_F(RunnerResume, WorksAfterAReportThatNamesTheInterruptedCase)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers handle crashes themselves";
#endif
    m_folder.MakeFolder(L"data/CCrashModel");
    Run({L"run"}, {L"-i", L":vorher$", L"-i", L":Zugriffsverletzung$", L"-i", L":nachher$"});

    const SHostRun report = RunRunner({L"report", GetOut()});

    EXPECT_EQ(report.exitStatus, 1) << report.errors;
    ExpectLine(report.output, "Nicht ausgeführt: CCrashModel:nachher\n"
                              "Lief noch, als der Prozess des Laufs endete: CCrashModel:Zugriffsverletzung\n"
                              "Meldungen dieses Prozesses:\n"
                              "Fehler: Absturz in 'CCrashModel:Zugriffsverletzung': ");
    EXPECT_EQ(report.output.find("Nicht ausgeführt: CCrashModel:Zugriffsverletzung"), std::string::npos);
    const std::string junit = LbFileSystem::ReadFile8Bit(GetOut() + Runner::c_JunitName);
    ExpectLine(junit, "<error message=\"Lief noch, als der Prozess endete, der den Lauf ausführte\"");
    const auto summary = nlohmann::json::parse(LbFileSystem::ReadFile8Bit(GetOut() + Runner::c_SummaryName));
    EXPECT_EQ(summary.at("open").at(0).at("name"), "Zugriffsverletzung");
    EXPECT_EQ(Resume().exitStatus, 1);
}

TEST_F(RunnerResume, ReportsNoInterruptedCaseWhileTheRunIsInProgress)
{
    m_folder.MakeFolder(L"data/CFlakyModel");
    Run({L"run"}, {L"-i", L"beendet den Prozess"});
    const auto lock = LbOs::CFolderLock::TryAcquire(GetOut());
    ASSERT_NE(lock, nullptr);

    const SHostRun report = RunRunner({L"report", GetOut()});

    EXPECT_EQ(report.exitStatus, 1) << report.errors;
    ExpectLine(report.output, "Noch in Arbeit: CFlakyModel:");
    EXPECT_EQ(report.output.find("Lief noch"), std::string::npos);
    ExpectLine(LbFileSystem::ReadFile8Bit(GetOut() + Runner::c_JunitName),
               "<skipped message=\"Begonnen, noch nicht beendet\"/>");
}

TEST_F(RunnerResume, RefusesToRunIfAClassOrFolderIsMissing)
{
    m_folder.MakeFolder(L"data/CResultModel");
    m_folder.MakeFolder(L"data/CPassedModel");
    Run({L"run", L"--fail-fast"});
    const std::wstring moved = m_folder.GetPathOf(L"data/CPassedModel");
    LbFileSystem::RemoveTree(moved);

    const SHostRun withoutFolder = Resume();

    EXPECT_EQ(withoutFolder.exitStatus, 2);
    ExpectLine(withoutFolder.errors, "Fehler: Zum Fortsetzen fehlt der Ordner " + LbEncoding::ToUtf8(moved));
    EXPECT_FALSE(LbFileSystem::Exists(GetOut() + Runner::GetJournalName(2)));
    LbFileSystem::AssertDirectory(moved);
    RenameInPlan(L"CResultModel", L"CNochNie");

    const SHostRun withoutClass = Resume();

    EXPECT_EQ(withoutClass.exitStatus, 2);
    ExpectLine(withoutClass.errors, "Fehler: Zum Fortsetzen fehlt die Klasse CNochNie aus dem Modul resultmodels.");
    EXPECT_FALSE(LbFileSystem::Exists(GetOut() + Runner::GetJournalName(2)));
}

TEST_F(RunnerResume, WarnsOfAMissingModule)
{
    m_folder.MakeFolder(L"data/CResultModel");
    Run({L"run", L"--fail-fast"}, {L"--dll", L"gibtesnicht"});

    ExpectLine(Resume().errors, "Warnung: " + DescribeMissingModule(L"gibtesnicht") + "\n");
}

TEST_F(RunnerResume, WarnsIfTheBuildHasChanged)
{
    m_folder.MakeFolder(L"data/CPassedModel");
    Run({L"run"});
    ChangePlan([](Runner::SPlan& plan) { plan.origin.machine += L"2"; });
    const std::string warning = " und seine Fortsetzung haben verschiedene Builds\n";
    EXPECT_EQ(FromPlatformLines(Resume().errors).find(warning), std::string::npos);

    ChangePlan([](Runner::SPlan& plan) { plan.origin.buildConfiguration += L"2"; });
    const SHostRun run = Resume();

    EXPECT_EQ(run.exitStatus, 0);
    ExpectLine(run.errors, warning);
}

TEST_F(RunnerResume, RunsACaseInItsOwnProcessIfItEndedTheHostSilently)
{
    m_folder.MakeFolder(L"data/CFlakyModel");
    const std::vector<std::wstring> selection = {L"-i", L"beendet den Prozess"};
    Run({L"run"}, selection);

    const SHostRun run = Resume();

    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    ExpectLine(run.output, "Fälle: 1, bestanden: 1");
    EXPECT_EQ(CountRecords("start", 2), 1U);
}

TEST_F(RunnerResume, RetriesACaseInItsOwnProcessIfItEndedTheHostSilently)
{
    m_folder.MakeFolder(L"data/CVanishingModel");
    Run({L"run", L"--retries", L"2"});

    const SHostRun run = Resume();

    EXPECT_EQ(run.exitStatus, 1) << run.output << run.errors;
    ExpectLine(run.output, "Fälle: 2, bestanden: 1, unzuverlässig: 0, fehlgeschlagen: 1");
    EXPECT_EQ(CountRecords("finish", 2), 1U);
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

TEST_F(RunnerResume, RunsTheRemainingCasesOfAnAbortedRun)
{
    m_folder.MakeFolder(L"data/CResultModel");
    Run({L"run", L"--fail-fast"});

    const SHostRun run = Resume();

    EXPECT_EQ(run.exitStatus, 1);
    ExpectLine(run.output, "Fälle: 7, bestanden: 2, unzuverlässig: 0, fehlgeschlagen: 5");
}

TEST_F(RunnerResume, KeepsTheFailureLimitUntilItIsReached)
{
    m_folder.MakeFolder(L"data/CCrashModel");
    Run({L"run", L"--fail-fast=2"}, {L"-i", L":abort$", L"-i", L":exit$", L"-i", L":nachher$"});
    Resume();

    const SHostRun run = Resume();

    ExpectLine(run.output, "nach 2 fehlgeschlagenen Testfällen (--fail-fast)");
    ExpectLine(run.output, "fehlgeschlagen: 2, in Quarantäne: 0, nicht ausgeführt: 1");
    ExpectLine(Resume().output, "bestanden: 1, unzuverlässig: 0, fehlgeschlagen: 2,");
}

TEST_F(RunnerResume, KeepsTheProblemsOfTheRun)
{
    m_folder.MakeFolder(L"data/CResultModel");
    const std::vector<std::wstring> selection = {L"-i",    L":abweichend$", L"-i", L":fehlgeschlagen$",
                                                 L"--dll", L"fehlt"};
    Run({L"run", L"--min-cases", L"9", L"--require-all-modules", L"--fail-fast"}, selection);

    const SHostRun run = Resume();

    ExpectLine(run.output, "Fehler: Die Auswahl trifft 2 Testfälle, verlangt sind mindestens 9\n");
    ExpectLine(run.output, "Fehler: " + DescribeMissingModule(L"fehlt") + "\n");
    EXPECT_EQ(CountRecords("problem", 2), 2U);
}

TEST_F(RunnerResume, WarnsIfTheLastLineOfTheJournalIsDamaged)
{
    m_folder.MakeFolder(L"data/CPassedModel");
    Run({L"run"});
    // The run is complete except for its last line.
    std::string journal = LbFileSystem::ReadFile8Bit(GetOut() + Runner::GetJournalName(1));
    journal[journal.size() - 4] = '#';
    m_folder.WriteFile(L"out/journal.ndjson", journal);

    ExpectLine(RunRunner({L"report", GetOut()}).errors,
               " endet mit einer beschädigten Zeile, die nicht zählt: Zeile 6,");
    const SHostRun run = Resume();

    EXPECT_EQ(run.exitStatus, 0);
    ExpectLine(run.errors, "Warnung: Das Journal ");
    ExpectLine(run.errors, " endet mit einer beschädigten Zeile, die nicht zählt: Zeile 6, Byte ");
}

TEST_F(RunnerResume, LeavesACompleteRunAsItIs)
{
    m_folder.MakeFolder(L"data/CResultModel");
    Run({L"run", L"--retries", L"1"});
    const std::string summary = LbFileSystem::ReadFile8Bit(GetOut() + Runner::c_SummaryName);

    const SHostRun run = Resume();

    EXPECT_EQ(run.exitStatus, 1);
    ExpectLine(run.output, " ist vollständig: es gibt nichts fortzusetzen\n");
    ExpectLine(run.output, "Fälle: 7, bestanden: 2");
    EXPECT_FALSE(LbFileSystem::Exists(GetOut() + Runner::GetJournalName(2)));
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(GetOut() + Runner::c_SummaryName), summary);
}

TEST_F(RunnerResume, WritesMissingReportsOfACompleteRun)
{
    m_folder.MakeFolder(L"data/CPassedModel");
    Run({L"run"});
    LbOs::RemoveFile(GetOut() + Runner::c_JunitName);

    EXPECT_EQ(Resume().exitStatus, 0);
    EXPECT_TRUE(LbFileSystem::IsFile(GetOut() + Runner::c_JunitName));
}

TEST_F(RunnerResume, ConfirmsFailuresOnRequest)
{
    m_folder.MakeFolder(L"data/CSharedStateModel");
    EXPECT_EQ(Run({L"run"}).exitStatus, 1);

    const SHostRun run = Resume({L"--confirm"});

    EXPECT_EQ(run.exitStatus, 1);
    ExpectLine(run.output, "NUR IM GEMEINSAMEN PROZESS CSharedStateModel:braucht einen frischen Prozess");
}

TEST_F(RunnerResume, KeepsTheRandomOrderOfTheRun)
{
    m_folder.MakeFolder(L"data/CResultModel");
    Run({L"run", L"--order", L"random:3"});
    const std::vector<std::uint32_t> whole = GetStarted(1);
    Run({L"run", L"--order", L"random:3", L"--fail-fast", L"--force"});

    Resume();

    std::vector<std::uint32_t> parts = GetStarted(1);
    const std::vector<std::uint32_t> rest = GetStarted(2);
    parts.insert(parts.end(), rest.begin(), rest.end());
    EXPECT_EQ(parts, whole);
    EXPECT_FALSE(std::ranges::is_sorted(rest));
}

TEST_F(RunnerResume, FindsThePrintedRandomSeedInThePlan)
{
    m_folder.MakeFolder(L"data/CPassedModel");
    const std::string output = Run({L"run", L"--order", L"random"}).output;

    const std::string plan = LbFileSystem::ReadFile8Bit(GetOut() + L"plan.ndjson");
    const std::size_t seed = plan.find("--order=random:");
    ASSERT_NE(seed, std::string::npos);
    ExpectLine(output, "--order random:" + plan.substr(seed + 15, plan.find('"', seed) - seed - 15) + "\n");
}

TEST_F(RunnerResume, CountsACaseForTheFailureLimitOnlyAfterItsRetries)
{
    m_folder.MakeFolder(L"data/CFlakyModel");
    m_folder.MakeFolder(L"data/CInterruptingModel");
    const std::vector<std::wstring> selection = {L"-i", L"besteht nie", L"-i", L":Strg-C$"};
    if (Run({L"run", L"--retries", L"1", L"--fail-fast=2"}, selection).exitStatus != 130)
    {
        GTEST_SKIP() << "raise() does not reach the console's handler";
    }

    const SHostRun run = Resume();

    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(run.output.find("--fail-fast"), std::string::npos) << run.output;
}

TEST_F(RunnerResume, KeepsTheQuarantineIfItsFileIsMissing)
{
    m_folder.MakeFolder(L"data/CFailedModel");
    m_folder.MakeFolder(L"data/CCrashModel");
    const std::wstring file = m_folder.WriteFile(L"quarantaene.txt", "CFailedModel\nCCrashModel\n");
    Run({L"run", L"--quarantine", file}, {L"-i", L":exit$", L"-i", L"CFailedModel"});
    LbOs::RemoveFile(file);

    const SHostRun run = Resume();

    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    ExpectLine(run.errors, "fehlt; ihre Testfälle bleiben in Quarantäne");
    ExpectLine(run.output, "in Quarantäne: 2,");
}

TEST_F(RunnerResume, StartsARunThatHasAPlanButNoJournal)
{
    m_folder.MakeFolder(L"data/CPassedModel");
    Run({L"run"});
    LbOs::RemoveFile(GetOut() + L"journal.ndjson");

    const SHostRun run = Resume();

    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    ExpectLine(run.output, "Fälle: 2, bestanden: 2");
}

TEST_F(RunnerResume, RefusesAFolderWithoutARun)
{
    const SHostRun run = Resume();

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "enthält keinen Lauf");
}

} // namespace
