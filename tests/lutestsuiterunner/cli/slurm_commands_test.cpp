/// How the host uses the commands of Slurm. Stand-ins for them are in a folder that is first on the path.

#include <filesystem>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "testing/lutestsuiterunner/cluster/engine.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/planfile.h"
#include "tests/lutestsuiterunner/cli/distributedtest.h"
#include "tests/support/places.h"
#include "tests/support/scopedenvironment.h"

namespace
{

class RunnerSlurmCommands : public DistributedTest
{
protected:
    void SetUp() override
    {
        if (LbPath::c_Separator != L'/')
        {
            GTEST_SKIP() << "Slurm needs Linux";
        }
        m_options.variables = {{L"PATH", m_folder.GetPathOf(L"slurm:/usr/bin:/bin")}};
        // By default tasks vanish without a trace.
        WriteCommand(L"sbatch", "");
        WriteCommand(L"squeue", "");
        WriteCommand(L"scancel", "");
    }

    /// Writes a stand-in for a command. The stand-in appends its arguments to "<name>.txt", then runs the shell
    /// commands in `text`, both in the folder of the stand-ins. For sbatch, $script is the script, and $argument is its
    /// argument.
    void WriteCommand(const std::wstring& name, const std::string& text) const
    {
        const std::string start = "#!/bin/sh\ncd '" + LbEncoding::ToUtf8(m_folder.GetPathOf(L"slurm")) +
                                  "'\ntest \"$1\" = --version && exit\n"
                                  "echo \"$@\" >>" +
                                  LbEncoding::ToUtf8(name) +
                                  ".txt\n"
                                  "for word; do script=$argument; argument=$word; done\n";
        MakeProgram(L"slurm/" + name, start + text);
    }

    /// Writes an executable script and returns its path.
    std::wstring MakeProgram(const std::wstring& name, const std::string& text) const
    {
        std::wstring path = m_folder.WriteFile(name, text);
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        return path;
    }

    std::string ReadCalls(const std::wstring& command) const
    {
        return LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"slurm/" + command + L".txt"));
    }

    SHostRun SubmitShard(const std::vector<std::wstring>& own = {}) const
    {
        std::vector<std::wstring> arguments = {L"--engine", L"slurm", L"--shards", L"1"};
        arguments.insert(arguments.end(), own.begin(), own.end());
        return Submit(arguments, {}, m_options);
    }

    /// Runs a submitter, which receives the signal while it submits its shard.
    SHostRun SubmitAndReceive(const std::string& signal)
    {
        WriteCommand(L"sbatch", "kill -" + signal + " $(cat process)\n");
        WriteCommand(L"squeue", "test -e scancel.txt || echo 'task|1|RUNNING|None|node1'\n");
        const std::string file = LbEncoding::ToUtf8(m_folder.GetPathOf(L"slurm/process"));
        m_options.program = MakeProgram(L"slurm/start", "#!/bin/sh\necho $$ >'" + file + "'\nexec \"$@\"\n");
        return RunHost({L"" LUTESTSUITE_RUNNER, L"submit", L"--engine", L"slurm", L"--shards", L"1", L"--out", GetOut(),
                        L"--", L"-d", m_folder.GetPathOf(L"data"), L"--dll", L"durationmodels"},
                       m_options);
    }

    SHostOptions m_options;
};

TEST_F(RunnerSlurmCommands, CancelTheTasksAfterCtrlC)
{
    MakeDurations({1});
    const SHostRun run = SubmitAndReceive("INT");

    EXPECT_EQ(run.exitStatus, 130) << run.output << run.errors;
    ExpectLine(run.output, "Fehler: Der verteilte Lauf wurde abgebrochen\n");
    ExpectLine(ReadCalls(L"scancel"), "--name=lutestsuite-");
}

