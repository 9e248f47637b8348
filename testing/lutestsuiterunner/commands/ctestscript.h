/// The cases of a selection as a script for CTest.
#pragma once

#include <string>

#include "testing/lutestsuiterunner/model/plan.h"

namespace Runner
{

/// One call of the CMake command lutestsuite_add_case (LuTestSuiteCases.cmake) for each case, disabled cases last. The
/// arguments are: name, class, folder below the data directory, time limit in seconds (0: none), one of "", "SERIAL"
/// and "DISABLED", and the data file if the case has one.
std::string MakeCTestScript(const SPlan& plan);

} // namespace Runner
