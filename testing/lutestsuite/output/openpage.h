/// Showing finished pages.
#pragma once

#include <string>

namespace LuTestSuite
{

/// Hands a finished page to the desktop. Relative paths count from the working directory.
void OpenPage(const std::wstring& path);

} // namespace LuTestSuite
