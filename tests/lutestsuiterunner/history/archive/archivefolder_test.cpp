#include "testing/lutestsuiterunner/history/archive/archivefolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lustream.h"
#include "base/os/files.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "testing/lutestsuiterunner/journal/appendfile.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/folder.h"
#include "tests/lutestsuiterunner/cluster/distributedrun.h"
#include "tests/lutestsuiterunner/samplerun.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/scopedfolder.h"

using namespace Runner::History;

namespace
{

using SReportData = LuTestSuiteReport::SReportData;

SReportData makeReport(const std::wstring& begin, const std::vector<std::wstring>& cases)
{
    SReportData data;
    data.BuildConfiguration = L"Release x64";
    data.MachineName = L"BUILD7";
    data.DateBegin = begin;
    data.PscmInfo = std::make_unique<LuTestSuiteUtils::SPscmInfo>();
    data.PscmInfo->Repository = L"produkt";
    data.PscmInfo->Branch = L"main";
    data.PscmInfo->Changeset = L"4711";
    for (const std::wstring& name : cases)
    {
        LuTestSuiteReport::SReportCase testCase;
        testCase.ClassName = L"CKlasse";
        testCase.CaseName = name;
        testCase.Time = 0.25F;
        testCase.Memory = 1000;
        data.Cases.push_back(std::move(testCase));
    }
    return data;
}

class HistoryArchive : public testing::Test
{
protected:
    void write(const std::wstring& name, const SReportData& data) const
    {
        LuTestSuiteReport::GenerateXMLReport(m_folder.GetPathOf(name), data);
    }

    void writeText(const std::wstring& name, std::string_view text) const
    {
        LuStreamWriteBinaryFile file(m_folder.GetPathOf(name));
        file.Write(text.data(), text.size());
        file.Close();
    }

    SArchiveContent read() const { return ReadArchive(m_folder.GetPath()); }

    /// The measurements of the case with this name in the first run. If there is no such case, the test fails.
    static SMeasured findMeasured(const SArchiveContent& content, const std::wstring& name)
    {
        const auto cell = std::ranges::find_if(
            content.runs[0].cells, [&](const SCell& one) { return content.names[one.caseIndex].caseName == name; });
        EXPECT_NE(cell, content.runs[0].cells.end()) << name.c_str();
        return cell == content.runs[0].cells.end() ? SMeasured() : cell->measured;
    }

    ScopedFolder m_folder;
};

} // namespace

TEST_F(HistoryArchive, RunsAreSortedByStartTime)
{
    write(L"b.xml", makeReport(L"2026-03-01 02:00:00", {L"x"}));
    write(L"a.xml", makeReport(L"2026-03-02 02:00:00", {L"x"}));
    const SArchiveContent content = read();
    ASSERT_EQ(content.runs.size(), 2U);
    EXPECT_EQ(content.runs[0].label.name, L"b.xml");
    EXPECT_EQ(content.runs[0].label.configuration, L"Release x64");
    EXPECT_EQ(content.runs[0].label.build, L"produkt/main@4711");
    EXPECT_EQ(content.runs[0].label.machine, L"BUILD7");
    EXPECT_EQ(content.runs[1].label.begin, L"2026-03-02 02:00:00");
}

TEST_F(HistoryArchive, OnlyReportsOfArchivesAndOfRunFoldersAreFound)
{
    LbFileSystem::AssertDirectory(m_folder.GetPathOf(L"Archive"));
    LbFileSystem::AssertDirectory(m_folder.GetPathOf(L"Lauf 1"));
    write(std::wstring(L"Archive") + LbPath::c_Separator + L"Report.x64.release.[1].xml", makeReport(L"1", {L"x"}));
    write(std::wstring(L"Lauf 1") + LbPath::c_Separator + L"report.xml", makeReport(L"2", {L"x"}));
    write(std::wstring(L"Lauf 1") + LbPath::c_Separator + L"other.xml", makeReport(L"3", {L"x"}));
    EXPECT_EQ(read().runs.size(), 2U);
}

