/// The fixed list of test modules.
#pragma once

#include <span>

namespace LuTestSuite
{

/// Module names without extension, possibly with a folder in front, in loading order. The build generates the list at
/// configure time from the file LUTESTSUITE_TEST_MODULES_FILE.
extern const std::span<const wchar_t* const> c_TestModules;

} // namespace LuTestSuite
