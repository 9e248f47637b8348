// Cases that set or reset the events between a run and its child processes.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/externalruntest.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SCaseInfo;
using LuTestSuiteRun::SRunResult;

class RunExternalSignals : public ExternalRunTest
{
protected:
    SRunResult RunIntrusive(const std::vector<std::wstring>& caseNames)
    {
        LuTestSuiteSetup setup = MakeExternal({MakeUnitTest(L"CIntrusiveModel", caseNames)});
        setup.dlls = {L"intrusivemodels"};
        return Run(setup);
    }

    /// Expects that all cases passed in the same process.
    static void ExpectPassed(const SRunResult& result)
    {
        for (const SCaseInfo& info : result.cases)
        {
            EXPECT_EQ(info.result, ECaseRunResult::Ok) << info.testCase;
            EXPECT_EQ(info.processIndex, result.cases.at(0).processIndex) << info.testCase;
        }
    }
};

TEST_F(RunExternalSignals, DoNotEndALaterCase)
{
    const SRunResult result = RunIntrusive({L"setzt fremde Ereignisse", L"dauert", L"dauert"});

    ExpectPassed(result);
    EXPECT_EQ(result.cases.at(1).messages, L"\t\tINFO:  zu Ende\n");
    EXPECT_EQ(result.cases.at(2).messages, L"\t\tINFO:  zu Ende\n");
}

TEST_F(RunExternalSignals, DoNotRunACaseTwice)
{
    const SRunResult result = RunIntrusive({L"zählt", L"setzt fremde Ereignisse", L"zählt", L"dauert", L"zählt"});

    ExpectPassed(result);
    EXPECT_EQ(result.cases.at(2).messages, L"\t\tINFO:  2\n");
    EXPECT_EQ(result.cases.at(4).messages, L"\t\tINFO:  3\n");
}

TEST_F(RunExternalSignals, DoNotDelayTheTimeOut)
{
    LuTestSuiteSetup setup = MakeExternal({MakeUnitTest(L"CIntrusiveModel", {L"setzt fremde Ereignisse"}),
                                           MakeUnitTest(L"CCrashModel", {L"Endlosschleife"})});
    setup.dlls.emplace_back(L"intrusivemodels");
    setup.params.timeOutSec = 1;

    EXPECT_EQ(Run(setup).cases.at(1).result, ECaseRunResult::TimeOut);
}

/// Once a second the run checks the buffer and repeats the signal of a request that was not taken.
TEST_F(RunExternalSignals, AreRepeatedWhenACaseTakesThem)
{
    const std::vector<std::wstring> others(3, L"zählt");
    for (const wchar_t* const thief : {L"nimmt fremde Anfragen", L"nimmt fremde Antworten"})
    {
        std::vector<std::wstring> caseNames = others;
        caseNames.insert(caseNames.begin(), thief);

        ExpectPassed(RunIntrusive(caseNames));
    }
}

} // namespace
