#include <chrono>
#include <filesystem>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/os/childprocess.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/folder.h"
#include "testing/lutestsuiterunner/journal/planfile.h"
#include "tests/lutestsuiterunner/cli/distributedtest.h"
#include "tests/lutestsuiterunner/samplerun.h"
#include "tests/support/places.h"

namespace
{

class RunnerSubmit : public DistributedTest
{
};

TEST_F(RunnerSubmit, WritesTheSameReportsAsARunInOneProcess)
{
    MakeMixedData();
    EXPECT_EQ(Submit({L"--shards", L"3", L"--retries", L"1"}).exitStatus, 1);
    EXPECT_EQ(Run({L"run", L"--out", GetOther(), L"--retries", L"1"}).exitStatus, 1);

    ExpectSameReports(GetOut(), GetOther());
    ExpectProof(GetOut());
}

TEST_F(RunnerSubmit, WritesTheSameReportsOfTheExamplesAsARunInOneProcess)
{
    const SHostRun whole = RunExamples({L"run", L"--out", GetOther()});
    EXPECT_EQ(whole.exitStatus, 1) << whole.errors;
    EXPECT_EQ(RunExamples({L"submit", L"--shards", L"4", L"--out", GetOut()}).exitStatus, 1);

    EXPECT_EQ(whole.output.find("Fälle: 0,"), std::string::npos) << whole.output;
    ExpectSameReports(GetOut(), GetOther());
    ExpectProof(GetOut());
}

TEST_F(RunnerSubmit, ReportsAClassThatIsMissingOnAMachine)
{
    MakeDurations({1});
    Submit({L"--shards", L"1"});
    const std::wstring folder = GetOut() + Runner::GetShardFolderName(1);
    Runner::SPlan plan = Runner::ReadPlan(folder + Runner::c_PlanName);
    plan.unitTests[0].className = L"CFehlt";
    plan.unitTests[0].moduleName = L"fehlende";
    Runner::BeginPlan(folder, plan);
    const SHostRun run = RunRunner({L"run", L"--planned", L"--shard", L"1/1", L"--out", folder});

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "Fehler: Auf dem Rechner ");
    ExpectLine(run.errors, " fehlt die Klasse CFehlt aus dem Modul fehlende\n");
}

TEST_F(RunnerSubmit, ReportsThatTheProgramOfChildProcessesIsMissingOnAMachine)
{
    if (LbPath::c_Separator != L'/')
    {
        GTEST_SKIP() << "a copy of the host would need the libraries of the compiler";
    }
    MakeDurations({1});
    Submit({L"--shards", L"1"});
    const std::filesystem::path runner(LUTESTSUITE_RUNNER);
    const std::filesystem::path copy(m_folder.MakeFolder(L"node"));
    for (const auto& entry : std::filesystem::directory_iterator(runner.parent_path()))
    {
        const std::filesystem::path name = entry.path().filename();
        if (name == runner.filename() || name.string().starts_with("libL"))
        {
            std::filesystem::copy(entry.path(), copy / name, std::filesystem::copy_options::copy_symlinks);
        }
    }
    SHostOptions options;
    options.program = (copy / runner.filename()).wstring();
    const SHostRun run = RunHost(
        {L"run", L"--planned", L"--shard", L"1/1", L"--out", GetOut() + Runner::GetShardFolderName(1)}, options);

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors,
               " fehlt das Programm " + LbEncoding::ToUtf8(options.program).substr(0, copy.string().size()));
}

TEST_F(RunnerSubmit, PrintsPlanAndOutcome)
{
    m_folder.MakeFolder(L"data/CPassedModel");
    const SHostRun run = Submit({L"--shards", L"2"});

    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    ExpectLine(run.output, "Testfälle in 2 Teilen\n");
    ExpectLine(run.output, "fehlgeschlagen: 0, in Quarantäne: 0, nicht ausgeführt: 0");
}

