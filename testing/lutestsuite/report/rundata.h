/// The tables about a whole run (build, setup and result), as rows with a label and a field of the record.
#pragma once

#include <span>
#include <string>

#include "testing/lutestsuite/lutestsuitereport.h"
#include "testing/lutestsuite/report/matching.h"

namespace LuTestSuite
{

struct SRunDataRow
{
    const wchar_t* label;

    std::wstring (*getText)(const LuTestSuiteReport::SReportData& data);

    /// True if the record has the field; null if every record has it.
    bool (*isPresent)(const LuTestSuiteReport::SReportData& data) = nullptr;

    /// Compares run B with run A; null if the field is not compared.
    EDiffState (*compare)(const LuTestSuiteReport::SReportData& a, const LuTestSuiteReport::SReportData& b) = nullptr;
};

struct SRunDataTable
{
    const wchar_t* heading;
    const wchar_t* start; ///< start tag
    std::span<const SRunDataRow> rows;
};

/// In page order.
std::span<const SRunDataTable> GetRunDataTables();

/// True if the record has the row's field.
bool IsPresent(const SRunDataRow& row, const LuTestSuiteReport::SReportData& data);

} // namespace LuTestSuite
