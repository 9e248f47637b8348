/// The tables about a run as a whole: build, setup and result, as rows of a label and of a figure of the record.
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

    /// Whether the record holds the figure; null when every record does.
    bool (*isPresent)(const LuTestSuiteReport::SReportData& data) = nullptr;

    /// How run B stands to run A; null when that says nothing.
    EDiffState (*compare)(const LuTestSuiteReport::SReportData& a, const LuTestSuiteReport::SReportData& b) = nullptr;
};

struct SRunDataTable
{
    const wchar_t* heading;
    const wchar_t* start; ///< start tag
    std::span<const SRunDataRow> rows;
};

/// In the order of the pages.
std::span<const SRunDataTable> GetRunDataTables();

/// Whether the record holds the row's figure.
bool IsPresent(const SRunDataRow& row, const LuTestSuiteReport::SReportData& data);

} // namespace LuTestSuite
