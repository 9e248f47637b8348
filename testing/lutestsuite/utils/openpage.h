/// Showing finished pages.
#pragma once

#include <string>

namespace LuTestSuite
{

/// Hands a page to the desktop; nothing when it could not be written. Relative paths count from the working directory.
void OpenPage(const std::wstring& path);

} // namespace LuTestSuite
