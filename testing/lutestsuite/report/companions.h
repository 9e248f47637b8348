/// The files beside a page that the page links to.
#pragma once

#include <string>

namespace LuTestSuite
{

inline constexpr const wchar_t* c_StylesheetName = L"LuTestSuite.css";
inline constexpr const wchar_t* c_ScriptName = L"LuTestSuite.js";

/// Writes the requested files beside a page: the style sheet and the script. Throws on failure.
void WriteCompanions(const std::wstring& pagePath, bool writeCss, bool writeJs);

} // namespace LuTestSuite
