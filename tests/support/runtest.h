/// Shared by tests of whole runs.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiterun.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "tests/support/capturedoutput.h"

/// A unit test with cases of these names, to be passed to MakeSetup.
LuTestSuite::SUnitTest MakeUnitTest(const std::wstring& className, const std::vector<std::wstring>& caseNames);

/// A setup that loads the model modules and runs these unit tests.
LuTestSuiteSetup MakeSetup(std::vector<LuTestSuite::SUnitTest> unitTests);

/// A setup that loads the model modules and runs the unit tests found in the directory.
LuTestSuiteSetup MakeSetup(const std::wstring& dataDir);

/// Each test has its own environment, and its output is recorded.
class RunTest : public testing::Test
{
protected:
    LuTestSuiteRun::SRunResult Run(const LuTestSuiteSetup& setup);

    /// Runs one case and returns its record.
    LuTestSuiteRun::SCaseInfo RunCase(const std::wstring& className, const std::wstring& caseName);

    /// The recorded lines, starting with the first one that has this text; empty if no line has it.
    std::vector<CapturedOutput::SLine> GetLinesFrom(const std::wstring& text) const;

    CapturedOutput m_output;
    LuTestSuiteEnvironment m_environment;
};
