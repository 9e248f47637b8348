#include "testing/lutestsuiterunner/journal/folder.h"

#include <thread>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lustream.h"
#include "testing/lutestsuiterunner/journal/appendfile.h"
#include "testing/lutestsuiterunner/journal/reader.h"
#include "tests/lutestsuiterunner/samplerun.h"
#include "tests/support/os/filelimits.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;

void runCase(Runner::CJournalWriter& writer, std::uint32_t caseIndex, ECaseRunResult result)
{
    writer.Write(MakeStart(caseIndex));
    writer.Write(MakeEnd(caseIndex, result));
}

std::wstring getMessage(const std::wstring& folder)
{
    try
    {
        Runner::LoadRun(folder);
        return {};
    }
    catch (const LbException& exception)
    {
        return exception.GetMessageText();
    }
}

/// A folder with a run whose first journal ends after the start of case 1.
class RunnerFolder : public testing::Test
{
protected:
    RunnerFolder()
    {
        const auto writer = m_run.BeginRun(MakeSamplePlan());
        runCase(*writer, 0, ECaseRunResult::Ok);
        writer->Write(MakeStart(1));
    }

    const std::wstring& GetPath() const { return m_run.GetPath(); }

    const ScopedFolder m_parent;
    Runner::CRunFolder m_run{m_parent.GetPathOf(L"lauf")};
};

TEST_F(RunnerFolder, LoadsTheStateOfARunThatDied)
{
    const auto state = Runner::LoadRun(GetPath());

    EXPECT_EQ(state->GetVerdict(0), Runner::EVerdict::Passed);
    EXPECT_EQ(state->GetOpenCases(), std::vector<std::uint32_t>{1});
    EXPECT_FALSE(state->IsEnded());
}

TEST_F(RunnerFolder, ContinuesARunInANewJournal)
{
    const std::string first = LbFileSystem::ReadFile8Bit(GetPath() + L"journal.ndjson");
    {
        const auto writer = m_run.ContinueRun(Runner::LoadRun(GetPath())->GetPlan());
        runCase(*writer, 1, ECaseRunResult::Error);
        writer->Write(Runner::SRunFinished{});
        writer->Close();
    }
    const auto state = Runner::LoadRun(GetPath());

    EXPECT_EQ(LbFileSystem::ReadFile8Bit(GetPath() + L"journal.ndjson"), first);
    EXPECT_EQ(state->GetVerdict(1), Runner::EVerdict::Failed);
    EXPECT_EQ(state->GetAttempts(1)[0].ended.journal, 2U);
    EXPECT_TRUE(state->IsEnded());
}

TEST_F(RunnerFolder, WarnsOfADamagedLastLineOfAnEarlierJournal)
{
    const std::wstring path = GetPath() + L"journal.ndjson";
    std::string journal = LbFileSystem::ReadFile8Bit(path);
    const std::size_t lastLine = journal.rfind('\n', journal.size() - 2) + 1;
    journal[lastLine + 20] = '#';
    m_parent.WriteFile(L"lauf/journal.ndjson", journal);
    EXPECT_TRUE(Runner::LoadRun(GetPath())->GetWarnings().empty());
    m_run.ContinueRun(Runner::LoadRun(GetPath())->GetPlan())->Close();

    const std::vector<std::wstring> expected = {
        L"Das Journal " + path + L" endet mit einer beschädigten Zeile, die nicht zählt: Zeile 4, Byte " +
        std::to_wstring(lastLine)};
    EXPECT_EQ(Runner::LoadRun(GetPath())->GetWarnings(), expected);
}

TEST_F(RunnerFolder, WarnsOfADamagedLastLineOfTheLastJournalIfItsHostIsGone)
{
    std::string journal = LbFileSystem::ReadFile8Bit(GetPath() + L"journal.ndjson");
    journal[journal.size() - 4] = '#';
    m_parent.WriteFile(L"lauf/journal.ndjson", journal);

    EXPECT_TRUE(Runner::LoadRun(GetPath())->GetWarnings().empty());
    const std::vector<std::wstring> warnings = Runner::LoadRunWithoutHost(GetPath())->GetWarnings();
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_NE(warnings[0].find(L"endet mit einer beschädigten Zeile, die nicht zählt: Zeile 4, "), std::wstring::npos);
}

