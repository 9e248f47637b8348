#include "testing/lutestsuite/run/consolelines.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testing/lutestsuite/lutestsuiterunevents.h"
#include "tests/support/capturedoutput.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SCaseInfo;
using testing::ElementsAre;

class CaseLines : public testing::Test
{
protected:
    CaseLines()
    {
        m_unitTests[0].className = L"CErste";
        m_unitTests[0].cases.resize(2);
        m_unitTests[1].className = L"CZweite";
        m_unitTests[1].cases.resize(1);
    }

    /// Writes a result and returns its line without the line feed.
    CapturedOutput::SLine Write(const SCaseInfo& info)
    {
        m_output.Clear();
        LuTestSuiteRun::CCaseLines(m_unitTests, m_params).WriteResult(info);
        const std::vector<CapturedOutput::SLine> lines = m_output.GetLines();
        EXPECT_EQ(lines.size(), 2U);
        EXPECT_EQ(lines.back(), CapturedOutput::Plain(L"\n"));
        return lines.front();
    }

    static SCaseInfo MakeInfo(ECaseRunResult result)
    {
        SCaseInfo info;
        info.result = result;
        return info;
    }

    static SCaseInfo MakeWarning(std::uint64_t growth)
    {
        SCaseInfo info = MakeInfo(ECaseRunResult::Ok);
        info.warning = true;
        info.memoryGrowth = growth;
        return info;
    }

    /// The record of an executed case of one of the unit tests.
    static SCaseInfo MakeExecuted(std::uint32_t unitTest, ECaseRunResult result, bool warning)
    {
        SCaseInfo info = MakeInfo(result);
        info.unitTest = unitTest;
        info.executed = true;
        info.warning = warning;
        return info;
    }

    std::wstring WriteSummary(const std::vector<SCaseInfo>& cases)
    {
        LuTestSuiteRun::WriteSummary(m_unitTests, LuTestSuiteRun::CountCases(cases, m_unitTests.size()));
        return m_output.GetText();
    }

    std::vector<LuTestSuite::SUnitTest> m_unitTests{2};
    LuTestSuiteRun::SParams m_params;
    CapturedOutput m_output;
};

TEST_F(CaseLines, WarnOfGrownMemory)
{
    EXPECT_EQ(Write(MakeWarning(16)),
              CapturedOutput::BoldColored(L"WARNUNG (Ein Speicheranstieg von 16 Bytes wurde entdeckt)",
                                          LuColor::c_GOLDENROD));
}

TEST_F(CaseLines, ShowAWarningWithoutGrowthByItsColourOnly)
{
    EXPECT_EQ(Write(MakeWarning(0)), CapturedOutput::BoldColored(L"OK", LuColor::c_GOLDENROD));
}

TEST_F(CaseLines, ShowShrunkenMemoryWithItsSign)
{
    EXPECT_EQ(Write(MakeWarning(static_cast<std::uint64_t>(-8))).text,
              L"WARNUNG (Ein Speicheranstieg von -8 Bytes wurde entdeckt)");
}

TEST_F(CaseLines, ShowTheErrorOfACaseRatherThanItsGrowth)
{
    SCaseInfo info = MakeWarning(16);
    info.result = ECaseRunResult::Different;

    EXPECT_EQ(Write(info), CapturedOutput::BoldColored(
                               L"FEHLER (Output unterscheidet sich von der Referenz-Ausführung)", LuColor::c_RED));
}

TEST_F(CaseLines, ShowACanceledCase)
{
    EXPECT_EQ(
        Write(MakeInfo(ECaseRunResult::Canceled)),
        CapturedOutput::BoldColored(L"FEHLER (Ausführung des Testfalls vom Benutzer abgebrochen)", LuColor::c_RED));
}

TEST_F(CaseLines, ShowACaseThatTookTooLong)
{
    EXPECT_EQ(
        Write(MakeInfo(ECaseRunResult::TimeOut)),
        CapturedOutput::BoldColored(L"FEHLER (Ausführung nach Erreichen des Zeitlimits abgebrochen.)", LuColor::c_RED));
}

TEST_F(CaseLines, ShowInvalidResultsAsUnknown)
{
    for (const std::uint32_t value : {9U, 10U, 4'294'967'295U})
    {
        EXPECT_EQ(Write(MakeInfo(static_cast<ECaseRunResult>(value))),
                  CapturedOutput::BoldColored(L"FEHLER (Unbekannter Fehler)", LuColor::c_RED));
    }
}

TEST_F(CaseLines, ShowThreadAndProcessWhenVerbose)
{
    m_params.verbose = true;
    SCaseInfo info = MakeInfo(ECaseRunResult::Ok);
    EXPECT_EQ(Write(info).text, L"OK ");

    info.threadIndex = 3;
    EXPECT_EQ(Write(info).text, L"OK [T3]");
    info.processIndex = 0;
    EXPECT_EQ(Write(info).text, L"OK [T3][P0]");
    info.threadIndex = -1;
    EXPECT_EQ(Write(info).text, L"OK [P0]");
}

TEST_F(CaseLines, HideThreadAndProcessUnlessVerbose)
{
    SCaseInfo info = MakeInfo(ECaseRunResult::Ok);
    info.threadIndex = info.processIndex = 1;

    EXPECT_EQ(Write(info).text, L"OK");
}

TEST_F(CaseLines, CountWarningsInTheSummary)
{
    EXPECT_EQ(WriteSummary({MakeExecuted(0, ECaseRunResult::Ok, true), MakeExecuted(0, ECaseRunResult::Ok, true),
                            MakeExecuted(1, ECaseRunResult::Ok, false)}),
              L"\n"
              L"Zusammenfassung\n"
              L"\tAusgeführt:\t2 Klassen, 3 Tests\n"
              L"\tErfolgreich:\t2 Klassen, 3 Tests\n"
              L"\tMit Warnung:\t1 Klasse, 2 Tests\n");
    EXPECT_EQ(m_output.GetLines().back(),
              CapturedOutput::Colored(L"\tMit Warnung:\t1 Klasse, 2 Tests\n", LuColor::c_GOLDENROD));
}

TEST_F(CaseLines, CountFailedUnitTestsAsUnitTestsWithWarnings)
{
    EXPECT_EQ(WriteSummary({MakeExecuted(0, ECaseRunResult::Error, false), MakeExecuted(1, ECaseRunResult::Ok, true)}),
              L"\n"
              L"Zusammenfassung\n"
              L"\tAusgeführt:\t2 Klassen, 2 Tests\n"
              L"\tErfolgreich:\t1 Klasse, 1 Test\n"
              L"\tFehlerhaft:\t1 Klasse, 1 Test\n"
              L"\tMit Warnung:\t2 Klassen, 1 Test\n"
              L"\n"
              L"Fehlerhafte Klassen:\n"
              L"\tCErste: 1 fehlerhafte Testfälle\n");
}

} // namespace
