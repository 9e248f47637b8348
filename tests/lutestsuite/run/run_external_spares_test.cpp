// The number of spare children during a run.

#include <algorithm>
#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/externalruntest.h"
#include "tests/support/hostchildren.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SCaseInfo;
using LuTestSuiteRun::SRunResult;

class RunExternalSpares : public ExternalRunTest
{
protected:
    /// The largest number of children that exist at the end of a case.
    std::ptrdiff_t CountChildren(LuTestSuiteSetup setup)
    {
        std::ptrdiff_t most = 0;
        setup.resultCallback = [&most](ECaseRunResult result) {
            EXPECT_EQ(result, ECaseRunResult::Ok);
            most = std::max(most, CountHostChildren());
        };
        Run(setup);
        return most;
    }

    static void SetAll(LuTestSuiteSetup& setup, const std::wstring& parameter, bool value)
    {
        for (auto& testCase : setup.unitTests[0].cases)
        {
            testCase.parameters[parameter] = value;
        }
    }
};

TEST_F(RunExternalSpares, AreStartedForIsolatedCasesOnly)
{
    LuTestSuiteSetup setup = MakeCrash({L"vorher", L"vorher", L"nachher", L"nachher"});
    SetAll(setup, L"External", false);
    setup.unitTests[0].cases[0].parameters[L"External"] = true;
    setup.unitTests[0].cases[0].parameters[L"Isolated"] = true;

    EXPECT_EQ(CountChildren(setup), 1);
}

TEST_F(RunExternalSpares, AreNotStartedDuringTheLastCase)
{
    LuTestSuiteSetup setup = MakeCrash({L"vorher"});
    setup.params.isolated = true;

    EXPECT_EQ(CountChildren(setup), 1);
}

TEST_F(RunExternalSpares, AreStartedBeforeTheNextCase)
{
    LuTestSuiteSetup setup = MakeCrash({L"vorher", L"nachher"});
    setup.params.isolated = true;

    EXPECT_EQ(CountChildren(setup), 2);
}

/// Three cases need at most three children, even with eight workers.
TEST_F(RunExternalSpares, AreLimitedToTheNumberOfCasesOnManyWorkers)
{
    LuTestSuiteSetup setup = MakeCrash({L"schläft kurz"});
    setup.params.isolated = true;
    setup.params.parallel = true;
    setup.params.workerThreads = 8;
    setup.params.repetitions = 3;

    EXPECT_LE(CountChildren(setup), 3);
}

} // namespace
