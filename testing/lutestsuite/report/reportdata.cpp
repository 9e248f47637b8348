/// The record of a finished run.

#include <algorithm>

#include "base/lbexception.h"
#include "base/os/machine.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "testing/lutestsuite/report/leaknote.h"
#include "testing/lutestsuite/report/messagelines.h"
#include "testing/lutestsuite/settings/parameters.h"

namespace
{

using LuTestSuite::SUnitTest;
using LuTestSuiteRun::SCaseInfo;
using LuTestSuiteRun::SParams;
using LuTestSuiteRun::SStats;
using SReportData = LuTestSuiteReport::SReportData;

/// Throws for records of different runs, which callers may pass by mistake.
void requireFittingRecords(const std::vector<SUnitTest>& unitTests, const std::vector<SCaseInfo>& cases,
                           const SStats& stats)
{
    const auto isKnown = [&unitTests](const SCaseInfo& info) {
        return info.unitTest < unitTests.size() && info.testCase < unitTests[info.unitTest].cases.size();
    };
    if (stats.unitTests.size() != unitTests.size() ||
        !std::ranges::all_of(cases, [&](const SCaseInfo& info) { return !info.executed || isKnown(info); }))
    {
        throw LbException(L"LuTestSuiteReport::GenerateReportData",
                          L"Unittests, Testfälle und Statistik gehören nicht zum selben Lauf");
    }
}

void describeBuild(SReportData& data)
{
    data.BuildConfiguration = LuTestSuiteUtils::GetBuildConfiguration();
    data.SvnInfo = LuTestSuiteUtils::GetSvnInfo();
    data.PscmInfo = LuTestSuiteUtils::GetPscmInfo();
}

void describeMachine(SReportData& data)
{
    data.Processor = LuTestSuiteReport::getCPUInfo();
    data.GPU = LuTestSuiteReport::getGPUInfo();
    data.MachineName = LbOs::GetMachineName();
}

const wchar_t* getExecutionMode(const SParams& params)
{
    if (!params.external)
    {
        return L"Internal";
    }
    return params.isolated ? L"External Isolated" : L"External";
}

void describeSetup(const LuTestSuiteSetup& setup, SReportData& data)
{
    data.DataDirectory = setup.dataDir;
    data.ExecutionMode = getExecutionMode(setup.params);
    data.ThreadCount = setup.params.parallel ? setup.params.workerThreads : 1;
    data.TimeOut = setup.params.timeOutSec;
}

void fillCounts(const SStats& stats, SReportData& data)
{
    LuTestSuiteReport::SReportCounts counts;
    LuTestSuiteReport::getReportCounts(stats.total, counts);
    data.Failures = counts.counts[LuTestSuiteReport::eRR_Failure];
    data.Errors = counts.counts[LuTestSuiteReport::eRR_Error];
    data.CasesTotal = stats.total.executed;
    data.Successful = data.CasesTotal - data.Errors - data.Failures;
    data.Warnings = stats.total.warnings;
    data.ClassesTotal = stats.unitTestsExecuted;
    data.ClassesSuccessful = stats.unitTestsPassed;
    data.ClassesFlagged = stats.unitTestsExecuted - stats.unitTestsPassedWithoutWarning;
}

std::uint64_t getMean(std::uint64_t sum, std::uint32_t count)
{
    return count == 0 ? 0 : sum / count;
}

void fillFigures(const SStats& stats, SReportData& data)
{
    data.DateBegin = stats.startTime;
    data.DateEnd = stats.endTime;
    data.TimeTotal = LuTestSuiteReport::toSeconds(stats.totalTime);
    data.TimeAvg = LuTestSuiteReport::toSeconds(getMean(stats.caseTimeSum, data.CasesTotal));
    data.TimeMax = LuTestSuiteReport::toSeconds(stats.caseTimeMax);
    data.TimeMin = LuTestSuiteReport::toSeconds(stats.caseTimeMin);
    data.MemoryAvg = getMean(stats.peakMemorySum, data.CasesTotal);
    data.MemoryMax = stats.peakMemoryMax;
    data.MemoryMin = stats.peakMemoryMin;
}

LuTestSuiteReport::SReportClass makeClass(const SUnitTest& unitTest, const SStats::SCounts& counts)
{
    LuTestSuiteReport::SReportClass result;
    LuTestSuiteReport::SReportCounts reportCounts;
    result.Name = unitTest.className;
    result.CasesTotal = LuTestSuiteReport::getReportCounts(counts, reportCounts);
    result.Failures = reportCounts.counts[LuTestSuiteReport::eRR_Failure];
    result.Errors = reportCounts.counts[LuTestSuiteReport::eRR_Error];
    result.Successful = result.CasesTotal - result.Failures - result.Errors;
    result.Warnings = counts.warnings;
    if (!unitTest.contacts.empty())
    {
        result.ContactName = unitTest.contacts.front().name;
        result.ContactEMail = unitTest.contacts.front().email;
    }
    return result;
}

LuTestSuiteReport::SReportCase makeCase(const SCaseInfo& info, const SUnitTest& unitTest, std::uint32_t maxLines)
{
    const LuTestSuite::STestCase& testCase = unitTest.cases[info.testCase];
    LuTestSuiteReport::SReportCase result;
    result.ClassName = unitTest.className;
    result.CaseName = testCase.name;
    result.Time = LuTestSuiteReport::toSeconds(info.time);
    result.Memory = info.peakMemory;
    result.MemoryDelta = static_cast<std::int64_t>(info.memoryGrowth);
    result.Result = info.result;
    result.Info = LuTestSuite::GetLeakNote(result.MemoryDelta);
    result.Warning = info.warning;
    result.Dumps = LuTestSuite::GetMessageLines(
        info.messages, LuTestSuite::GetNumber(testCase.parameters, L"MessageReportMax").value_or(maxLines));
    return result;
}

} // namespace

void LuTestSuiteReport::GenerateReportData(SReportData& data, const LuTestSuiteSetup& setup,
                                           const std::vector<SUnitTest>& unitTests, const std::vector<SCaseInfo>& cases,
                                           const SStats& stats)
{
    requireFittingRecords(unitTests, cases, stats);
    describeBuild(data);
    describeMachine(data);
    describeSetup(setup, data);
    fillCounts(stats, data);
    fillFigures(stats, data);
    data.Classes.reserve(unitTests.size());
    for (std::size_t index = 0; index < unitTests.size(); ++index)
    {
        data.Classes.push_back(makeClass(unitTests[index], stats.unitTests[index]));
    }
    // Counts the cases, because the statistics come from the caller and may contain any number.
    data.Cases.reserve(static_cast<std::size_t>(std::ranges::count_if(cases, &SCaseInfo::executed)));
    // A negative maximum becomes the largest unsigned number and so means no limit.
    const auto maxLines = static_cast<std::uint32_t>(setup.messageReportMax);
    for (std::size_t index = 0; index < cases.size(); ++index)
    {
        if (cases[index].executed)
        {
            data.Cases.push_back(makeCase(cases[index], unitTests[cases[index].unitTest], maxLines));
            data.Cases.back().Id = static_cast<std::uint32_t>(index);
        }
    }
}

float LuTestSuiteReport::toSeconds(std::uint64_t nanoseconds)
{
    constexpr double c_SecondsPerNanosecond = 1e-9;
    return static_cast<float>(static_cast<double>(nanoseconds) * c_SecondsPerNanosecond);
}