TEST_F(RunnerFolder, DoesNotWarnOfAnIncompleteLastLine)
{
    const std::string journal = LbFileSystem::ReadFile8Bit(GetPath() + L"journal.ndjson");
    m_parent.WriteFile(L"lauf/journal.ndjson", journal.substr(0, journal.size() - 3));
    EXPECT_TRUE(Runner::LoadRunWithoutHost(GetPath())->GetWarnings().empty());
    m_run.ContinueRun(Runner::LoadRun(GetPath())->GetPlan())->Close();

    EXPECT_TRUE(Runner::LoadRun(GetPath())->GetWarnings().empty());
}

TEST_F(RunnerFolder, ContinuesARunAfterAJournalWithoutRecords)
{
    LbFileSystem::WriteWhole(GetPath() + L"journal-2.ndjson",
                             [](const std::wstring& place) { LuStreamWriteBinaryFile(place).Write("{\"n\":1", 6); });
    m_run.ContinueRun(Runner::LoadRun(GetPath())->GetPlan());

    EXPECT_EQ(Runner::FindJournals(GetPath()), (std::vector<std::uint32_t>{1, 2, 3}));
    EXPECT_EQ(getMessage(GetPath()), L"");
}

TEST_F(RunnerFolder, FindsJournalsThatAnOutdatedListingLacks)
{
    const Runner::SPlan plan = Runner::LoadRun(GetPath())->GetPlan();
    for (int count = 0; count < 3; ++count)
    {
        m_run.ContinueRun(plan);
    }
    const std::vector<std::uint32_t> all = {1, 2, 3, 4};

    EXPECT_EQ(Runner::CompleteJournals(GetPath(), {}), all);
    EXPECT_EQ(Runner::CompleteJournals(GetPath(), {3, 1}), all);
    EXPECT_EQ(Runner::CompleteJournals(GetPath(), {6, 1}), (std::vector<std::uint32_t>{1, 2, 3, 4, 6}));
}

TEST_F(RunnerFolder, ReportsAMissingJournal)
{
    const Runner::SPlan plan = Runner::LoadRun(GetPath())->GetPlan();
    m_run.ContinueRun(plan);
    m_run.ContinueRun(plan);
    LbFileSystem::RemoveTree(GetPath() + L"journal-2.ndjson");

    EXPECT_NE(getMessage(GetPath()).find(L"journal-2.ndjson fehlt"), std::wstring::npos);
}

TEST_F(RunnerFolder, RefusesTheJournalOfAnotherRunOfTheSameCases)
{
    const std::string journal = LbFileSystem::ReadFile8Bit(GetPath() + L"journal.ndjson");
    const ScopedFolder other;
    Runner::CRunFolder(other.GetPath()).BeginRun(MakeSamplePlan())->Close();
    other.WriteFile(L"journal.ndjson", journal);

    EXPECT_NE(getMessage(other.GetPath()).find(L"Zeile 1: Das Journal gehört zu einem anderen Plan"),
              std::wstring::npos);
}

TEST_F(RunnerFolder, NamesTheLineOfAContradictoryRecord)
{
    {
        const auto writer = m_run.ContinueRun(Runner::LoadRun(GetPath())->GetPlan());
        writer->Write(MakeEnd(2, ECaseRunResult::Ok));
    }

    EXPECT_NE(getMessage(GetPath()).find(L"Zeile 2"), std::wstring::npos);
    EXPECT_NE(getMessage(GetPath()).find(L"journal-2.ndjson"), std::wstring::npos);
}

