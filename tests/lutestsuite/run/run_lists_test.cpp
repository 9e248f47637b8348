// Lists of unit tests that a host makes itself.

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/runtest.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SCaseInfo;
using LuTestSuiteRun::SRunResult;
using testing::ElementsAre;

class RunLists : public RunTest
{
protected:
    static std::vector<ECaseRunResult> GetResults(const SRunResult& result)
    {
        std::vector<ECaseRunResult> results;
        for (const SCaseInfo& info : result.cases)
        {
            results.push_back(info.result);
        }
        return results;
    }
};

TEST_F(RunLists, MayNameAClassSeveralTimesInAnyOrder)
{
    const SRunResult result = Run(MakeSetup(
        {MakeUnitTest(L"CResultModel", {L"bestanden"}), MakeUnitTest(L"CFailedModel", {L"allein"}),
         MakeUnitTest(L"CResultModel", {L"abweichend", L"bestanden"}), MakeUnitTest(L"CResultModel", {L"bestanden"})}));

    EXPECT_THAT(GetResults(result), ElementsAre(ECaseRunResult::Ok, ECaseRunResult::Error, ECaseRunResult::Different,
                                                ECaseRunResult::Ok, ECaseRunResult::Ok));
    EXPECT_EQ(result.stats.unitTestsExecuted, 4U);
    EXPECT_EQ(result.stats.unitTestsPassed, 2U);
}

TEST_F(RunLists, MayNameACaseSeveralTimes)
{
    const SRunResult result =
        Run(MakeSetup({MakeUnitTest(L"CResultModel", {L"bestanden", L"abweichend", L"bestanden"})}));

    EXPECT_THAT(GetResults(result), ElementsAre(ECaseRunResult::Ok, ECaseRunResult::Different, ECaseRunResult::Ok));
}

TEST_F(RunLists, AreRunWithoutASearchOfTheDataDirectory)
{
    // A search would find this unit test and run it, too.
    const ScopedFolder folder;
    folder.MakeFolder(L"CPassedModel");
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CResultModel", {L"bestanden"})});
    setup.dataDir = LuTestSuiteUtils::AddBackslash(folder.GetPath());

    const SRunResult result = Run(setup);

    EXPECT_EQ(result.cases.size(), 1U);
    EXPECT_EQ(result.stats.unitTestsPassed, 1U);
}

} // namespace