TEST_F(RunnerSlurmCommands, DoNotCancelTheTasksIfTheSubmitterIsTerminated)
{
    MakeDurations({1});
    const SHostRun run = SubmitAndReceive("TERM");

    EXPECT_EQ(run.exitStatus, 143) << run.output << run.errors;
    ExpectLine(run.errors, "Warnung: Der Lauf geht ohne diesen Prozess weiter: LuTestSuiteRunner wait ");
    EXPECT_FALSE(LbFileSystem::IsFile(m_folder.GetPathOf(L"slurm/scancel.txt")));
    EXPECT_FALSE(LbFileSystem::IsFile(GetOut() + L"tasks/canceled"));
}

TEST_F(RunnerSlurmCommands, GetUserOptionsBeforeOptionsOfTheEngine)
{
    MakeDurations({1});
    SubmitShard({L"--detach", L"--sbatch=--time=5"});
    const std::string call = ReadCalls(L"sbatch");

    EXPECT_LT(call.find("--time=5"), call.find("--job-name=")) << call;
    EXPECT_LT(call.find("--time=5"), call.find("--array=1 ")) << call;
}

TEST_F(RunnerSlurmCommands, DoNotInheritVariablesThatHideTasks)
{
    MakeDurations({1});
    for (const wchar_t* const name : {L"SBATCH_CLUSTERS", L"SLURM_CLUSTERS", L"SBATCH_WAIT", L"SQUEUE_USERS",
                                      L"SQUEUE_PARTITION", L"SCANCEL_STATE", L"SCANCEL_INTERACTIVE"})
    {
        m_options.variables.emplace_back(name, L"x");
    }
    WriteCommand(L"sbatch", "env >variables\n");
    SubmitShard({L"--detach"});
    const std::string variables = LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"slurm/variables"));

    EXPECT_NE(variables.find("PATH="), std::string::npos);
    for (const char* const name : {"SBATCH_", "SLURM_", "SQUEUE_", "SCANCEL_"})
    {
        EXPECT_EQ(variables.find(name), std::string::npos) << variables;
    }
}

TEST_F(RunnerSlurmCommands, DoNotAcceptOptionsThatHideTasks)
{
    MakeDurations({1});
    const SHostRun run = SubmitShard({L"--detach", L"--sbatch=--job-name=x"});

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "Fehler: Die Option '--sbatch=--job-name=x' ist nicht möglich: ");
    EXPECT_FALSE(LbFileSystem::Exists(GetOut() + L"plan.ndjson"));
}

TEST_F(RunnerSlurmCommands, MustAllBeAvailableForASubmission)
{
    MakeDurations({1});
    m_folder.WriteFile(L"slurm/scancel", "#!/bin/sh\nexit 1\n");
    const SHostRun run = SubmitShard({L"--detach"});

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "der Befehl scancel kann nicht gestartet werden");
}

TEST_F(RunnerSlurmCommands, SubmitShardsAgainThatSbatchRefused)
{
    MakeDurations({1, 1});
    SubmitShard({L"--detach"});
    WriteCommand(L"sbatch", "if test $argument = 2; then echo 'kein Platz' >&2; exit 1; fi\n"
                            "SLURM_ARRAY_TASK_ID=1 sh \"$script\" $argument\n");
    const SHostRun run = RunRunner({L"wait", GetOut()}, m_options);

    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    ExpectLine(run.errors, "Warnung: Die Neuvergabe der verlorenen Teile 1 ist gescheitert: "
                           "Slurm nimmt die Teile nicht an (sbatch): kein Platz\n");
    EXPECT_TRUE(LbFileSystem::IsFile(GetOut() + L"tasks/shard-1-3-0.txt"));
    ExpectProof(GetOut());
}

TEST_F(RunnerSlurmCommands, GiveNoAnswerIfTheyCannotBeStarted)
{
    MakeDurations({1});
    SubmitShard({L"--detach"});
    // The host cannot start the commands, because a stand-in deletes the temporary folder for their output.
    m_options.variables.emplace_back(L"TMPDIR", m_folder.MakeFolder(L"room"));
    MakeProgram(L"slurm/scancel", "#!/bin/sh\nrm -rf \"$TMPDIR\"\n");
    const SHostRun status = RunRunner({L"status", GetOut()}, m_options);
    m_folder.MakeFolder(L"room");
    const SHostRun cancel = RunRunner({L"cancel", GetOut()}, m_options);

    EXPECT_EQ(status.exitStatus, 0) << status.errors;
    ExpectLine(status.output, "der Scheduler antwortet nicht\n");
    EXPECT_EQ(cancel.exitStatus, 0) << cancel.errors;
}