TEST_F(RunnerFolder, RemovesTheFilesOfTheEarlierRun)
{
    m_run.ContinueRun(Runner::LoadRun(GetPath())->GetPlan());
    m_parent.WriteFile(L"lauf/output/1.txt", "x");
    m_parent.WriteFile(L"lauf/junit.xml", "x");
    m_parent.WriteFile(L"lauf/eigenes.txt", "x");
    m_run.BeginRun(MakeSamplePlan())->Close();

    EXPECT_EQ(LbFileSystem::GetFileNames(GetPath()),
              (std::vector<std::wstring>{L"eigenes.txt", L"journal.ndjson", L"plan.ndjson"}));
    EXPECT_FALSE(LbFileSystem::Exists(GetPath() + L"output"));
}

TEST_F(RunnerFolder, KeepsForeignFilesWhenItRemovesTheEarlierRun)
{
    m_parent.WriteFile(L"lauf/output/1.txt", "x");
    m_parent.WriteFile(L"lauf/output/crash-1.txt", "x");
    m_parent.WriteFile(L"lauf/output/1.txt.bak", "x");
    m_parent.WriteFile(L"lauf/output/-1.txt", "x");
    m_parent.WriteFile(L"lauf/tasks/canceled", "x");
    m_parent.WriteFile(L"lauf/shard-1/plan.ndjson", "x");
    m_run.BeginRun(MakeSamplePlan())->Close();

    EXPECT_EQ(LbFileSystem::GetFileNames(GetPath() + L"output"), (std::vector<std::wstring>{L"-1.txt", L"1.txt.bak"}));
    // These stay, because the run was not distributed.
    EXPECT_TRUE(LbFileSystem::IsFile(m_parent.GetPathOf(L"lauf/tasks/canceled")));
    EXPECT_TRUE(LbFileSystem::IsFile(m_parent.GetPathOf(L"lauf/shard-1/plan.ndjson")));
}

TEST_F(RunnerFolder, RemovesTheShardsOfADistributedRun)
{
    m_parent.WriteFile(L"lauf/shards.json", "{}");
    for (const wchar_t* const name :
         {L"submission-1.json", L"canceled", L"losses.txt", L"task.sh", L"shard-1-12-0.txt"})
    {
        m_parent.WriteFile(std::wstring(L"lauf/tasks/") + name, "x");
    }
    m_parent.WriteFile(L"lauf/shard-1/plan.ndjson", "x");
    m_parent.WriteFile(L"lauf/shard-1/journal-2.ndjson", "x");
    m_parent.WriteFile(L"lauf/shard-1/output/2.txt", "x");
    m_parent.WriteFile(L"lauf/shard-2/report.xml", "x");
    m_run.BeginRun(MakeSamplePlan())->Close();

    EXPECT_FALSE(LbFileSystem::Exists(GetPath() + L"shards.json"));
    EXPECT_FALSE(LbFileSystem::Exists(GetPath() + L"tasks"));
    EXPECT_FALSE(LbFileSystem::Exists(GetPath() + L"shard-1"));
    // The folder shard-2 stays, because it contains no run.
    EXPECT_TRUE(LbFileSystem::IsFile(m_parent.GetPathOf(L"lauf/shard-2/report.xml")));
}

TEST_F(RunnerFolder, RemovesNothingFromAFolderWithoutARun)
{
    const std::vector<std::wstring> names = {L"report.xml",           L"summary.json",       L"output/bild.txt",
                                             L"tasks/canceled",       L"shard-1/report.xml", L"shard-1/plan.ndjson",
                                             L"tasks/shard-1-1-0.txt"};
    const ScopedFolder folder;
    for (const std::wstring& name : names)
    {
        folder.WriteFile(name, "x");
    }
    Runner::BeginPlan(folder.GetPath(), MakeSamplePlan());

    for (const std::wstring& name : names)
    {
        EXPECT_TRUE(LbFileSystem::IsFile(folder.GetPathOf(name))) << LbEncoding::ToUtf8(name);
    }
}

