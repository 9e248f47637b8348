/// LuTestSuiteRunner as a child process.
#pragma once

#include <string>
#include <vector>

#include "tests/support/hostprocess.h"

/// As RunHost, with the LuTestSuiteRunner of this build.
SHostRun RunRunner(const std::vector<std::wstring>& arguments, SHostOptions options = {});

/// What LuTestSuiteRunner prints about a module that is missing beside it.
std::string DescribeMissingModule(const std::wstring& name);