TEST_F(HistoryArchive, JournalsTakePrecedenceOverTheReportOfTheirRun)
{
    const std::wstring folder = m_folder.GetPathOf(L"Lauf 1");
    Runner::SPlan plan = MakeSamplePlan();
    plan.params.trackHeap = true;
    plan.origin.buildConfiguration = L"Release x64";
    const auto writer = Runner::CRunFolder(folder).BeginRun(plan);
    Runner::SCaseEnded failed = MakeEnd(0, ECaseRunResult::Different);
    Runner::SCaseEnded passed = MakeEnd(0, ECaseRunResult::Ok, 2);
    passed.info.allocations = 7;
    passed.info.peakMemory = 1000;
    writer->Write(MakeStart(0, 1, Runner::EAttemptKind::First));
    writer->Write(failed);
    writer->Write(MakeStart(0, 2, Runner::EAttemptKind::Retry));
    writer->Write(passed);
    writer->Close();
    write(std::wstring(L"Lauf 1") + LbPath::c_Separator + L"report.xml", makeReport(L"2", {L"x"}));

    const SArchiveContent content = read();

    ASSERT_EQ(content.runs.size(), 1U);
    EXPECT_EQ(content.runs[0].label.name, L"Lauf 1");
    EXPECT_EQ(content.runs[0].label.configuration, L"Release x64");
    const SMeasured measured = findMeasured(content, L"eins.txt");
    EXPECT_EQ(measured.result, ECaseRunResult::Ok);
    EXPECT_TRUE(measured.hasBoth);
    EXPECT_FLOAT_EQ(measured.seconds, 0.0015F);
    EXPECT_EQ(measured.memory, 1000U);
    EXPECT_EQ(measured.allocations, 7U);
}

TEST_F(HistoryArchive, CaseThatFailsOnlyInTheSharedProcessCountsOnlyAsFailed)
{
    const auto writer = Runner::CRunFolder(m_folder.GetPathOf(L"Lauf 1")).BeginRun(MakeSamplePlan());
    writer->Write(MakeStart(0));
    writer->Write(MakeEnd(0, ECaseRunResult::Different));
    writer->Write(MakeStart(0, 2, Runner::EAttemptKind::Confirm));
    writer->Write(MakeEnd(0, ECaseRunResult::Ok, 2));
    writer->Close();

    const SMeasured measured = findMeasured(read(), L"eins.txt");

    EXPECT_EQ(measured.result, ECaseRunResult::Different);
    EXPECT_FALSE(measured.hasBoth);
}

TEST_F(HistoryArchive, PlannedCasesThatDidNotRunCountAsCanceled)
{
    const auto writer = Runner::CRunFolder(m_folder.GetPathOf(L"Lauf 1")).BeginRun(MakeSamplePlan());
    writer->Write(MakeStart(3));
    writer->Write(MakeEnd(3, ECaseRunResult::Ok));
    writer->Close();

    const SArchiveContent content = read();

    ASSERT_EQ(content.runs.size(), 1U);
    EXPECT_EQ(findMeasured(content, L"x.dat").result, ECaseRunResult::Ok);
    EXPECT_EQ(findMeasured(content, L"y.dat").result, ECaseRunResult::Canceled);
}

TEST_F(HistoryArchive, CanceledRepetitionsAreIgnored)
{
    SReportData data = makeReport(L"1", {L"x", L"x", L"x"});
    data.Cases[0].Result = ECaseRunResult::Canceled;
    data.Cases[0].Time = 0.0F;
    data.Cases[2].Result = ECaseRunResult::Canceled;
    data.Cases[2].Time = 0.0F;
    write(L"a.xml", data);

    const SMeasured measured = findMeasured(read(), L"x");

    EXPECT_EQ(measured.result, ECaseRunResult::Ok);
    EXPECT_FLOAT_EQ(measured.seconds, 0.25F);
}

TEST_F(HistoryArchive, ShardsOfADistributedRunAreOneRun)
{
    const CPlayedRun played;
    played.RunShard(1);
    played.RunShard(2);
    LuTestSuiteReport::GenerateXMLReport(played.GetFolder() + L"report.xml", makeReport(L"2", {L"x"}));

    const SArchiveContent content = ReadArchive(played.GetFolder());

    ASSERT_EQ(content.runs.size(), 1U);
    EXPECT_EQ(content.runs[0].label.name, L".");
    EXPECT_EQ(findMeasured(content, L"x.dat").result, ECaseRunResult::Ok);
    EXPECT_EQ(findMeasured(content, L"zwei.txt").result, ECaseRunResult::Ok);
}