TEST_F(RunnerFolder, RefusesAFolderWhoseOutputBelongsToNoRun)
{
    const ScopedFolder folder;
    folder.WriteFile(L"output/1.txt", "x");

    EXPECT_THROW(Runner::BeginPlan(folder.GetPath(), MakeSamplePlan()), LbException);
    EXPECT_TRUE(LbFileSystem::IsFile(folder.GetPathOf(L"output/1.txt")));
    EXPECT_FALSE(LbFileSystem::Exists(folder.GetPathOf(L"plan.ndjson")));
}

TEST_F(RunnerFolder, IsWrittenByOneRunAtATime)
{
    bool isRefused = false;
    std::thread([&] {
        try
        {
            Runner::CRunFolder run(GetPath());
        }
        catch (const LbException&)
        {
            isRefused = true;
        }
    }).join();

    EXPECT_TRUE(isRefused);
}

TEST_F(RunnerFolder, ReportsAFolderWithoutARun)
{
    EXPECT_NE(getMessage(m_parent.GetPath()).find(L"enthält keinen Lauf"), std::wstring::npos);
}

/// Writes cases until a write fails; returns how many were written in full.
std::uint32_t runUntilFull(Runner::CRunFolder& run, const Runner::SPlan& plan)
{
    std::uint32_t written = 0;
    try
    {
        const auto writer = run.ContinueRun(plan);
        try
        {
            for (; written < plan.cases.size(); ++written)
            {
                runCase(*writer, written, ECaseRunResult::Ok);
            }
        }
        catch (const LbException&)
        {
            // No record may follow an incomplete one.
            EXPECT_THROW(writer->Write(Runner::SRunFinished{}), LbException);
            EXPECT_THROW(writer->Close(), LbException);
            throw;
        }
    }
    catch (const LbException& exception)
    {
        EXPECT_NE(exception.GetMessageText().find(L"journal-2.ndjson"), std::wstring::npos);
    }
    return written;
}

TEST_F(RunnerFolder, FailsOnAFullDiskAndKeepsAllWrittenRecords)
{
    constexpr std::size_t c_Step = 23;
    std::uint32_t written = 0;
    for (std::size_t size = 0; written < 6; size += c_Step)
    {
        m_run.BeginRun(MakeSamplePlan())->Close();
        const Runner::SPlan plan = Runner::LoadRun(GetPath())->GetPlan();
        {
            const auto limit = LbOs::LimitFileSize(size);
            if (!limit)
            {
                GTEST_SKIP() << "the system cannot limit file sizes";
            }
            written = runUntilFull(m_run, plan);
        }
        ASSERT_EQ(Runner::LoadRun(GetPath())->CountVerdicts().passed, written) << size;
    }
}

TEST_F(RunnerFolder, BeginsNoFurtherJournalOnAFullDisk)
{
    const Runner::SPlan plan = Runner::LoadRun(GetPath())->GetPlan();
    {
        const auto limit = LbOs::LimitFileSize(10);
        if (!limit)
        {
            GTEST_SKIP() << "the system cannot limit file sizes";
        }
        EXPECT_THROW(Runner::JoinRun(GetPath(), plan), LbException);
    }

    EXPECT_EQ(Runner::FindJournals(GetPath()), (std::vector<std::uint32_t>{1, 2}));
}

TEST_F(RunnerFolder, DistinguishesATakenNameFromAMissingFolder)
{
    const Runner::SJournalBegun begun = {"plan", 6, 1, {}, 1, {}, {}};

    EXPECT_THROW(Runner::CJournalWriter(GetPath(), begun), Runner::CNameTakenException);
    try
    {
        Runner::CJournalWriter(m_parent.GetPathOf(L"fehlt/"), begun);
        FAIL();
    }
    catch (const LbException& exception)
    {
        EXPECT_EQ(dynamic_cast<const Runner::CNameTakenException*>(&exception), nullptr);
    }
}

} // namespace