TEST_F(RunnerSubmit, ContinuesAfterACaseThatEndsItsHost)
{
    m_folder.MakeFolder(L"data/CCrashModel");
    const SHostRun run = Submit({L"--shards", L"1"}, {L"-i", L":vorher$", L"-i", L":Zugriffsverletzung$", L"-i",
                                                      L":exit$", L"-i", L":nachher$"});

    EXPECT_EQ(run.exitStatus, 1) << run.errors;
    ExpectLine(run.output, "Fälle: 4, bestanden: 2, unzuverlässig: 0, fehlgeschlagen: 2");
    ExpectProof(GetOut());
}

TEST_F(RunnerSubmit, ContinuesIfCrashesExceedTheAllowedLosses)
{
    m_folder.MakeFolder(L"data/CCrashModel");
    const SHostRun run =
        Submit({L"--shards", L"1"}, {L"-i", L":Zugriffsverletzung$", L"-i", L":exit$", L"-i", L":abort$", L"-i",
                                     L":terminate$", L"-i", L":Division durch null$", L"-i", L":nachher$"});

    EXPECT_EQ(run.exitStatus, 1) << run.errors;
    ExpectLine(run.output, "Fälle: 6, bestanden: 1, unzuverlässig: 0, fehlgeschlagen: 5");
    EXPECT_EQ(run.output.find("Fehler: Teil"), std::string::npos) << run.output;
    ExpectProof(GetOut());
}

TEST_F(RunnerSubmit, PlansShardsByTheTimesOfAnEarlierRun)
{
    MakeDurations({300, 1, 1, 1, 1, 1});
    Run({L"run", L"--out", GetOther()});
    const SHostRun run = Submit({L"--shards", L"2", L"--previous", GetOther()});

    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    ExpectLine(run.output, "6 Testfälle in 2 Teilen, erwartet je Teil: 0:00, mindestens der längste Testfall: 0:00\n");
    EXPECT_EQ(Runner::ReadPlan(GetOut() + LbPath::ToNative(L"shard-1/plan.ndjson")).cases.size(), 1U);
}

TEST_F(RunnerSubmit, WarnsOfUndecidedDifferencesFromReferences)
{
    MakeDurations({1});
    m_folder.WriteFile(L"data/CDurationModel/a.txt.received", "neu\n");

    const SHostRun run = Submit({L"--shards", L"1"});

    ExpectLine(run.errors, "a.txt.received ist nicht geprüft");
    EXPECT_EQ(run.exitStatus, 0) << run.errors;
}

TEST_F(RunnerSubmit, WarnsIfNoCaseCanHaveAMemoryDump)
{
    MakeDurations({1});

    ExpectLine(Submit({L"--shards", L"1", L"--core", m_folder.GetPathOf(L"Abbilder")}).errors,
               "Warnung: '--core' bewirkt nichts: ");
}

TEST_F(RunnerSubmit, ReportsADataFolderThatIsMissingOnAMachine)
{
    MakeDurations({1, 1, 1, 1});
    Submit({L"--shards", L"2", L"--detach"});
    RunRunner({L"wait", GetOut()});
    LbFileSystem::RemoveTree(m_folder.GetPathOf(L"data"));
    const SHostRun run =
        RunRunner({L"run", L"--planned", L"--shard", L"1/2", L"--out", GetOut() + Runner::GetShardFolderName(1)});

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "fehlt der Ordner ");
    // The shard already has all verdicts, so the failed host does not matter.
    EXPECT_EQ(RunRunner({L"report", GetOut()}).exitStatus, 0);
}

TEST_F(RunnerSubmit, GivesTheReasonWhenNoMachineCanRunAShard)
{
    MakeDurations({1, 1});
    Submit({L"--shards", L"1", L"--detach"});
    RunRunner({L"wait", GetOut()});
    // Makes the run look as if it has not ended and its shard was lost.
    LbFileSystem::RemoveTree(GetOut() + Runner::c_ProofName);
    LbFileSystem::RemoveTree(GetOut() + Runner::GetShardFolderName(1) + Runner::GetJournalName(1));
    LbFileSystem::RemoveTree(m_folder.GetPathOf(L"data"));
    const SHostRun run = RunRunner({L"wait", GetOut()});

    EXPECT_EQ(run.exitStatus, 1);
    ExpectLine(run.output,
               "Fehler: Teil 1 ging 4-mal hintereinander ohne neues Ergebnis verloren, zuletzt: Auf dem Rechner ");
    ExpectLine(run.output, "Nicht ausgeführt: CDurationModel:0.ms\n");
}

