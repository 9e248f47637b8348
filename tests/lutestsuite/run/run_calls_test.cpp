// Tests what the runner calls on a unit test, and when.

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/idebugging.h"
#include "base/luunittest.h"
#include "tests/support/runtest.h"

namespace
{

using testing::Contains;
using testing::ElementsAre;

std::vector<std::wstring> s_Calls;

/// Records each call. Its sub-tests are "gut", "schlecht" and "wirft".
class CRecordedModel : public LuUnitTest, public IDebugging
{
    LB_RTTI(CRecordedModel)

public:
    CRecordedModel() { s_Calls.emplace_back(L"construct"); }
    ~CRecordedModel() override { s_Calls.emplace_back(L"destroy"); }

    void SetMessageStream(LuStreamWriteText* stream) override
    {
        s_Calls.emplace_back(stream != nullptr ? L"SetMessageStream" : L"SetMessageStream without stream");
    }

    void SetDataDirectory(const std::wstring& directory) override
    {
        s_Calls.push_back(L"SetDataDirectory " + directory);
    }

    void InitSubtests() override
    {
        s_Calls.emplace_back(L"InitSubtests");
        AddSubtest(L"gut", [] { return eR_Passed; });
        AddSubtest(L"schlecht", [] { return eR_Failed; });
        AddSubtest(L"wirft", [] { return eR_Passed; });
    }

    bool IsOptionSupported(EOption option) const override
    {
        s_Calls.push_back(LbFormat(L"IsOptionSupported %u", option));
        return true;
    }

    void SetOption(EOption option, bool value) override
    {
        s_Calls.push_back(LbFormat(L"SetOption %u %d", option, value ? 1 : 0));
    }

    void PrepareSubtest() override { s_Calls.emplace_back(L"PrepareSubtest"); }

    std::wstring GetSubtestName(std::uint32_t subtest) const override
    {
        s_Calls.push_back(LbFormat(L"GetSubtestName %u", subtest));
        return LuUnitTest::GetSubtestName(subtest);
    }

    EResult RunUnitTest(std::uint32_t subtest) override
    {
        s_Calls.push_back(LbFormat(L"RunUnitTest %u", subtest));
        if (subtest == 2)
        {
            throw std::wstring(L"wirft");
        }
        return LuUnitTest::RunUnitTest(subtest);
    }
};
LB_RTTI_CLASS(CRecordedModel, LuUnitTest)

/// Not a unit test; records its construction and destruction.
class CRecordedObject : public IObject
{
    LB_RTTI(CRecordedObject)

public:
    CRecordedObject() { s_Calls.emplace_back(L"construct"); }
    ~CRecordedObject() override { s_Calls.emplace_back(L"destroy"); }
};
LB_RTTI_CLASS(CRecordedObject, IObject)

class RunCalls : public RunTest
{
protected:
    RunCalls() { s_Calls.clear(); }

    static LuTestSuiteSetup MakeRecordedSetup(const std::vector<std::wstring>& caseNames)
    {
        LuTestSuite::SUnitTest unitTest = MakeUnitTest(L"CRecordedModel", caseNames);
        unitTest.dataDirectory = L"Daten";
        return MakeSetup({unitTest});
    }
};

TEST_F(RunCalls, AreMadeInOrder)
{
    Run(MakeRecordedSetup({L"schlecht"}));

    EXPECT_THAT(s_Calls, ElementsAre(L"construct", L"SetMessageStream", L"SetDataDirectory Daten", L"InitSubtests",
                                     L"IsOptionSupported 1", L"SetOption 1 0", L"IsOptionSupported 2", L"SetOption 2 0",
                                     L"IsOptionSupported 0", L"SetOption 0 0", L"PrepareSubtest", L"GetSubtestName 0",
                                     L"GetSubtestName 1", L"RunUnitTest 1", L"destroy"));
}

TEST_F(RunCalls, SetVerboseOutputByItsOwnParameter)
{
    LuTestSuiteSetup setup = MakeRecordedSetup({L"gut"});
    setup.params.deVerboseOutput = true;

    Run(setup);

    EXPECT_THAT(s_Calls, Contains(L"SetOption 0 1"));
    EXPECT_THAT(s_Calls, Contains(L"SetOption 1 0"));
    EXPECT_THAT(s_Calls, Contains(L"SetOption 2 0"));
}

TEST_F(RunCalls, SetDebuggingSerializationByItsOwnParameter)
{
    LuTestSuiteSetup setup = MakeRecordedSetup({L"gut"});
    setup.params.deDebuggingSerialization = true;

    Run(setup);

    EXPECT_THAT(s_Calls, Contains(L"SetOption 0 0"));
    EXPECT_THAT(s_Calls, Contains(L"SetOption 1 1"));
    EXPECT_THAT(s_Calls, Contains(L"SetOption 2 0"));
}

TEST_F(RunCalls, SetPredefinedBreakPointsByTheirOwnParameter)
{
    LuTestSuiteSetup setup = MakeRecordedSetup({L"gut"});
    setup.params.dePredefinedBreakPoints = true;

    Run(setup);

    EXPECT_THAT(s_Calls, Contains(L"SetOption 0 0"));
    EXPECT_THAT(s_Calls, Contains(L"SetOption 1 0"));
    EXPECT_THAT(s_Calls, Contains(L"SetOption 2 1"));
}

TEST_F(RunCalls, DestroyTheUnitTestAfterACaseThatThrows)
{
    Run(MakeRecordedSetup({L"wirft"}));

    EXPECT_EQ(s_Calls.back(), L"destroy");
    EXPECT_EQ(s_Calls.at(s_Calls.size() - 2), L"RunUnitTest 2");
}

TEST_F(RunCalls, RunNothingForANameThatNoSubtestHas)
{
    Run(MakeRecordedSetup({L"unbekannt"}));

    EXPECT_EQ(s_Calls.back(), L"destroy");
    EXPECT_EQ(s_Calls.at(s_Calls.size() - 2), L"GetSubtestName 2");
}

TEST_F(RunCalls, MakeAndDestroyOneUnitTestForEachCase)
{
    LuTestSuiteSetup setup = MakeRecordedSetup({L"gut", L"wirft"});
    setup.params.repetitions = 2;

    Run(setup);

    std::vector<std::wstring> lives;
    for (const std::wstring& call : s_Calls)
    {
        if (call == L"construct" || call == L"destroy")
        {
            lives.push_back(call);
        }
    }
    EXPECT_THAT(lives, ElementsAre(L"construct", L"destroy", L"construct", L"destroy", L"construct", L"destroy",
                                   L"construct", L"destroy"));
}

TEST_F(RunCalls, DestroyAnObjectThatIsNoUnitTestAtOnce)
{
    const LuTestSuiteRun::SCaseInfo info = RunCase(L"CRecordedObject", L"Fall");

    EXPECT_EQ(info.result, LuTestSuiteRun::ECaseRunResult::NoMatchingCase);
    EXPECT_THAT(s_Calls, ElementsAre(L"construct", L"destroy"));
}

TEST_F(RunCalls, ReportACaseAfterItsUnitTestIsDestroyed)
{
    std::vector<std::wstring> callsAtNotification;
    LuTestSuiteSetup setup = MakeRecordedSetup({L"gut"});
    setup.resultCallback = [&](LuTestSuiteRun::ECaseRunResult) { callsAtNotification = s_Calls; };

    Run(setup);

    ASSERT_FALSE(callsAtNotification.empty());
    EXPECT_EQ(callsAtNotification.back(), L"destroy");
}

} // namespace
