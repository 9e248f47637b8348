#include <cstdint>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "testing/lutestsuite/lutestsuitereport.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using Report = LuTestSuiteReport;

struct SExpected
{
    std::uint32_t value;
    Report::EReportResult reportResult;
    const wchar_t* name;
    const wchar_t* description;
};

constexpr SExpected c_Expected[] = {
    {0, Report::eRR_Success, L"OK", L"Ok"},
    {1, Report::eRR_Failure, L"ERROR", L"Fehler"},
    {2, Report::eRR_Failure, L"EXCEPTION", L"Exception"},
    {3, Report::eRR_Failure, L"NOINPUT", L"Fehlende Datei"},
    {4, Report::eRR_Failure, L"DIFFERENT", L"Unterschiede zur Referenz-Ausführung"},
    {5, Report::eRR_Error, L"UNKNOWN", L"Unvollständige Ausführung"},
    {6, Report::eRR_Error, L"UNKNOWN", L"Unbekannt"},
    {7, Report::eRR_Error, L"CANCELED", L"Externer Unterbruch des Ausführung"},
    {8, Report::eRR_Error, L"TIMEOUT", L"Zeitlimit überschritten"},
    {9, Report::eRR_Error, L"UNKNOWN", L"Unbekannt"},
    {4294967295U, Report::eRR_Error, L"UNKNOWN", L"Unbekannt"},
};

TEST(LuTestSuiteReportResults, HaveAClassANameAndADescription)
{
    for (const SExpected& expected : c_Expected)
    {
        const auto result = static_cast<ECaseRunResult>(expected.value);
        EXPECT_EQ(Report::getReportResult(result), expected.reportResult) << expected.value;
        EXPECT_EQ(Report::toResultString(result), expected.name) << expected.value;
        EXPECT_EQ(Report::toDescriptionString(result), expected.description) << expected.value;
    }
}

TEST(LuTestSuiteReportResults, AreFoundByTheirNames)
{
    for (const std::uint32_t value : {0U, 1U, 2U, 3U, 4U, 5U, 7U, 8U})
    {
        const auto result = static_cast<ECaseRunResult>(value);
        EXPECT_EQ(Report::resultStringToType(Report::toResultString(result)), result) << value;
    }
}

TEST(LuTestSuiteReportResults, WithoutANameOfTheirOwnAreReadAsUnknown)
{
    EXPECT_EQ(Report::resultStringToType(Report::toResultString(ECaseRunResult::NoMatchingCase)),
              ECaseRunResult::Unknown);
}

TEST(LuTestSuiteReportResults, AreFoundByExactNamesOnly)
{
    for (const wchar_t* name : {L"", L"ok", L"Ok", L" OK", L"OK ", L"ERRORS", L"Fehler", L"6"})
    {
        EXPECT_EQ(Report::resultStringToType(name), ECaseRunResult::Unknown) << testing::PrintToString(name);
    }
}

TEST(LuTestSuiteReportCounts, AreSummedByResultClass)
{
    LuTestSuiteRun::SStats::SCounts counts;
    for (std::uint32_t result = 0; result < std::size(counts.results); ++result)
    {
        counts.results[result] = 1U << result;
    }
    Report::SReportCounts reportCounts{{7, 7, 7}};

    EXPECT_EQ(Report::getReportCounts(counts, reportCounts), 0b111111111U);
    EXPECT_EQ(reportCounts.counts[Report::eRR_Success], 0b000000001U);
    EXPECT_EQ(reportCounts.counts[Report::eRR_Failure], 0b000011110U);
    EXPECT_EQ(reportCounts.counts[Report::eRR_Error], 0b111100000U);
}

TEST(LuTestSuiteReportSeconds, AreConvertedFromNanoseconds)
{
    EXPECT_EQ(Report::toSeconds(0), 0.0F);
    EXPECT_EQ(Report::toSeconds(1), 1e-9F);
    EXPECT_EQ(Report::toSeconds(1'500'000'000), 1.5F);
}

TEST(LuTestSuiteReportSeconds, StayPositiveBeyondTheSignedRange)
{
    EXPECT_EQ(Report::toSeconds(std::uint64_t{1} << 63U), 9223372036.854775808F);
    EXPECT_EQ(Report::toSeconds(18446744073709551615U), 18446744073.709551615F);
}

} // namespace
