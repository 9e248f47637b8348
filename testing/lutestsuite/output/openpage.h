/// Opens finished pages.
#pragma once

#include <string>

namespace LuTestSuite
{

/// Opens a page with the desktop's browser. Relative paths start at the working directory.
void OpenPage(const std::wstring& path);

} // namespace LuTestSuite
