/// The second host as a child process.
#pragma once

#include <string>
#include <vector>

#include "tests/support/hostprocess.h"

/// As RunHost, with the second host of this build.
SHostRun RunRunner(const std::vector<std::wstring>& arguments, SHostOptions options = {});

/// What this host says about a module that is missing beside it.
std::string DescribeMissingModule(const std::wstring& name);
