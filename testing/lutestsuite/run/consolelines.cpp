#include "testing/lutestsuite/run/consolelines.h"

#include <string>

#include "base/lbformat.h"
#include "testing/lutestsuite/lutestsuiteout.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace LuTestSuiteRun
{

namespace
{

/// Indexed by ECaseRunResult.
constexpr const wchar_t* c_ResultTexts[SStats::SCounts::sc_uiResults] = {
    L"OK",
    L"FEHLER (Die Ausführung dieses Testfalls ist fehlgeschlagen)",
    L"FEHLER (Während der Ausführung dieses Testfalls wurde eine Exception geworfen)",
    L"FEHLER (Die Datei mit den Testdaten konnte nicht geladen werden)",
    L"FEHLER (Output unterscheidet sich von der Referenz-Ausführung)",
    L"FEHLER (Unbekannter Fehler)",
    L"FEHLER (Keinen passenden Testfall gefunden.)",
    L"FEHLER (Ausführung des Testfalls vom Benutzer abgebrochen)",
    L"FEHLER (Ausführung nach Erreichen des Zeitlimits abgebrochen.)",
};

std::wstring getResultText(const SCaseInfo& info)
{
    if (info.result == ECaseRunResult::Ok && info.warning && info.memoryGrowth != 0)
    {
        return LbFormat(L"WARNUNG (Ein Speicheranstieg von %d Bytes wurde entdeckt)",
                        static_cast<std::int64_t>(info.memoryGrowth));
    }
    const auto index = static_cast<std::size_t>(info.result);
    const auto unknown = static_cast<std::size_t>(ECaseRunResult::Unknown);
    return c_ResultTexts[index < SStats::SCounts::sc_uiResults ? index : unknown];
}

LuColor getResultColor(const SCaseInfo& info)
{
    if (info.result != ECaseRunResult::Ok)
    {
        return LuColor::c_RED;
    }
    return info.warning ? LuColor::c_GOLDENROD : LuColor::c_GREEN;
}

/// Thread and process of a case, for the verbose output.
std::wstring getPlaceText(const SCaseInfo& info)
{
    std::wstring text = L" ";
    if (info.threadIndex >= 0)
    {
        text += LbFormat(L"[T%d]", info.threadIndex);
    }
    if (info.processIndex >= 0)
    {
        text += LbFormat(L"[P%d]", info.processIndex);
    }
    return text;
}

std::wstring countText(std::uint32_t count, const wchar_t* singular, const wchar_t* pluralEnding)
{
    return LbFormat(L"%d %s", count, singular) + (count == 1 ? L"" : pluralEnding);
}

/// Prints one row of the summary: the number of unit tests, then of case runs.
void writeRow(LbFormatString<std::wstring, std::wstring> format, std::uint32_t unitTests, std::uint32_t cases,
              LuColor color)
{
    LuTestSuiteOut::Write(format, countText(unitTests, L"Klasse", L"n"), countText(cases, L"Test", L"s")).Color(color);
}

void writeFailedUnitTests(const std::vector<LuTestSuite::SUnitTest>& unitTests, const SStats& stats)
{
    LuTestSuiteOut::Write(L"\n");
    LuTestSuiteOut::Write(L"Fehlerhafte Klassen:\n").Color(LuColor::c_RED);
    for (std::size_t index = 0; index < unitTests.size(); ++index)
    {
        const SStats::SCounts& counts = stats.unitTests[index];
        const std::uint32_t failed = counts.executed - counts.GetCount(ECaseRunResult::Ok);
        if (failed != 0)
        {
            LuTestSuiteOut::Write(L"\t%s: %d fehlerhafte Testfälle\n", unitTests[index].className, failed)
                .Color(LuColor::c_RED);
        }
    }
}

} // namespace

void CCaseLines::WriteHeader(const SCaseInfo& info)
{
    const LuTestSuite::COutputBatch batch;
    const LuTestSuite::SUnitTest& unitTest = m_unitTests[info.unitTest];
    if (info.unitTest != m_lastUnitTest)
    {
        // The heading is bold and has no colour, to distinguish it from results.
        LuTestSuiteOut::Write(L"%s\n", unitTest.className).Bold();
        m_lastUnitTest = info.unitTest;
    }
    const std::wstring& caseName = unitTest.cases[info.testCase].name;
    if (m_params.repetitions < 2)
    {
        LuTestSuiteOut::Write(L"\t%s... ", caseName);
    }
    else
    {
        LuTestSuiteOut::Write(L"\t(%d/%d) %s... ", info.repetition + 1, m_params.repetitions, caseName);
    }
}

void CCaseLines::WriteResult(const SCaseInfo& info, LuTestSuite::EBatchEnd end) const
{
    std::wstring text = getResultText(info);
    if (m_params.repetitionsGiven)
    {
        constexpr double c_SecondsPerNanosecond = 1e-9;
        const double seconds = static_cast<double>(info.time) * c_SecondsPerNanosecond;
        text += LbFormat(L" [%s]", LuTestSuiteUtils::FormatTime(seconds, 2));
    }
    if (m_params.verbose)
    {
        text += getPlaceText(info);
    }
    const LuTestSuite::COutputBatch batch(end);
    LuTestSuiteOut::Write(L"%s", text).Bold().Color(getResultColor(info));
    LuTestSuiteOut::Write(L"\n");
}

void WriteCanceled()
{
    LuTestSuiteOut::Write(L"\tAusführung abgebrochen.\n").Bold().Color(LuColor::c_GRAY);
}

void WriteSummary(const std::vector<LuTestSuite::SUnitTest>& unitTests, const SStats& stats)
{
    const std::uint32_t executed = stats.total.executed;
    const std::uint32_t passed = stats.total.GetCount(ECaseRunResult::Ok);
    LuTestSuiteOut::Write(L"\n");
    LuTestSuiteOut::Write(L"Zusammenfassung\n").Color(LuColor::c_DARKBLUE);
    writeRow(L"\tAusgeführt:\t%s, %s\n", stats.unitTestsExecuted, executed, LuColor::c_DARKBLUE);
    writeRow(L"\tErfolgreich:\t%s, %s\n", stats.unitTestsPassed, passed, LuColor::c_GREEN);
    if (passed != executed)
    {
        writeRow(L"\tFehlerhaft:\t%s, %s\n", stats.unitTestsExecuted - stats.unitTestsPassed, executed - passed,
                 LuColor::c_RED);
    }
    if (stats.total.warnings != 0)
    {
        // The number of unit tests intentionally includes failed ones.
        writeRow(L"\tMit Warnung:\t%s, %s\n", stats.unitTestsExecuted - stats.unitTestsPassedWithoutWarning,
                 stats.total.warnings, LuColor::c_GOLDENROD);
    }
    if (stats.unitTestsPassed != stats.unitTestsExecuted)
    {
        writeFailedUnitTests(unitTests, stats);
    }
}

} // namespace LuTestSuiteRun
