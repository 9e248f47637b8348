#include "testing/lutestsuiterunner/journal/planfile.h"

#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "testing/lutestsuiterunner/journal/line.h"
#include "tests/lutestsuiterunner/samplerun.h"
#include "tests/support/os/filelimits.h"
#include "tests/support/scopedfolder.h"

namespace
{

std::string encode(const Runner::SPlan& plan)
{
    std::string bytes;
    Runner::EncodePlan(plan, [&bytes](std::string_view line) { bytes += line; });
    return bytes;
}

/// Writes a plan and reads it. Expects that the result has the same encoding.
Runner::SPlan writeAndRead(const Runner::SPlan& plan)
{
    const ScopedFolder folder;
    const std::string digest = Runner::WritePlan(folder.GetPathOf(L"plan.ndjson"), plan);
    Runner::SPlan read = Runner::ReadPlan(folder.GetPathOf(L"plan.ndjson"));
    EXPECT_EQ(encode(read), encode(plan));
    EXPECT_EQ(read.digest, digest);
    return read;
}

TEST(RunnerPlanFile, ReadsBackAPlanAsWritten)
{
    Runner::SPlan plan = MakeSamplePlan(2);
    plan.params.timeOutSec = 12;
    plan.params.parallel = true;
    plan.rules.messageReportMax = -1;
    plan.shard = {2, 3};
    plan.origin.pscm.emplace().Branch = L"main";
    plan.cases[1].isInShard = plan.cases[4].isInShard = plan.cases[5].isInShard = false;
    plan.cases[2].isQuarantined = true;
    const Runner::SPlan read = writeAndRead(plan);

    EXPECT_EQ(read.arguments, plan.arguments);
    EXPECT_EQ(read.params.timeOutSec, 12U);
    EXPECT_EQ(read.params.breakAllocId, LuTestSuiteRun::c_NoBreak);
    EXPECT_EQ(read.rules, plan.rules);
    EXPECT_EQ(read.shard, plan.shard);
    EXPECT_EQ(read.cases, plan.cases);
    EXPECT_EQ(read.disabled, plan.disabled);
    EXPECT_EQ(read.origin.pscm->Branch, L"main");
    EXPECT_FALSE(read.origin.svn);
    EXPECT_EQ(read.unitTests[0].contacts[0].email, L"erika@example.org");
}

TEST(RunnerPlanFile, KeepsCasesAndTheirParameters)
{
    Runner::SPlan plan = MakeSamplePlan();
    plan.unitTests[0].cases[0].parameters = {{L"Enable", LbVariant()}, {L"Isolated", false}, {L"ü\"", 4294967295U}};
    const Runner::SPlan read = writeAndRead(plan);

    for (std::size_t unitTest = 0; unitTest < plan.unitTests.size(); ++unitTest)
    {
        for (std::size_t index = 0; index < plan.unitTests[unitTest].cases.size(); ++index)
        {
            const LuTestSuite::STestCase& testCase = plan.unitTests[unitTest].cases[index];
            const LuTestSuite::STestCase& readCase = read.unitTests[unitTest].cases[index];
            EXPECT_EQ(readCase.name, testCase.name);
            EXPECT_EQ(readCase.dataSetFile, testCase.dataSetFile);
            EXPECT_EQ(readCase.parameters, testCase.parameters);
        }
    }
}

TEST(RunnerPlanFile, KeepsNamesWithAnyCodeUnits)
{
    std::mt19937 random(4);
    for (int round = 0; round < 100; ++round)
    {
        Runner::SPlan plan = MakeSamplePlan();
        for (LuTestSuite::STestCase& testCase : plan.unitTests[0].cases)
        {
            testCase.name = MakeRandomText(random, 20);
        }
        plan.arguments.push_back(MakeRandomText(random, 100));
        const Runner::SPlan read = writeAndRead(plan);

        ASSERT_EQ(read.unitTests[0].cases[1].name, plan.unitTests[0].cases[1].name);
        ASSERT_EQ(read.arguments, plan.arguments);
    }
}

TEST(RunnerPlanFile, SplitsManyCasesIntoRecordsOfLimitedSize)
{
    Runner::SPlan plan = MakeSamplePlan();
    for (int index = 0; index < 5000; ++index)
    {
        plan.unitTests[1].cases.push_back({{}, L"Testfall " + std::to_wstring(index), {}});
    }
    plan.cases = Runner::PlanCases(plan.unitTests, 1);
    for (std::size_t index = 0; index < plan.cases.size(); index += 2)
    {
        plan.cases[index].isInShard = false;
    }
    EXPECT_EQ(writeAndRead(plan).cases, plan.cases);
    std::size_t longest = 0;
    Runner::EncodePlan(plan, [&](std::string_view line) { longest = std::max(longest, line.size()); });

    EXPECT_LT(longest, Runner::c_LargestRecord);
}

TEST(RunnerPlanFile, KeepsThePlaceOfAShardAndExpectedTimes)
{
    Runner::SPlan plan = MakeSamplePlan();
    plan.part = Runner::SShardPlace{"ganz", {3, 4, 5, 9, 100, 101}};
    plan.cases[2].expected = 7'000'000'000;
    const Runner::SPlan read = writeAndRead(plan);

    EXPECT_EQ(read.part, plan.part);
    EXPECT_EQ(read.cases, plan.cases);
    EXPECT_EQ(read.partCount, 0U);
    plan.part.reset();
    plan.partCount = 12;
    EXPECT_EQ(writeAndRead(plan).partCount, 12U);
}

TEST(RunnerPlanFile, RefusesAShardWithTooFewPlacesForItsCases)
{
    Runner::SPlan plan = MakeSamplePlan();
    plan.part = Runner::SShardPlace{"ganz", {3, 4}};

    EXPECT_THROW(writeAndRead(plan), LbException);
}

TEST(RunnerPlanFile, StoresARunWithoutCases)
{
    EXPECT_TRUE(writeAndRead(Runner::SPlan()).cases.empty());
}

TEST(RunnerPlanFile, IsRefusedWhenAnyByteIsMissingOrChanged)
{
    const ScopedFolder folder;
    const std::string bytes = encode(MakeSamplePlan());
    for (std::size_t size = 0; size < bytes.size(); size += 3)
    {
        const std::wstring path = folder.WriteFile(L"plan.ndjson", bytes.substr(0, size));
        ASSERT_THROW(Runner::ReadPlan(path), LbException) << size;
    }
    for (std::size_t position = 0; position < bytes.size(); ++position)
    {
        std::string damaged = bytes;
        damaged[position] ^= 1;
        const std::wstring path = folder.WriteFile(L"plan.ndjson", damaged);
        ASSERT_THROW(Runner::ReadPlan(path), LbException) << position;
    }
}

TEST(RunnerPlanFile, RefusesContradictoryRecords)
{
    const ScopedFolder folder;
    std::string head = encode(Runner::SPlan());
    head.resize(head.find('\n') + 1);
    for (const char* const record :
         {R"({"t":"contact","name":"x"})", R"({"t":"cases","list":[{"name":"x"}]})", R"({"t":"plan","format":1})",
          R"({"t":"elsewhere","ranges":[[0,1]]})", R"({"t":"expected","list":[1]})", R"({"t":"in-whole","ranges":[]})",
          R"({"t":"elsewhere","ranges":[[0]]})", R"({"t":"neu"})", "[]",
          R"({"t":"end","unitTests":1,"cases":0,"digest":""})", R"({"t":"argument","text":1})", "{"})
    {
        std::string line;
        Runner::MakeLine(2, record, line);
        const std::wstring path = folder.WriteFile(L"plan.ndjson", head + line);
        EXPECT_THROW(Runner::ReadPlan(path), LbException) << record;
    }
}

TEST(RunnerPlanFile, LeavesNoFileWhenTheDiskIsFull)
{
    const ScopedFolder folder;
    {
        const auto limit = LbOs::LimitFileSize(100);
        if (!limit)
        {
            GTEST_SKIP() << "the system cannot limit file sizes";
        }
        EXPECT_THROW(Runner::WritePlan(folder.GetPathOf(L"plan.ndjson"), MakeSamplePlan()), LbException);
    }

    EXPECT_TRUE(LbFileSystem::GetFileNames(folder.GetPath()).empty());
}

TEST(RunnerSelectionDigest, IsIndependentOfDataFolderAndShard)
{
    const Runner::SPlan plan = MakeSamplePlan();
    Runner::SPlan other = MakeSamplePlan();
    other.dataDirectory = LbPath::ToNative(L"/anderswo/daten/");
    for (LuTestSuite::SUnitTest& unitTest : other.unitTests)
    {
        unitTest.dataDirectory = other.dataDirectory + unitTest.dataDirectory.substr(plan.dataDirectory.size());
    }
    other.shard = {2, 3};
    other.cases[0].isInShard = false;

    EXPECT_EQ(Runner::DigestSelection(other), Runner::DigestSelection(plan));
}

TEST(RunnerSelectionDigest, IsIndependentOfTheOrderOfCases)
{
    Runner::SPlan other = MakeSamplePlan();
    std::swap(other.unitTests[0], other.unitTests[1]);
    std::swap(other.unitTests[2].cases[0], other.unitTests[2].cases[1]);

    EXPECT_EQ(Runner::DigestSelection(other), Runner::DigestSelection(MakeSamplePlan()));
}

TEST(RunnerSelectionDigest, DependsOnCasesParametersAndRepetitions)
{
    const std::string digest = Runner::DigestSelection(MakeSamplePlan());
    Runner::SPlan renamed = MakeSamplePlan();
    renamed.unitTests[1].cases[0].name = L"eins.tx";
    Runner::SPlan changed = MakeSamplePlan();
    changed.unitTests[0].cases[1].parameters[L"External"] = false;

    EXPECT_NE(Runner::DigestSelection(renamed), digest);
    EXPECT_NE(Runner::DigestSelection(changed), digest);
    EXPECT_NE(Runner::DigestSelection(MakeSamplePlan(2)), digest);
}

} // namespace
