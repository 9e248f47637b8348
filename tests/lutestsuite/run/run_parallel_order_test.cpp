// The order in which cases on worker threads are printed.

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/luunittest.h"
#include "tests/support/latch.h"
#include "tests/support/runtest.h"

namespace
{

/// Opens when the other cases have been printed.
std::unique_ptr<Latch> s_othersArePrinted;

class CLateModel : public LuUnitTest
{
    LB_RTTI(CLateModel)

    void InitSubtests() override
    {
        AddSubtest(L"zuletzt", [] { s_othersArePrinted->Wait(); });
        AddSubtest(L"zuerst", [] {});
    }
};

class CBetweenModel : public LuUnitTest
{
    LB_RTTI(CBetweenModel)

    void InitSubtests() override
    {
        AddSubtest(L"danach", [] {});
    }
};

} // namespace

LB_RTTI_CLASS(CLateModel, LuUnitTest)
LB_RTTI_CLASS(CBetweenModel, LuUnitTest)

namespace
{

using RunParallelOrder = RunTest;

TEST_F(RunParallelOrder, FollowsTheEndsOfCasesAndRepeatsTheHeading)
{
    s_othersArePrinted = std::make_unique<Latch>(2);
    LuTestSuiteSetup setup =
        MakeSetup({MakeUnitTest(L"CLateModel", {L"zuletzt", L"zuerst"}), MakeUnitTest(L"CBetweenModel", {L"danach"})});
    setup.params.parallel = true;
    setup.params.workerThreads = 2;
    setup.resultCallback = [](LuTestSuiteRun::ECaseRunResult) { s_othersArePrinted->CountDown(); };

    Run(setup);

    const std::wstring text = m_output.GetText();
    EXPECT_EQ(text.substr(0, text.find(L"\nZusammenfassung")), L"CLateModel\n"
                                                               L"\tzuerst... OK\n"
                                                               L"CBetweenModel\n"
                                                               L"\tdanach... OK\n"
                                                               L"CLateModel\n"
                                                               L"\tzuletzt... OK\n");
}

} // namespace
