#include <algorithm>
#include <thread>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "testing/lutestsuiterunner/commands/commands.h"
#include "testing/lutestsuiterunner/journal/folder.h"
#include "testing/lutestsuiterunner/journal/reader.h"
#include "testing/lutestsuiterunner/reports/opencases.h"
#include "tests/lutestsuiterunner/cluster/distributedrun.h"
#include "tests/lutestsuiterunner/samplerun.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;

/// Two shards: cases 0, 2, 4 and cases 1, 3, 5.
class RunnerMerge : public testing::Test
{
protected:
    static constexpr std::uint32_t sc_Count = 2;

    std::wstring GetShardFolder(std::uint32_t number) const
    {
        return m_folder.GetPathOf(m_shards + std::to_wstring(number));
    }

    std::unique_ptr<Runner::CJournalWriter> Begin(std::uint32_t number, Runner::SPlan plan = MakeSamplePlan()) const
    {
        plan.shard = {number, sc_Count};
        plan.origin.machine = L"Rechner" + std::to_wstring(number);
        for (std::uint32_t index = 0; index < plan.cases.size(); ++index)
        {
            plan.cases[index].isInShard = index % sc_Count == number - 1;
        }
        return Runner::CRunFolder(GetShardFolder(number)).BeginRun(plan);
    }

    static void Run(Runner::CJournalWriter& writer, std::uint32_t caseIndex, ECaseRunResult result = ECaseRunResult::Ok)
    {
        writer.Write(MakeStart(caseIndex));
        writer.Write(MakeEnd(caseIndex, result));
    }

    void RunShard(std::uint32_t number) const
    {
        const auto writer = Begin(number);
        for (std::uint32_t index = number - 1; index < 6; index += sc_Count)
        {
            Run(*writer, index);
        }
        writer->Write(Runner::SRunFinished{L"2024-01-02 03:04:09", 5});
    }

    int Merge(const std::vector<std::uint32_t>& numbers, bool isForced = false) const
    {
        Runner::SMergeOptions options;
        options.force = isForced;
        for (const std::uint32_t number : numbers)
        {
            options.directories.push_back(GetShardFolder(number));
        }
        options.out = m_folder.GetPathOf(L"ganz");
        return Runner::Execute(options);
    }

    std::unique_ptr<Runner::CRunState> LoadMerged() const { return Runner::LoadRun(m_folder.GetPathOf(L"ganz/")); }

    std::wstring GetFailure(const std::vector<std::uint32_t>& numbers, bool isForced = false) const
    {
        try
        {
            Merge(numbers, isForced);
            return {};
        }
        catch (const LbException& exception)
        {
            return exception.GetMessageText();
        }
    }

    const ScopedFolder m_folder;
    std::wstring m_shards; ///< prefix of the paths of the shards' folders
};

TEST_F(RunnerMerge, CombinesShardsIntoTheWholeRun)
{
    RunShard(1);
    RunShard(2);

    EXPECT_EQ(Merge({1, 2}), 0);
    const auto state = LoadMerged();
    EXPECT_TRUE(state->IsGreen());
    EXPECT_EQ(state->CountVerdicts().passed, 6U);
    EXPECT_EQ(state->GetPlan().origin.machine, L"Rechner1, Rechner2");
    EXPECT_EQ(state->GetPlan().shard, Runner::SShard());
    EXPECT_EQ(state->GetEndTime(), L"2024-01-02 03:04:09");
    EXPECT_EQ(state->GetTotalTime(), 11U);
    EXPECT_TRUE(LbFileSystem::IsFile(m_folder.GetPathOf(L"ganz/junit.xml")));
}

TEST_F(RunnerMerge, WritesTheSameReportsForAnyOrderOfShards)
{
    RunShard(1);
    RunShard(2);
    Merge({2, 1});
    const std::string junit = LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"ganz/junit.xml"));
    const std::string summary = LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"ganz/summary.json"));
    Merge({1, 2}, /*isForced*/ true);

    EXPECT_EQ(LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"ganz/junit.xml")), junit);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"ganz/summary.json")), summary);
}

TEST_F(RunnerMerge, IsRedAndListsTheCasesOfAMissingShard)
{
    RunShard(2);

    EXPECT_EQ(Merge({2}), 1);
    const auto state = LoadMerged();
    EXPECT_EQ(state->GetMissingCases(), (std::vector<std::uint32_t>{0, 2, 4}));
    EXPECT_EQ(state->GetProblems(),
              (std::vector<std::wstring>{L"Teil 1 von 2 fehlt", L"3 Testfälle gehören zu keinem der Läufe"}));
}

