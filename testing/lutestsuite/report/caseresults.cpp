/// The names and classes of case results in reports.

#include <algorithm>
#include <iterator>

#include "testing/lutestsuite/lutestsuitereport.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;

struct SResultTexts
{
    ECaseRunResult result;
    const wchar_t* name;
    const wchar_t* description;
};

/// Searched by result and by name. The name "UNKNOWN", which c_OtherTexts has as well, is read as an incomplete case.
constexpr SResultTexts c_ResultTexts[] = {
    {ECaseRunResult::Unknown, L"UNKNOWN", L"Unvollständige Ausführung"},
    {ECaseRunResult::Ok, L"OK", L"Ok"},
    {ECaseRunResult::Error, L"ERROR", L"Fehler"},
    {ECaseRunResult::Exception, L"EXCEPTION", L"Exception"},
    {ECaseRunResult::NoInput, L"NOINPUT", L"Fehlende Datei"},
    {ECaseRunResult::Different, L"DIFFERENT", L"Unterschiede zur Referenz-Ausführung"},
    {ECaseRunResult::Canceled, L"CANCELED", L"Externer Unterbruch des Ausführung"},
    {ECaseRunResult::TimeOut, L"TIMEOUT", L"Zeitlimit überschritten"},
};

/// The texts of NoMatchingCase and of numbers that are not results.
constexpr SResultTexts c_OtherTexts = {ECaseRunResult::NoMatchingCase, L"UNKNOWN", L"Unbekannt"};

const SResultTexts& getTexts(ECaseRunResult result)
{
    const auto* const texts = std::ranges::find(c_ResultTexts, result, &SResultTexts::result);
    return texts == std::end(c_ResultTexts) ? c_OtherTexts : *texts;
}

} // namespace

LuTestSuiteReport::EReportResult LuTestSuiteReport::getReportResult(ECaseRunResult result)
{
    switch (result)
    {
    case ECaseRunResult::Ok:
        return eRR_Success;
    case ECaseRunResult::Error:
    case ECaseRunResult::Exception:
    case ECaseRunResult::NoInput:
    case ECaseRunResult::Different:
        return eRR_Failure;
    default:
        return eRR_Error;
    }
}

std::uint32_t LuTestSuiteReport::getReportCounts(const LuTestSuiteRun::SStats::SCounts& counts,
                                                 SReportCounts& reportCounts)
{
    reportCounts = {};
    std::uint32_t total = 0;
    for (std::uint32_t result = 0; result < std::size(counts.results); ++result)
    {
        reportCounts.counts[getReportResult(static_cast<ECaseRunResult>(result))] += counts.results[result];
        total += counts.results[result];
    }
    return total;
}

std::wstring LuTestSuiteReport::toResultString(ECaseRunResult result)
{
    return getTexts(result).name;
}

std::wstring LuTestSuiteReport::toDescriptionString(ECaseRunResult result)
{
    return getTexts(result).description;
}

ECaseRunResult LuTestSuiteReport::resultStringToType(const std::wstring& name)
{
    const auto* const texts =
        std::ranges::find_if(c_ResultTexts, [&name](const SResultTexts& one) { return name == one.name; });
    return texts == std::end(c_ResultTexts) ? ECaseRunResult::Unknown : texts->result;
}
