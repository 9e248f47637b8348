/// The build's configuration name.
#pragma once

#include <string_view>

namespace LuTestSuite
{

/// "Release" or "Debug", defined by the build.
inline constexpr std::wstring_view c_BuildConfigurationName = L"" LUTESTSUITE_BUILD_CONFIGURATION;

} // namespace LuTestSuite