TEST_F(RunnerSubmit, KeepsReportsAndProofIfHostsWriteAfterItsEnd)
{
    MakeDurations({1, 1});
    Submit({L"--shards", L"1"});
    const auto readResults = [this] {
        std::string texts;
        for (const wchar_t* const name :
             {Runner::c_XmlReportName, Runner::c_HtmlReportName, Runner::c_JunitName, Runner::c_ProofName})
        {
            texts += LbFileSystem::ReadFile8Bit(GetOut() + name);
        }
        return texts;
    };
    const std::string results = readResults();
    const std::wstring shard = GetOut() + Runner::GetShardFolderName(1);
    const auto late = Runner::JoinRun(shard, Runner::ReadPlan(shard + Runner::c_PlanName));
    late->Write(MakeStart(0));
    late->Write(MakeEnd(0, LuTestSuiteRun::ECaseRunResult::Error));
    late->Close();

    EXPECT_EQ(RunRunner({L"report", GetOut()}).exitStatus, 0);
    EXPECT_TRUE(readResults() == results);
    EXPECT_EQ(RunRunner({L"wait", GetOut()}).exitStatus, 0);
    EXPECT_TRUE(readResults() == results);
    ExpectProof(GetOut());
}

TEST_F(RunnerSubmit, IsNotContinuedByWaitAfterItsEnd)
{
    MakeDurations({60000, 60000});
    Submit({L"--shards", L"2", L"--detach"});
    RunRunner({L"cancel", GetOut()});
    RunRunner({L"wait", GetOut()});
    const std::string proof = LbFileSystem::ReadFile8Bit(GetOut() + Runner::c_ProofName);
    LbFileSystem::RemoveTree(GetOut() + LbPath::ToNative(L"tasks/canceled"));
    MakeDurations({1, 1});

    EXPECT_EQ(RunRunner({L"wait", GetOut()}).exitStatus, 1);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(GetOut() + Runner::c_ProofName), proof);
}

TEST_F(RunnerSubmit, RefusesAShardFolderWithAnotherNumber)
{
    MakeDurations({1, 1});
    Submit({L"--shards", L"2"});
    const SHostRun run =
        RunRunner({L"run", L"--planned", L"--shard", L"2/2", L"--out", GetOut() + Runner::GetShardFolderName(1)});

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "nicht den Plan von Teil 2 von 2");
}

TEST_F(RunnerSubmit, GoesOnInTheBackgroundAndCanBeWaitedFor)
{
    MakeDurations({400, 400, 1, 1});
    const SHostRun submitted = Submit({L"--shards", L"2", L"--detach"});
    EXPECT_EQ(submitted.exitStatus, 0) << submitted.errors;
    ExpectLine(submitted.output, "Vergeben. ");
    const SHostRun run = RunRunner({L"wait", GetOut()});

    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    ExpectLine(run.output, "Fälle: 4, bestanden: 4");
    ExpectProof(GetOut());
    ExpectLine(RunRunner({L"status", GetOut()}).output, "Teile: 2 von 2 fertig, 0 laufen, Fälle: 4/4");
}

TEST_F(RunnerSubmit, IsCanceledByTheCommandCancel)
{
    MakeDurations({60000, 60000});
    Submit({L"--shards", L"2", L"--detach"});
    EXPECT_EQ(RunRunner({L"cancel", GetOut()}).exitStatus, 0);
    const SHostRun run = RunRunner({L"wait", GetOut()});

    EXPECT_EQ(run.exitStatus, 1);
    ExpectLine(run.output, "Fehler: Der verteilte Lauf wurde abgebrochen\n");
    ExpectLine(Submit({L"--shards", L"2"}).errors, "enthält schon einen abgebrochenen Lauf: '--force' ersetzt ihn\n");
}

