/// The command line: "LuTestSuiteRunner <command> [own options] -- [options of LuTestSuiteCLI]".
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuiterunner/settings/options.h"

namespace Runner
{

/// Reads the arguments, the program's name first. Throws a German message as std::wstring if they are wrong.
Command ReadCommandLine(const std::vector<std::wstring>& arguments);

} // namespace Runner
