// Cases that remove the names of the objects that a run shares with its child processes.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/externalruntest.h"
#include "tests/support/hostchildren.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SCaseInfo;
using LuTestSuiteRun::SRunResult;

constexpr const wchar_t* c_Removes = L"entfernt fremde Namen";

class RunExternalNames : public ExternalRunTest
{
protected:
    LuTestSuiteSetup MakeIntrusive(const std::vector<std::wstring>& caseNames)
    {
        m_caseNames = caseNames;
        LuTestSuiteSetup setup = MakeExternal({MakeUnitTest(L"CIntrusiveModel", caseNames)});
        setup.dlls = {L"intrusivemodels"};
        return setup;
    }

    /// Expects that all cases pass, except "endet", which ends its process. False if names cannot be removed.
    bool ExpectPassed(const SRunResult& result) const
    {
        for (const SCaseInfo& info : result.cases)
        {
            const std::wstring& name = m_caseNames.at(static_cast<std::size_t>(info.testCase));
            if (name == c_Removes && info.result == ECaseRunResult::NoInput)
            {
                return false;
            }
            EXPECT_EQ(info.result, name == L"endet" ? ECaseRunResult::Unknown : ECaseRunResult::Ok) << info.testCase;
        }
        return true;
    }

private:
    std::vector<std::wstring> m_caseNames;
};

TEST_F(RunExternalNames, AreNotNeededByARunningProcess)
{
    const SRunResult result = Run(MakeIntrusive({c_Removes, L"zählt", L"zählt"}));

    if (!ExpectPassed(result))
    {
        GTEST_SKIP() << "names of existing objects cannot be removed here";
    }
    EXPECT_EQ(result.cases.at(2).messages, L"\t\tINFO:  2\n");
}

TEST_F(RunExternalNames, AreNewForTheNextProcess)
{
    const SRunResult result = Run(MakeIntrusive({c_Removes, L"endet", L"zählt", c_Removes, L"zählt"}));

    if (!ExpectPassed(result))
    {
        GTEST_SKIP() << "names of existing objects cannot be removed here";
    }
    EXPECT_EQ(result.cases.at(2).processIndex, result.cases.at(0).processIndex + 1);
    EXPECT_EQ(result.cases.at(4).messages, L"\t\tINFO:  2\n");
}

/// The first process has ended before it took the request, so the new process gets it.
TEST_F(RunExternalNames, AreNewWhenAProcessHasEndedBetweenTwoCases)
{
    LuTestSuiteSetup setup = MakeIntrusive({c_Removes, L"zählt"});
    setup.resultCallback = [](ECaseRunResult) { KillHostChildren(); };

    const SRunResult result = Run(setup);

    if (!ExpectPassed(result))
    {
        GTEST_SKIP() << "names of existing objects cannot be removed here";
    }
    EXPECT_EQ(result.cases.at(1).messages, L"\t\tINFO:  1\n");
}

TEST_F(RunExternalNames, AreNewForIsolatedCases)
{
    LuTestSuiteSetup setup = MakeIntrusive({c_Removes, L"zählt"});
    setup.params.isolated = true;
    setup.params.repetitions = 3;

    if (!ExpectPassed(Run(setup)))
    {
        GTEST_SKIP() << "names of existing objects cannot be removed here";
    }
}

} // namespace