TEST_F(HistoryArchive, NewResultOfAShardIsRead)
{
    const CPlayedRun played;
    played.RunShard(1);
    ReadArchive(played.GetFolder());
    played.RunShard(2);

    const SArchiveContent content = ReadArchive(played.GetFolder());

    EXPECT_EQ(content.readCount, 1U);
    ASSERT_EQ(content.runs.size(), 1U);
    EXPECT_TRUE(
        std::ranges::all_of(content.runs[0].cells, [](const SCell& cell) { return cell.measured.HasPassed(); }));
}

TEST_F(HistoryArchive, VerdictsThatTheSubmitterDidNotSeeDoNotCount)
{
    const CPlayedRun played;
    played.RunShard(1);
    const auto late = played.Join(2);
    CPlayedRun::RunCase(*late, 0);
    const auto countPassed = [&played] {
        const SArchiveContent content = ReadArchive(played.GetFolder());
        return std::ranges::count_if(content.runs[0].cells,
                                     [](const SCell& cell) { return cell.measured.HasPassed(); });
    };
    const auto before = countPassed();
    // The submitter did not see the verdict of shard 2.
    const std::string digest = Runner::ReadPlan(played.GetFolder() + Runner::c_PlanName).digest;
    Runner::CAppendFile(played.GetFolder() + Runner::c_ProofName)
        .Append("{\"plan\":\"" + digest + R"(","shards":[{"journals":[8]},{"journals":[1]}]})");

    EXPECT_EQ(before, 4);
    EXPECT_EQ(countPassed(), 3);
}

TEST_F(HistoryArchive, DistributedRunThatHasNotBegunIsIgnored)
{
    const CPlayedRun played;
    EXPECT_TRUE(ReadArchive(played.GetFolder()).runs.empty());
}