TEST_F(RunnerSlurmCommands, GiveEachStartOfATaskItsOwnOutputFile)
{
    MakeDurations({1});
    WriteCommand(L"sbatch", "export SLURM_ARRAY_TASK_ID=1\n"
                            "sh \"$script\" $argument\n"
                            "SLURM_RESTART_COUNT=1 sh \"$script\" $argument\n");
    SubmitShard({L"--detach"});

    EXPECT_TRUE(LbFileSystem::IsFile(GetOut() + L"tasks/shard-1-1-0.txt"));
    EXPECT_TRUE(LbFileSystem::IsFile(GetOut() + L"tasks/shard-1-1-1.txt"));
}

TEST_F(RunnerSlurmCommands, ShowThatTheProgramIsMissingOnANode)
{
    MakeDurations({1});
    WriteCommand(L"sbatch", "sed 's|test -x |test -x /fehlt|' \"$script\" >node\n"
                            "SLURM_ARRAY_TASK_ID=1 sh node $argument\nexit 0\n");
    WriteCommand(L"squeue", "echo 'task|1|FAILED|NonZeroExitCode|node1'\n");
    SubmitShard({L"--detach"});
    const SHostRun run = RunRunner({L"status", GetOut()}, m_options);

    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    ExpectLine(run.output,
               "Teil 1: 0/1 Testfälle, fehlgeschlagen: 0, ohne Prozess (FAILED auf node1: Auf dem Rechner ");
    ExpectLine(run.output, " fehlt das Programm ");
}

TEST_F(RunnerSlurmCommands, AcceptARunThatTheyRefusedBefore)
{
    MakeDurations({1});
    WriteCommand(L"sbatch", "exit 1\n");
    EXPECT_EQ(SubmitShard({L"--detach"}).exitStatus, 2);
    WriteCommand(L"sbatch", "");
    const SHostRun run = SubmitShard({L"--detach"});

    EXPECT_EQ(run.exitStatus, 0) << run.errors;
}

TEST_F(RunnerSlurmCommands, DoNotRefuseASubmissionIfTheyAreTooSlow)
{
    WriteCommand(L"sbatch", "exec sleep 600\n");
    m_folder.MakeFolder(L"out/tasks");
    const ScopedEnvironmentVariable path(L"PATH", m_options.variables.front().second);
    const auto engine = Runner::GetEngineKind(L"slurm").make({GetOut(), "abc", 1, {}, /*patience*/ 200});

    EXPECT_NO_THROW(engine->Submit({1, {1}, {0}}));
}

TEST_F(RunnerSlurmCommands, ShowWhyTasksWait)
{
    MakeDurations({1});
    WriteCommand(L"squeue", "echo 'task|1|PENDING|Resources|'\n");
    SubmitShard({L"--detach"});

    ExpectLine(RunRunner({L"status", GetOut()}, m_options).output,
               "Teile: 0 von 1 fertig, 0 laufen, 1 warten (Resources), Fälle: 0/1");
}

TEST_F(RunnerSlurmCommands, SuggestThatTheFolderIsMissingOnANode)
{
    MakeDurations({1});
    WriteCommand(L"squeue", "echo 'task|1|FAILED|NonZeroExitCode|node1'\n");
    SubmitShard({L"--detach"});

    ExpectLine(RunRunner({L"status", GetOut()}, m_options).output,
               "(FAILED auf node1: dieser Start hat keine Ausgabe hinterlassen, vielleicht fehlt auf dem Rechner der "
               "Ordner " +
                   LbEncoding::ToUtf8(GetOut()) + ")");
}

