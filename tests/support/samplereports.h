/// Report records for tests of the files and pages written from them.
#pragma once

#include <string>

#include "testing/lutestsuite/lutestsuitereport.h"

/// A run in which everything passed: two classes, three cases.
LuTestSuiteReport::SReportData MakePassedReport();

/// A run with every result, umlauts, markup characters, messages, leaks, contacts and the build's Pscm record.
LuTestSuiteReport::SReportData MakeMixedReport();

/// The mixed report, with distinct values in all fields that a report file has. Omits the one result that report files
/// do not distinguish.
LuTestSuiteReport::SReportData MakeFullReport();

/// A later run of the same product: some cases of the mixed report better, some worse, some removed, some added.
LuTestSuiteReport::SReportData MakeLaterReport();

/// A case; by default, it has passed.
LuTestSuiteReport::SReportCase
MakeReportCase(const std::wstring& className, const std::wstring& caseName,
               LuTestSuiteRun::ECaseRunResult result = LuTestSuiteRun::ECaseRunResult::Ok, bool warning = false);

/// A class with these counts; its other cases are successful.
LuTestSuiteReport::SReportClass MakeReportClass(const std::wstring& name, std::uint32_t total, std::uint32_t errors = 0,
                                                std::uint32_t failures = 0, std::uint32_t warnings = 0);

/// Computes a run's figures from its classes, and sets arbitrary times and memory.
void SetReportFigures(LuTestSuiteReport::SReportData& data);