TEST_F(RunnerSubmit, StaysGreenIfItIsCanceledAfterItsEnd)
{
    MakeDurations({1});
    Submit({L"--shards", L"1"});
    const SHostRun cancel = RunRunner({L"cancel", GetOut()});
    EXPECT_EQ(cancel.exitStatus, 0) << cancel.errors;
    EXPECT_EQ(FromPlatformLines(cancel.output), "Der Lauf ist schon fertig.\n");

    EXPECT_EQ(RunRunner({L"wait", GetOut()}).exitStatus, 0);
}

TEST_F(RunnerSubmit, ReplacesARunOnlyIfForced)
{
    MakeDurations({1});
    EXPECT_EQ(Submit({L"--shards", L"1"}).exitStatus, 0);
    const SHostRun second = Submit({L"--shards", L"1"});
    EXPECT_EQ(second.exitStatus, 2);
    ExpectLine(second.errors, "enthält schon einen Lauf: 'wait' setzt ihn fort, '--force' ersetzt ihn\n");
    ExpectLine(Run({L"run", L"--out", GetOut()}).errors, "enthält schon einen Lauf: 'wait' setzt ihn fort");
    EXPECT_EQ(Submit({L"--shards", L"1", L"--force"}).exitStatus, 0);
    ExpectLine(RunRunner({L"resume", GetOut()}).errors, "ist verteilt: 'wait' setzt ihn fort");
}

TEST_F(RunnerSubmit, CountsThePassedRunsOfTheQuarantine)
{
    m_folder.MakeFolder(L"data/CFailedModel");
    m_folder.MakeFolder(L"data/CPassedModel");
    const std::wstring file = m_folder.WriteFile(L"quarantaene.txt", "CFailedModel\nCPassedModel\nCNochNie\n");
    EXPECT_EQ(Run({L"run", L"--out", GetOther(), L"--quarantine", file}).exitStatus, 0);
    const SHostRun run = Submit({L"--shards", L"2", L"--quarantine", file, L"--previous", GetOther()});

    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    ExpectLine(run.output, "Quarantäne: 'CNochNie' trifft keinen Testfall");
    const auto numbers = nlohmann::json::parse(LbFileSystem::ReadFile8Bit(GetOut() + L"quarantine.json"));
    ExpectLine(numbers.dump(), R"("passedRuns":0,"pattern":"CFailedModel")");
    ExpectLine(numbers.dump(), R"("passedRuns":2,"pattern":"CPassedModel")");
}

TEST_F(RunnerSubmit, RefusesSlurmIfItIsNotInstalled)
{
    MakeDurations({1});
    SHostOptions options;
    options.variables = {{L"PATH", m_folder.GetPath()}};
    const SHostRun run = Submit({L"--engine", L"slurm", L"--shards", L"2"}, {}, options);

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, LbPath::c_Separator == L'/' ? "Fehler: Slurm gibt es hier nicht: "
                                                       : "Fehler: Slurm gibt es nur unter Linux\n");
    EXPECT_FALSE(LbFileSystem::Exists(GetOut() + Runner::c_PlanName));
}

TEST_F(RunnerSubmit, KeepsMemoryDumpsRelativeToTheWorkingDirectory)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers handle crashes themselves";
#endif
    m_folder.MakeFolder(L"data/CCrashModel");
    SHostOptions options;
    options.workingDirectory = m_folder.GetPath();
    const SHostRun run = Submit({L"--shards", L"1", L"--core", L"Abbilder"}, {L"-i", L":abort$", L"-x"}, options);

    EXPECT_EQ(run.exitStatus, 1) << run.errors;
    const auto dumps = LbFileSystem::GetFileNames(m_folder.GetPathOf(LbPath::WithSeparator(L"Abbilder")));
    if (LbPath::c_Separator == L'\\' && dumps.empty())
    {
        GTEST_SKIP() << "Wine needs longer to write a dump than the crashed process waits: " << run.output;
    }
    EXPECT_EQ(dumps.size(), 1U);
}

