#include <string>

#include <gtest/gtest.h>

#include "tests/support/runtest.h"

namespace
{

const std::wstring c_Parallel =
    L"Warnung: Parallele Ausführung ist in dieser Version nicht enthalten, alle Testfälle laufen nacheinander.\n";
const std::wstring c_External =
    L"Warnung: Externe Ausführung ist in dieser Version nicht enthalten, alle Testfälle laufen im selben Prozess.\n";

/// A setting that this version does not act on is named in a warning, and the run goes on.
class RunMissingFeatures : public RunTest
{
protected:
    static LuTestSuiteSetup MakeOneCase() { return MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins"})}); }

    void ExpectOnlyWarning(const LuTestSuiteSetup& setup, const std::wstring& warning)
    {
        const auto result = Run(setup);

        const auto lines = m_output.GetLines();
        ASSERT_GE(lines.size(), 2U);
        EXPECT_EQ(lines[0], CapturedOutput::BoldColored(warning, LuColor::c_GOLDENROD));
        EXPECT_EQ(lines[1], CapturedOutput::Bold(L"CPassedModel\n"));
        EXPECT_EQ(result.stats.total.GetCount(LuTestSuiteRun::ECaseRunResult::Ok), 1U);
    }
};

TEST_F(RunMissingFeatures, SaysNothingWhenNoneIsAskedFor)
{
    Run(MakeOneCase());

    EXPECT_EQ(m_output.GetLines().at(0), CapturedOutput::Bold(L"CPassedModel\n"));
}

TEST_F(RunMissingFeatures, NamesParallelExecution)
{
    LuTestSuiteSetup setup = MakeOneCase();
    setup.params.parallel = true;

    ExpectOnlyWarning(setup, c_Parallel);
}

TEST_F(RunMissingFeatures, NamesExternalExecution)
{
    LuTestSuiteSetup setup = MakeOneCase();
    setup.params.external = true;

    ExpectOnlyWarning(setup, c_External);
}

TEST_F(RunMissingFeatures, NamesExternalExecutionThatACaseAsksFor)
{
    LuTestSuiteSetup setup = MakeOneCase();
    setup.unitTests[0].cases[0].parameters[L"External"] = true;

    ExpectOnlyWarning(setup, c_External);
}

TEST_F(RunMissingFeatures, NamesEveryOneOnce)
{
    LuTestSuiteSetup setup = MakeOneCase();
    setup.params.parallel = setup.params.external = true;

    Run(setup);

    EXPECT_TRUE(m_output.GetText().starts_with(c_Parallel + c_External + L"CPassedModel\n"));
}

} // namespace
