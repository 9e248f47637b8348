#include <string>

#include <gtest/gtest.h>

#include "tests/support/runtest.h"

namespace
{

const std::wstring c_Reports = L"Warnung: Reports werden in dieser Version nicht geschrieben.\n";

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

TEST_F(RunMissingFeatures, NamesTheXmlReport)
{
    LuTestSuiteSetup setup = MakeOneCase();
    setup.xmlReport = L"Report.xml";

    ExpectOnlyWarning(setup, c_Reports);
}

TEST_F(RunMissingFeatures, NamesTheHtmlReport)
{
    LuTestSuiteSetup setup = MakeOneCase();
    setup.htmlReport = L"Report.html";

    ExpectOnlyWarning(setup, c_Reports);
}

TEST_F(RunMissingFeatures, NamesAutomaticReports)
{
    LuTestSuiteSetup setup = MakeOneCase();
    setup.autoXml = true;
    setup.autoHtml = true;

    ExpectOnlyWarning(setup, c_Reports);
}

} // namespace
