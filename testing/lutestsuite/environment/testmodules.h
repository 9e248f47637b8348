/// The fixed list of test modules.
#pragma once

#include <span>

namespace LuTestSuite
{

/// Module names without extension, possibly with a folder in front, in loading order. Generated at configure time from
/// the text file that the installation names.
extern const std::span<const wchar_t* const> c_TestModules;

} // namespace LuTestSuite
