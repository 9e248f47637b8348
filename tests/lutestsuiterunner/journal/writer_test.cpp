#include <random>

#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/journal/line.h"
#include "tests/lutestsuiterunner/journal/journalfile.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using Runner::Record;

Runner::SCaseEnded makeRandomEnd(std::mt19937& random)
{
    Runner::SCaseEnded ended;
    ended.caseIndex = static_cast<std::uint32_t>(random());
    ended.attempt = static_cast<std::uint32_t>(random());
    ended.end = static_cast<Runner::EAttemptEnd>(random() % 7);
    ended.info.result = static_cast<ECaseRunResult>(random() % 9);
    ended.info.memoryGrowth = 0 - std::uint64_t{random()};
    ended.info.allocations = random();
    ended.info.peakMemory = random();
    ended.info.time = std::uint64_t{random()} << 16U;
    ended.info.warning = random() % 2 == 0;
    ended.info.threadIndex = static_cast<std::int32_t>(random());
    ended.info.processIndex = static_cast<std::int32_t>(random());
    ended.processId = random();
    if (random() % 2 == 0)
    {
        ended.exitStatus = -static_cast<std::int64_t>(random() % 64);
    }
    const std::size_t longest = random() % 8 == 0 ? 30000 : 40;
    ended.info.messages = MakeRandomText(random, longest);
    ended.reason = MakeRandomText(random, longest);
    ended.output = MakeRandomText(random, longest);
    ended.stacks = MakeRandomText(random, longest);
    ended.core = MakeRandomText(random, longest);
    ended.elapsed = 1 + random();
    return ended;
}

TEST(RunnerJournal, ReadsBackRecordsAsWritten)
{
    const ScopedFolder folder;
    std::mt19937 random(2);
    std::vector<Record> records;
    for (int round = 0; round < 100; ++round)
    {
        records.emplace_back(makeRandomEnd(random));
        records.emplace_back(Runner::SCaseStarted{static_cast<std::uint32_t>(random()), 1,
                                                  static_cast<Runner::EAttemptKind>(random() % 3), 5, random(), 9});
        records.emplace_back(Runner::SRunProblem{MakeRandomText(random, 100)});
        records.emplace_back(Runner::SRunCanceled{MakeRandomText(random, 100), 77});
        records.emplace_back(Runner::SRunFinished{MakeRandomText(random, 100), 78});
    }
    const std::vector<std::string> written = WriteJournal(folder.GetPath(), records);
    std::uint64_t tailSize = 1;

    EXPECT_EQ(ReadJournal(folder.GetPath(), &tailSize), written);
    EXPECT_EQ(tailSize, 0U);
}

TEST(RunnerJournal, ReadsBackWideTextsAsWritten)
{
    const ScopedFolder folder;
    std::mt19937 random(3);
    const Runner::SCaseEnded ended = makeRandomEnd(random);
    WriteJournal(folder.GetPath(), {ended});
    Runner::CJournalReader reader(folder.GetPath(), 1);
    Record record;
    ASSERT_TRUE(reader.Next(record) && reader.Next(record));

    const auto& read = std::get<Runner::SCaseEnded>(record);
    EXPECT_EQ(read.info.messages, ended.info.messages);
    EXPECT_EQ(read.reason, ended.reason);
    EXPECT_EQ(read.info.memoryGrowth, ended.info.memoryGrowth);
    EXPECT_EQ(read.exitStatus, ended.exitStatus);
}

TEST(RunnerJournal, StoresLargeTextsOutsideRecords)
{
    const ScopedFolder folder;
    Runner::SCaseEnded ended = MakeEnd(0, ECaseRunResult::Error);
    ended.info.messages.assign(200000, L'"');
    ended.output.assign(100000, L'\x1');
    ended.stacks.assign(11900, L's');
    ended.core.assign(11900, L'c');
    ended.reason.assign(11900, L'r');
    const std::vector<std::string> written = WriteJournal(folder.GetPath(), {ended, ended});

    EXPECT_EQ(ReadJournal(folder.GetPath()), written);
    EXPECT_LT(LbFileSystem::ReadFile8Bit(folder.GetPathOf(L"journal.ndjson")).size(), 2 * Runner::c_LargestRecord);
    EXPECT_EQ(LbFileSystem::GetFileNames(folder.GetPathOf(L"output")), std::vector<std::wstring>{L"1.txt"});
}