TEST_F(RunnerMerge, NamesAllMissingShards)
{
    Runner::SPlan plan = MakeSamplePlan();
    for (const std::uint32_t number : {2U, 4U})
    {
        plan.shard = {number, 5};
        for (std::uint32_t index = 0; index < plan.cases.size(); ++index)
        {
            plan.cases[index].isInShard = index == number;
        }
        const auto writer = Runner::CRunFolder(GetShardFolder(number)).BeginRun(plan);
        Run(*writer, number);
        writer->Write(Runner::SRunFinished{L"2024-01-02 03:04:09", 5});
    }

    EXPECT_EQ(Merge({4, 2}), 1);
    EXPECT_EQ(LoadMerged()->GetProblems().front(), L"Teil 1, 3 und 5 von 5 fehlen");
}

TEST_F(RunnerMerge, KeepsTheOtherShardsIfOneCannotBeRead)
{
    RunShard(2);
    m_folder.MakeFolder(L"1");

    EXPECT_EQ(Merge({1, 2}), 1);
    const auto state = LoadMerged();
    EXPECT_EQ(state->GetMissingCases(), (std::vector<std::uint32_t>{0, 2, 4}));
    ASSERT_EQ(state->GetProblems().size(), 3U);
    EXPECT_EQ(state->GetProblems()[0],
              L"Der Ordner " + GetShardFolder(1) + LbPath::c_Separator + L" enthält keinen Lauf");
}

TEST_F(RunnerMerge, RefusesAFolderThatIsMissing)
{
    RunShard(2);

    EXPECT_EQ(GetFailure({1, 2}), L"Der Ordner " + GetShardFolder(1) + LbPath::c_Separator + L" fehlt");
    EXPECT_FALSE(LbFileSystem::Exists(m_folder.GetPathOf(L"ganz")));
}

TEST_F(RunnerMerge, IsRedIfTheHostOfAShardDied)
{
    RunShard(1);
    {
        const auto writer = Begin(2);
        Run(*writer, 1);
        writer->Write(MakeStart(3));
    }

    EXPECT_EQ(Merge({1, 2}), 1);
    const auto state = LoadMerged();
    EXPECT_EQ(state->GetMissingCases(), (std::vector<std::uint32_t>{3, 5}));
    EXPECT_EQ(state->GetOpenCases(), std::vector<std::uint32_t>{3});
    ASSERT_EQ(state->GetProblems().size(), 1U);
    EXPECT_EQ(state->GetProblems()[0], L"Teil 2 von 2 ist nicht beendet");
}

TEST_F(RunnerMerge, KeepsTheCrashMessageOfAShardsHost)
{
    RunShard(1);
    {
        const auto writer = Begin(2);
        writer->Write(MakeStart(3));
    }
    m_folder.WriteFile(L"2/output/crash-1.txt", "Fehler: Absturz\n");

    EXPECT_EQ(Merge({1, 2}), 1);

    const std::wstring whole = m_folder.GetPathOf(L"ganz/");
    const Runner::SOpenCases open = Runner::FindOpenCases(*LoadMerged(), whole, false);
    EXPECT_EQ(open.interrupted, (std::map<std::uint32_t, std::wstring>{{3U, L"Fehler: Absturz\n"}}));
}

TEST_F(RunnerMerge, KeepsAttemptsTextsAndJournalsOfAResumedShard)
{
    RunShard(1);
    {
        const auto writer = Begin(2);
        Run(*writer, 1, ECaseRunResult::Error);
        writer->Write(MakeStart(3));
    }
    {
        Runner::CRunFolder shard(GetShardFolder(2));
        const auto writer = shard.ContinueRun(Runner::LoadRun(shard.GetPath())->GetPlan());
        Runner::SCaseEnded ended = MakeEnd(3, ECaseRunResult::Error);
        ended.info.messages.assign(100000, L'm');
        writer->Write(MakeStart(3));
        writer->Write(ended);
        Run(*writer, 5);
        writer->Write(MakeStart(1, 2, Runner::EAttemptKind::Retry));
        writer->Write(MakeEnd(1, ECaseRunResult::Ok, 2));
        writer->Write(Runner::SRunFinished{L"", 1});
    }

    EXPECT_EQ(Merge({1, 2}), 1);
    const auto state = LoadMerged();
    EXPECT_EQ(state->GetVerdict(1), Runner::EVerdict::Flaky);
    EXPECT_EQ(state->GetReported(3)->result.info.messages.size(), 100000U);
    EXPECT_TRUE(state->GetProblems().empty());
    EXPECT_EQ(state->GetReported(5)->ended.journal, 3U);
}