TEST_F(HistoryArchive, DistributedRunThatEndedBeforeItBeganIsListedAsUnreadable)
{
    const CPlayedRun played;
    LuTestSuiteReport::GenerateXMLReport(played.GetFolder() + L"alt.xml", makeReport(L"1", {L"x"}));
    std::filesystem::last_write_time(played.GetFolder() + L"alt.xml",
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    const std::wstring problems = played.GetFolder() + Runner::c_ProblemsName;
    LuStreamWriteBinaryFile file(problems);
    file.Write("Teil 1 ging verloren\n", 21);
    file.Close();
    CapturedOutput output;
    const SArchiveContent content = ReadArchive(played.GetFolder());

    EXPECT_EQ(content.runs.size(), 1U);
    ASSERT_EQ(content.unreadable.size(), 1U);
    EXPECT_EQ(content.unreadable[0].name, L".");
    EXPECT_EQ(content.unreadable[0].configurations.size(), 1U);
}

TEST_F(HistoryArchive, RunsWithDamagedJournalsAreIgnored)
{
    LbFileSystem::AssertDirectory(m_folder.GetPathOf(L"Lauf 1"));
    writeText(std::wstring(L"Lauf 1") + LbPath::c_Separator + L"journal.ndjson", "{");
    write(L"a.xml", makeReport(L"1", {L"x"}));

    EXPECT_EQ(read().runs.size(), 1U);
}

TEST_F(HistoryArchive, ReportIsReadInsteadOfDamagedJournals)
{
    const std::wstring folder = std::wstring(L"Lauf 1") + LbPath::c_Separator;
    LbFileSystem::AssertDirectory(m_folder.GetPathOf(L"Lauf 1"));
    writeText(folder + L"journal.ndjson", "{");
    write(folder + L"report.xml", makeReport(L"1", {L"x"}));
    CapturedOutput output;

    EXPECT_TRUE(findMeasured(read(), L"x").HasPassed());
    EXPECT_NE(output.GetText().find(L"Warnung: "), std::wstring::npos);
}

TEST_F(HistoryArchive, NamesAndCellsAreSortedByCaseName)
{
    write(L"a.xml", makeReport(L"1", {L"z", L"b"}));
    write(L"b.xml", makeReport(L"2", {L"a", L"z"}));
    const SArchiveContent content = read();
    ASSERT_EQ(content.names.size(), 3U);
    EXPECT_TRUE(std::ranges::is_sorted(content.names));
    EXPECT_EQ(content.names[content.runs[0].cells[0].caseIndex].caseName, L"b");
    EXPECT_EQ(content.names[content.runs[0].cells[1].caseIndex].caseName, L"z");
    EXPECT_EQ(content.names[content.runs[1].cells[0].caseIndex].caseName, L"a");
    EXPECT_EQ(content.names[content.runs[1].cells[1].caseIndex].caseName, L"z");
}

TEST_F(HistoryArchive, CasesWithTheSameNameCountOnceWithTheWorstResult)
{
    SReportData data = makeReport(L"1", {L"x", L"x", L"x"});
    data.Cases[1].Result = LuTestSuiteRun::ECaseRunResult::Different;
    data.Cases[1].Dumps = {{true, L"Wert &lt; 5"}};
    data.Cases[1].Memory = 5000;
    data.Cases[2].Time = 1.0F;
    write(L"a.xml", data);
    const SArchiveContent content = read();
    ASSERT_EQ(content.runs[0].cells.size(), 1U);
    const SMeasured& measured = content.runs[0].cells[0].measured;
    EXPECT_EQ(measured.result, ECaseRunResult::Different);
    EXPECT_EQ(measured.memory, 5000U);
    EXPECT_FLOAT_EQ(measured.seconds, 0.5F);
    EXPECT_EQ(measured.allocations, c_UnknownCount);
    ASSERT_EQ(content.runs[0].messages.size(), 1U);
    EXPECT_EQ(content.runs[0].messages[0].text, L"Wert < 5");
}

TEST_F(HistoryArchive, ModifiedOrMixedWorkingCopiesAreUnknownBuilds)
{
    LuTestSuiteUtils::SSvnInfo svn;
    svn.URL = L"svn://server/trunk";
    svn.Revision = L"4168";
    EXPECT_EQ(GetBuildName(&svn, nullptr), L"svn://server/trunk@4168");
    svn.Revision = L"4168M";
    EXPECT_EQ(GetBuildName(&svn, nullptr), L"");
    svn.Revision = L"4123:4168";
    EXPECT_EQ(GetBuildName(&svn, nullptr), L"");
    EXPECT_EQ(GetBuildName(nullptr, nullptr), L"");
}

TEST_F(HistoryArchive, MissingFolderIsAnError)
{
    EXPECT_THROW(ReadArchive(m_folder.GetPathOf(L"away")), LbException);
}

TEST_F(HistoryArchive, UnreadableReportIsIgnoredWithAWarning)
{
    write(L"a.xml", makeReport(L"1", {L"x"}));
    writeText(L"b.xml", "<testsuite><unfinished");
    CapturedOutput output;
    EXPECT_EQ(read().runs.size(), 1U);
    EXPECT_NE(output.GetText().find(L"b.xml wurde nicht gelesen"), std::wstring::npos);
}

TEST_F(HistoryArchive, SecondReadingOfAnUnreadableReportDoesNotWriteTheIndex)
{
    write(L"a.xml", makeReport(L"1", {L"x"}));
    writeText(L"b.xml", "<testsuite><unfinished");
    CapturedOutput output;
    read();
    const std::wstring index = m_folder.GetPathOf(c_IndexName);
    std::filesystem::last_write_time(index, std::filesystem::file_time_type::clock::now() + std::chrono::hours(1));
    const auto written = std::filesystem::last_write_time(index);
    const SArchiveContent content = read();

    EXPECT_EQ(std::filesystem::last_write_time(index), written);
    EXPECT_EQ(content.runs.size(), 1U);
    ASSERT_EQ(content.unreadable.size(), 1U);
    EXPECT_EQ(content.unreadable[0].name, L"b.xml");
    EXPECT_EQ(content.unreadable[0].configurations.size(), 1U);
    const std::wstring text = output.GetText();
    EXPECT_NE(text.find(L"b.xml wurde nicht gelesen"), text.rfind(L"b.xml wurde nicht gelesen"));
}

TEST_F(HistoryArchive, RepairedReportIsRead)
{
    writeText(L"b.xml", "<testsuite><unfinished");
    CapturedOutput output;
    read();
    write(L"b.xml", makeReport(L"2", {L"x"}));

    EXPECT_EQ(read().runs.size(), 1U);
    EXPECT_TRUE(read().unreadable.empty());
}

TEST_F(HistoryArchive, ReportWrittenLaterIsReadInsteadOfDamagedJournals)
{
    const std::wstring folder = std::wstring(L"Lauf 1") + LbPath::c_Separator;
    LbFileSystem::AssertDirectory(m_folder.GetPathOf(L"Lauf 1"));
    writeText(folder + L"journal.ndjson", "{");
    CapturedOutput output;
    EXPECT_TRUE(read().runs.empty());
    write(folder + L"report.xml", makeReport(L"1", {L"x"}));

    EXPECT_EQ(read().runs.size(), 1U);
}

TEST_F(HistoryArchive, SecondReadingUsesOnlyTheIndex)
{
    write(L"a.xml", makeReport(L"1", {L"x", L"größer"}));
    write(L"b.xml", makeReport(L"2", {L"x"}));
    const SArchiveContent first = read();
    const SArchiveContent second = read();
    EXPECT_EQ(first.readCount, 2U);
    EXPECT_EQ(second.readCount, 0U);
    EXPECT_EQ(first.names, second.names);
    ASSERT_EQ(second.runs.size(), 2U);
    for (std::size_t run = 0; run < 2; ++run)
    {
        EXPECT_EQ(first.runs[run].label, second.runs[run].label);
        EXPECT_EQ(first.runs[run].cells, second.runs[run].cells);
        EXPECT_EQ(first.runs[run].messages, second.runs[run].messages);
    }
}

TEST_F(HistoryArchive, SecondReadingReadsOnlyNewRuns)
{
    write(L"a.xml", makeReport(L"1", {L"x"}));
    read();
    write(L"b.xml", makeReport(L"2", {L"a", L"x"}));
    const SArchiveContent content = read();
    EXPECT_EQ(content.readCount, 1U);
    ASSERT_EQ(content.runs.size(), 2U);
    EXPECT_EQ(content.names[content.runs[0].cells[0].caseIndex].caseName, L"x");
}

TEST_F(HistoryArchive, ChangedRunIsReadAgain)
{
    write(L"a.xml", makeReport(L"1", {L"x"}));
    read();
    write(L"a.xml", makeReport(L"1", {L"y"}));
    const SArchiveContent content = read();
    EXPECT_EQ(content.readCount, 1U);
    ASSERT_EQ(content.names.size(), 2U);
    EXPECT_EQ(content.names[content.runs[0].cells[0].caseIndex].caseName, L"y");
}

TEST_F(HistoryArchive, RemovedRunIsNoLongerListed)
{
    write(L"a.xml", makeReport(L"1", {L"x"}));
    write(L"b.xml", makeReport(L"2", {L"x"}));
    read();
    ASSERT_TRUE(LbOs::RemoveFile(m_folder.GetPathOf(L"a.xml")));
    const SArchiveContent content = read();
    ASSERT_EQ(content.runs.size(), 1U);
    EXPECT_EQ(content.runs[0].label.name, L"b.xml");
}

TEST_F(HistoryArchive, DamagedIndexIsWrittenAgain)
{
    write(L"a.xml", makeReport(L"1", {L"x"}));
    read();
    const std::wstring index = m_folder.GetPathOf(c_IndexName);
    std::string bytes = LbFileSystem::ReadFile8Bit(index);
    for (const std::size_t place : {std::size_t{5}, std::size_t{40}, bytes.size() - 3})
    {
        std::string damaged = bytes;
        damaged[place] = static_cast<char>(damaged[place] ^ 0x20);
        writeText(c_IndexName, damaged);
        const SArchiveContent content = read();
        EXPECT_EQ(content.readCount, 1U) << "damaged at byte " << place;
        EXPECT_EQ(content.runs.size(), 1U) << "damaged at byte " << place;
    }
    writeText(c_IndexName, bytes.substr(0, bytes.size() / 2));
    EXPECT_EQ(read().readCount, 1U);
    EXPECT_EQ(read().readCount, 0U);
}