TEST_F(RunnerSubmit, WritesRedReportsOfASelectionWithTooFewCases)
{
    MakeDurations({1});
    const SHostRun run = Submit({L"--shards", L"2", L"--min-cases", L"2"});

    EXPECT_EQ(run.exitStatus, 1) << run.errors;
    ExpectLine(run.output, "Fehler: Die Auswahl trifft 1 Testfall, verlangt sind mindestens 2\n");
    ExpectLine(run.output, "Fälle: 1, bestanden: 1");
    EXPECT_EQ(RunRunner({L"wait", GetOut()}).exitStatus, 1);
    EXPECT_EQ(RunRunner({L"report", GetOut()}).exitStatus, 1);
}

TEST_F(RunnerSubmit, WritesRedReportsOfAnEmptySelection)
{
    m_folder.MakeFolder(L"data");
    EXPECT_EQ(Submit({L"--shards", L"2"}).exitStatus, 1);
    EXPECT_EQ(Run({L"run", L"--out", GetOther()}).exitStatus, 1);

    ExpectSameReports(GetOut(), GetOther());
    ExpectProof(GetOut());
}

TEST_F(RunnerSubmit, WritesRedReportsIfARequiredModuleIsMissing)
{
    MakeDurations({1});
    const SHostRun run = Submit({L"--shards", L"1", L"--require-all-modules"}, {L"--dll", L"fehlt"});

    EXPECT_EQ(run.exitStatus, 1) << run.errors;
    ExpectLine(run.output, "Fehler: " + DescribeMissingModule(L"fehlt") + "\n");
    EXPECT_TRUE(LbFileSystem::IsFile(GetOut() + Runner::c_XmlReportName));
}

TEST_F(RunnerSubmit, CountsOnlyFailedCasesForTheMinimumNumber)
{
    m_folder.MakeFolder(L"data/CFailedModel");
    MakeDurations({1, 1, 1});
    EXPECT_EQ(Run({L"run", L"--out", GetOther()}).exitStatus, 1);
    const SHostRun run = Submit({L"--shards", L"1", L"--previous", GetOther(), L"--only-failed", L"--min-cases", L"3"});

    ExpectLine(run.output, "verlangt sind mindestens 3\n");
}

TEST_F(RunnerSubmit, IsGreenIfNoCaseFailedInTheEarlierRun)
{
    MakeDurations({1, 1});
    EXPECT_EQ(Run({L"run", L"--out", GetOther()}).exitStatus, 0);
    const SHostRun run = Submit({L"--shards", L"2", L"--previous", GetOther(), L"--only-failed"});

    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    ExpectLine(run.output, "ist kein Testfall der Auswahl fehlgeschlagen\n");
}

TEST_F(RunnerSubmit, WarnsOfCaseFilesInASubfolderOfAClassFolder)
{
    m_folder.WriteFile(L"data/CDurationModel/innen/0.ms", "1");
    ExpectLine(Submit({L"--shards", L"1"}).errors, ": Ordner im Ordner einer Klasse werden nicht durchsucht\n");
}

TEST_F(RunnerSubmit, ReportsInvalidArguments)
{
    MakeDurations({1});
    ExpectLine(Submit({L"--engine", L"pbs"}).errors, "erwartet wird local oder slurm");
    ExpectLine(Submit({L"--engine", L"slurm"}).errors, "fehlt die Zahl der Teile (--shards)");
    ExpectLine(Submit({L"--only-failed"}).errors, "braucht '--previous'");
    ExpectLine(RunRunner({L"wait", m_folder.GetPathOf(L"nirgends")}).errors, "enthält keinen verteilten Lauf");
    ExpectLine(RunRunner({L"status"}).errors, "Der Ordner des Laufs fehlt");
}

} // namespace