TEST(RunnerJournal, FindsDamageInLargeTexts)
{
    const ScopedFolder folder;
    Runner::SCaseEnded ended = MakeEnd(0, ECaseRunResult::Error);
    ended.info.messages.assign(20000, L'm');
    WriteJournal(folder.GetPath(), {ended});
    folder.WriteFile(L"output/1.txt", std::string(19999, 'm') + "n");
    EXPECT_THROW(ReadJournal(folder.GetPath()), LbException);

    folder.WriteFile(L"output/1.txt", std::string(19999, '\0') + "n");
    EXPECT_THROW(ReadJournal(folder.GetPath()), LbException);
}

/// The messages of all cases of journal 1.
std::vector<std::wstring> readMessages(const std::wstring& folder)
{
    std::vector<std::wstring> messages;
    Runner::CJournalReader reader(folder, 1);
    for (Record record; reader.Next(record);)
    {
        if (const auto* const ended = std::get_if<Runner::SCaseEnded>(&record))
        {
            messages.push_back(ended->info.messages);
        }
    }
    return messages;
}

TEST(RunnerJournal, ReplacesTextsThatAMachineCrashLost)
{
    const ScopedFolder folder;
    std::vector<Record> records;
    for (const wchar_t letter : {L'a', L'b', L'c'})
    {
        Runner::SCaseEnded ended = MakeEnd(0, ECaseRunResult::Error);
        ended.info.messages.assign(20000, letter);
        records.emplace_back(ended);
    }
    WriteJournal(folder.GetPath(), records);
    const std::string bytes = LbFileSystem::ReadFile8Bit(folder.GetPathOf(L"output/1.txt"));
    const std::wstring lost = L"(Text verloren)\n";
    const std::vector<std::wstring> messages = {std::wstring(20000, L'a'), lost, lost};

    folder.WriteFile(L"output/1.txt", bytes.substr(0, 20001));
    EXPECT_EQ(readMessages(folder.GetPath()), messages);
    folder.WriteFile(L"output/1.txt", bytes.substr(0, 20000));
    EXPECT_EQ(readMessages(folder.GetPath()), messages);
    folder.WriteFile(L"output/1.txt", bytes.substr(0, 20001) + std::string(39999, '\0'));
    EXPECT_EQ(readMessages(folder.GetPath()), messages);
    LbFileSystem::RemoveTree(folder.GetPathOf(L"output"));
    EXPECT_EQ(readMessages(folder.GetPath()), (std::vector<std::wstring>{lost, lost, lost}));
}

TEST(RunnerJournal, CanBeReadWhileItIsWritten)
{
    const ScopedFolder folder;
    Runner::CJournalWriter writer(folder.GetPath(), {"plan", 6, 1, {}, 1, {}, {}});
    writer.Write(MakeStart(0));
    EXPECT_EQ(ReadJournal(folder.GetPath()).size(), 2U);

    EXPECT_EQ(writer.Write(MakeEnd(0, ECaseRunResult::Ok)), 3U);
    EXPECT_EQ(ReadJournal(folder.GetPath()).size(), 3U);
}

TEST(RunnerJournal, IsNeverAppendedToByASecondWriter)
{
    const ScopedFolder folder;
    const std::vector<std::string> written = WriteJournal(folder.GetPath(), {MakeStart(0)});

    EXPECT_THROW(WriteJournal(folder.GetPath(), {MakeStart(1)}), LbException);
    EXPECT_EQ(ReadJournal(folder.GetPath()), written);
}

TEST(RunnerJournal, RefusesRecordsOnceItIsClosed)
{
    const ScopedFolder folder;
    Runner::CJournalWriter writer(folder.GetPath(), {"plan", 6, 1, {}, 1, {}, {}});
    writer.Close();

    EXPECT_THROW(writer.Write(MakeStart(0)), LbException);
}

TEST(RunnerJournal, NamesTheFileThatCannotBeCreated)
{
    const ScopedFolder folder;
    try
    {
        WriteJournal(folder.GetPathOf(L"fehlt/"), {});
        FAIL();
    }
    catch (const LbException& exception)
    {
        EXPECT_NE(exception.GetMessageText().find(L"journal.ndjson"), std::wstring::npos);
    }
}

} // namespace