TEST_F(RunnerMerge, ReportsTheProblemsOfAShard)
{
    RunShard(1);
    {
        const auto writer = Begin(2);
        writer->Write(Runner::SRunProblem{L"Das Modul fehlt"});
        writer->Write(Runner::SRunCanceled{L"SIGTERM", 1});
    }
    Merge({1, 2});
    const auto state = LoadMerged();

    EXPECT_EQ(state->GetProblems(), (std::vector<std::wstring>{L"Teil 2 von 2 wurde abgebrochen: SIGTERM",
                                                               L"Teil 2 von 2: Das Modul fehlt"}));
    EXPECT_FALSE(state->IsCanceled());
}

TEST_F(RunnerMerge, RefusesShardsThatShareACase)
{
    RunShard(1);

    EXPECT_NE(GetFailure({1, 1}).find(L"Der Testfall a/CFirst:eins.txt gehört zu zwei Läufen"), std::wstring::npos);
    EXPECT_FALSE(LbFileSystem::Exists(m_folder.GetPathOf(L"ganz")));
}

TEST_F(RunnerMerge, AcceptsShardsThatListTheCasesInAnotherOrder)
{
    RunShard(1);
    Runner::SPlan other = MakeSamplePlan();
    std::ranges::reverse(other.unitTests);
    std::ranges::reverse(other.unitTests[0].cases);
    other.cases = Runner::PlanCases(other.unitTests, 1);
    other.shard = {2, sc_Count};
    // These are cases 1, 3 and 5 of the first shard's plan, which has another order.
    const std::vector<std::uint32_t> own = {0, 2, 5};
    for (std::uint32_t index = 0; index < other.cases.size(); ++index)
    {
        other.cases[index].isInShard = std::ranges::find(own, index) != own.end();
    }
    other.cases[2].isQuarantined = true;
    const auto writer = Runner::CRunFolder(GetShardFolder(2)).BeginRun(other);
    Run(*writer, 0);
    Run(*writer, 2, ECaseRunResult::Different);
    Run(*writer, 5);
    writer->Write(Runner::SRunFinished{L"2024-01-02 03:04:09", 5});

    EXPECT_EQ(Merge({1, 2}), 0);
    const auto state = LoadMerged();
    EXPECT_EQ(state->GetReported(3)->result.info.result, ECaseRunResult::Different);
    EXPECT_EQ(state->CountVerdicts().passed, 5U);
    EXPECT_EQ(state->CountVerdicts().quarantinedFailed, 1U);
}

TEST_F(RunnerMerge, RefusesARunWithAnotherSelection)
{
    RunShard(1);
    Runner::SPlan other = MakeSamplePlan();
    other.unitTests[0].cases[0].name = L"fremd.txt";
    Begin(2, other);

    EXPECT_NE(GetFailure({1, 2}).find(L"nicht dieselbe Auswahl"), std::wstring::npos);
}

TEST_F(RunnerMerge, RefusesADistributedRunAndItsShards)
{
    const CPlayedRun run;
    run.RunShard(1);
    run.RunShard(2);
    for (const std::wstring& folder : {run.GetFolder(), run.GetShardFolder(1)})
    {
        Runner::SMergeOptions options;
        options.directories = {folder};
        options.out = m_folder.GetPathOf(L"ganz");
        try
        {
            Runner::Execute(options);
            ADD_FAILURE() << LbEncoding::ToUtf8(folder);
        }
        catch (const LbException& exception)
        {
            EXPECT_EQ(exception.GetMessageText(),
                      L"Der Lauf in " + folder +
                          L" kommt von 'submit': 'wait' und 'report' fassen seine Teile zusammen");
        }
        EXPECT_FALSE(LbFileSystem::Exists(options.out));
    }
}

TEST_F(RunnerMerge, NeverReplacesOneOfItsShards)
{
    RunShard(1);
    Runner::SMergeOptions options;
    options.directories = {GetShardFolder(1)};
    options.out = GetShardFolder(1);

    EXPECT_THROW(Runner::Execute(options), LbException);
    EXPECT_EQ(Runner::LoadRun(GetShardFolder(1) + L"/")->CountVerdicts().passed, 3U);
}

TEST_F(RunnerMerge, ReplacesARunOnlyIfForced)
{
    RunShard(1);
    RunShard(2);
    Merge({1});
    const std::string plan = LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"ganz/plan.ndjson"));

    EXPECT_NE(GetFailure({1, 2}).find(L"enthält schon einen Lauf: '--force' ersetzt ihn"), std::wstring::npos);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"ganz/plan.ndjson")), plan);
    EXPECT_EQ(Merge({1, 2}, /*isForced*/ true), 0);
}

