/// Report records for tests of what is made from them.
#pragma once

#include <string>

#include "testing/lutestsuite/lutestsuitereport.h"

/// A run in which everything passed: two classes, three cases.
LuTestSuiteReport::SReportData MakePassedReport();

/// A run with every outcome, umlauts, markup characters, messages, leaks, contacts and the build's Pscm information.
LuTestSuiteReport::SReportData MakeMixedReport();

/// The mixed report with every field of a file set, figures to values of their own, and without the one result that no
/// file tells from another.
LuTestSuiteReport::SReportData MakeFullReport();

/// A later run of the same product: some cases of the mixed report better, some worse, some gone, some new.
LuTestSuiteReport::SReportData MakeLaterReport();

/// A case that passed.
LuTestSuiteReport::SReportCase
MakeReportCase(const std::wstring& className, const std::wstring& caseName,
               LuTestSuiteRun::ECaseRunResult result = LuTestSuiteRun::ECaseRunResult::Ok, bool warning = false);

/// A class with counts of its own.
LuTestSuiteReport::SReportClass MakeReportClass(const std::wstring& name, std::uint32_t total, std::uint32_t errors = 0,
                                                std::uint32_t failures = 0, std::uint32_t warnings = 0);

/// Sets the figures of a run: those that follow from its classes, and times and memory of their own.
void SetReportFigures(LuTestSuiteReport::SReportData& data);