TEST_F(RunnerSlurmCommands, ShowThatAShardIsGivenUp)
{
    MakeDurations({1});
    WriteCommand(L"squeue", "echo 'task|1|TIMEOUT|TimeLimit|node1'\n");
    SubmitShard({L"--detach"});
    for (const wchar_t* const name : {L"submission-2.json", L"submission-3.json", L"submission-4.json"})
    {
        m_folder.WriteFile(L"out/tasks/" + std::wstring(name), R"({"shards":[1],"verdicts":[0]})");
    }
    const std::string output = RunRunner({L"status", GetOut()}, m_options).output;

    ExpectLine(output, "fehlgeschlagen: 0, aufgegeben (TIMEOUT auf node1: ");
    ExpectLine(output, ", 4 mal vergeben\nTeile: 0 von 1 fertig, 0 laufen, 1 aufgegeben, Fälle: 0/1");
}

TEST_F(RunnerSlurmCommands, CancelARunThatIsReplacedByAnotherDistributedRun)
{
    MakeDurations({1});
    WriteCommand(L"squeue", "test -e scancel.txt || echo 'task|1|RUNNING|None|node1'\n");
    SubmitShard({L"--detach"});
    const std::string id = Runner::ReadPlan(GetOut() + Runner::c_PlanName).runId;
    const SHostRun run = SubmitShard({L"--detach", L"--force"});

    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    EXPECT_EQ(ReadCalls(L"scancel"), "--name=lutestsuite-" + id + "-1\n");
    EXPECT_NE(Runner::ReadPlan(GetOut() + Runner::c_PlanName).runId, id);
}

TEST_F(RunnerSlurmCommands, CancelARunThatIsReplacedByARunInOneProcess)
{
    MakeDurations({1});
    SubmitShard({L"--detach"});
    const SHostRun run = Run({L"run", L"--force"}, {}, m_options);

    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    ExpectLine(ReadCalls(L"scancel"), "--name=lutestsuite-");
}

TEST_F(RunnerSlurmCommands, AreNotNeededToReplaceARun)
{
    MakeDurations({1});
    SubmitShard({L"--detach"});
    const SHostRun run = Submit({L"--shards", L"1", L"--force"});

    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
}

TEST_F(RunnerSlurmCommands, ShowOnlyTheOutputOfTheNewestSubmission)
{
    MakeDurations({1});
    WriteCommand(L"sbatch", "echo Fehler: alt >\"$(dirname $script)/shard-1-1-0.txt\"\n");
    WriteCommand(L"squeue", "echo 'task|1|FAILED|NonZeroExitCode|node1'\n");
    SubmitShard({L"--detach"});
    m_folder.WriteFile(L"out/tasks/submission-2.json", R"({"shards":[1],"verdicts":[0]})");

    ExpectLine(RunRunner({L"status", GetOut()}, m_options).output, "node1: dieser Start hat keine Ausgabe ");
}

TEST_F(RunnerSlurmCommands, ShowTheErrorOfATaskThatSlurmHasForgotten)
{
    MakeDurations({1});
    WriteCommand(L"sbatch", "echo Fehler: kein Modul >\"$(dirname $script)/shard-1-$argument-0.txt\"\n");
    SubmitShard({L"--detach"});

    ExpectLine(RunRunner({L"status", GetOut()}, m_options).output, "ohne Prozess (kein Modul)\n");
}

TEST_F(RunnerSlurmCommands, GiveNoReasonForATaskThatSlurmDoesNotListYet)
{
    MakeDurations({1});
    SubmitShard({L"--detach"});

    ExpectLine(RunRunner({L"status", GetOut()}, m_options).output, "ohne Prozess\n");
}

TEST_F(RunnerSlurmCommands, ShowWhyTheHostDoesNotStart)
{
    MakeDurations({1});
    WriteCommand(L"sbatch", "echo 'host: libx.so: cannot open' >\"$(dirname $script)/shard-1-1-0.txt\"\n");
    WriteCommand(L"squeue", "echo 'task|1|FAILED|NonZeroExitCode|node1'\n");
    SubmitShard({L"--detach"});

    ExpectLine(RunRunner({L"status", GetOut()}, m_options).output,
               "(FAILED auf node1: letzte Ausgabe: host: libx.so: cannot open)");
}

} // namespace