TEST_F(RunnerMerge, NeverReplacesARunThatIsInProgress)
{
    RunShard(1);
    RunShard(2);
    Runner::CRunFolder target(m_folder.GetPathOf(L"ganz"));
    const auto writer = target.BeginRun(MakeSamplePlan());
    std::wstring failure;
    std::thread([&] { failure = GetFailure({1, 2}, /*isForced*/ true); }).join();

    EXPECT_NE(failure.find(L"schreibt schon ein anderer Lauf"), std::wstring::npos);
    Run(*writer, 0);
    EXPECT_EQ(LoadMerged()->CountVerdicts().passed, 1U);
}

TEST_F(RunnerMerge, KeepsShardsInsideTheOutputFolder)
{
    m_shards = L"ganz/shard-";
    RunShard(1);
    RunShard(2);

    EXPECT_EQ(Merge({1, 2}), 0);
    EXPECT_EQ(Merge({1, 2}, /*isForced*/ true), 0);
    EXPECT_EQ(LoadMerged()->CountVerdicts().passed, 6U);
    EXPECT_EQ(Runner::LoadRun(GetShardFolder(1) + L"/")->CountVerdicts().passed, 3U);
}

TEST_F(RunnerMerge, NeverReplacesTheDistributedRunOfItsShards)
{
    m_shards = L"ganz/shard-";
    RunShard(1);
    m_folder.WriteFile(L"ganz/shards.json", "{}");

    EXPECT_NE(GetFailure({1}, /*isForced*/ true).find(L"enthält einen der Läufe"), std::wstring::npos);
    EXPECT_EQ(Runner::LoadRun(GetShardFolder(1) + L"/")->CountVerdicts().passed, 3U);
}

TEST_F(RunnerMerge, WarnsIfShardsHaveDifferentOptionsOrBuilds)
{
    const auto mergeWith = [this](const Runner::SPlan& plan) {
        RunShard(1);
        Begin(2, plan);
        testing::internal::CaptureStderr();
        Merge({1, 2}, /*isForced*/ true);
        return testing::internal::GetCapturedStderr();
    };
    Runner::SPlan plan = MakeSamplePlan();
    plan.params.workerThreads = 7;
    EXPECT_EQ(mergeWith(plan).find("verschiedene"), std::string::npos);
    plan.params.timeOutSec = 60;
    EXPECT_NE(mergeWith(plan).find("haben verschiedene Optionen\n"), std::string::npos);
    plan = MakeSamplePlan();
    plan.origin.pscm = LuTestSuiteUtils::SPscmInfo();
    plan.origin.pscm->Changeset = L"17";
    EXPECT_NE(mergeWith(plan).find("haben verschiedene Builds\n"), std::string::npos);
}

TEST_F(RunnerMerge, RequiresAtLeastOneExistingFolder)
{
    EXPECT_THROW(Merge({}), std::wstring);
    EXPECT_THROW(Merge({7}), LbException);
}

class RunnerReport : public RunnerMerge
{
};

TEST_F(RunnerReport, SuggestsResumingOnlyARunThatIsNotInProgress)
{
    Runner::SReportOptions options;
    options.directory = m_folder.GetPathOf(L"lauf");
    const auto report = [&options] {
        testing::internal::CaptureStdout();
        Runner::Execute(options);
        return testing::internal::GetCapturedStdout();
    };
    std::string living;
    {
        Runner::CRunFolder folder(options.directory);
        const auto writer = folder.BeginRun(MakeSamplePlan());
        std::thread([&] { living = report(); }).join();
    }

    EXPECT_NE(living.find("Der Lauf ist noch nicht zu Ende."), std::string::npos) << living;
    EXPECT_EQ(living.find(" resume "), std::string::npos) << living;
    EXPECT_NE(report().find(" resume "), std::string::npos);
}

TEST_F(RunnerReport, ReturnsTheStatusOfTheRun)
{
    Runner::SReportOptions options;
    EXPECT_THROW(Runner::Execute(options), std::wstring);
    options.directory = GetShardFolder(1);
    {
        const auto writer = Begin(1);
        // A shard whose run is still in progress.
        EXPECT_EQ(Runner::Execute(options), 1);
    }
    RunShard(1);
    EXPECT_EQ(Runner::Execute(options), 0);
    EXPECT_TRUE(LbFileSystem::IsFile(m_folder.GetPathOf(L"1/summary.json")));
}

} // namespace
